#pragma once

#include <QWidget>

#include <array>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QToolButton;

namespace cantorel {
class ZQAudioConvertManager;
}

namespace cantorel::ui {

// What files are converted to and where; as text while the queue runs.
class ConvertOptions : public QWidget {
    Q_OBJECT

public:
    // The queue outlives it.
    ConvertOptions(ZQAudioConvertManager &queue, QWidget *parent);

    bool joins() const;
    void setRunning(bool isRunning);
    void showTexts();

private:
    // A name above a choice, or above its text.
    struct Cell {
        QWidget *box;
        QLabel *name, *text;
        QWidget *choice;
    };
    Cell cell(QWidget *choice);
    void choose();
    void chooseFolder();
    void showState();
    void showIcons();
    void fit();
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

    ZQAudioConvertManager &mQueue;
    QGridLayout *mGrid;
    QComboBox *mFormat, *mQuality;
    QToolButton *mFolder;
    QCheckBox *mJoin;
    std::array<Cell, 4> mCells; // format, quality, folder, joining
    QLabel *mNote;
    bool mIsRunning = false;
};

} // namespace cantorel::ui
