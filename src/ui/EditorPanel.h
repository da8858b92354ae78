#pragma once

#include "editor/operations/ZQAudioInserter.h"
#include "editor/views/ZQAudioTimeView.h"
#include "ui/PagePanel.h"

#include <QList>

#include <array>

class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QPushButton;
class QSlider;

namespace cantorel {
class ZQAudioEditorManager;
}

namespace cantorel::ui {

class ExportPartsTable;

// What an insert operation is called.
QString insertText(InsertType type);

// The panel of the editor: where and how long to insert, as what to export, or between which silences to select.
class EditorPanel : public PagePanel, private AudioTimeDelegate {
    Q_OBJECT

public:
    // manager: outlives it.
    EditorPanel(ZQAudioEditorManager &manager, QWidget *parent);

    enum class Asks { Insert, Export, Silences };
    void ask(Asks what);
    void showTexts();

Q_SIGNALS:
    // What was asked for is done or not wanted.
    void done();

private:
    void makeInsert();
    void makeExport();
    void makeSilences();
    void find();
    void addGroupField(QList<QWidget *> &group, QLabel *&label, QWidget &field);
    void showInsert();
    void showExport();
    void showParts();
    void showSilences();
    void confirm();
    void tell(const QString &trouble);
    void inkTrouble();
    void chooseImage();
    QLineEdit *lineOf(std::size_t field) const;
    void AudioTime_UpdateTime(ZQAudioTimeView &view, double seconds) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

    ZQAudioEditorManager &mManager;
    Asks mAsks = Asks::Insert;
    QList<QWidget *> mInsertParts, mExportParts, mSilenceParts;
    QLabel *mFile, *mTrouble, *mFileLabel = nullptr, *mPositionLabel = nullptr, *mLengthLabel = nullptr;
    ZQAudioTimeView *mPosition, *mLength;
    QLabel *mFormatLabel = nullptr, *mModeLabel = nullptr, *mCoverLabel = nullptr, *mCover;
    QComboBox *mFormat, *mMode, *mGenre;
    ExportPartsTable *mParts;
    QWidget *mImage;
    QSlider *mThreshold;
    QDoubleSpinBox *mShortest;
    QPushButton *mAddImage, *mDeleteImage, *mClear, *mConfirm, *mCancel;
    QLabel *mThresholdLabel = nullptr, *mShortestLabel = nullptr;
    std::array<QWidget *, 5> mTags{};
    std::array<QLabel *, 5> mTagLabels{};
};

} // namespace cantorel::ui
