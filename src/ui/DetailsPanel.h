#pragma once

#include <QList>
#include <QString>
#include <QWidget>

#include <utility>

class QLabel;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace cantorel {
class ID3EditWindowController;
class RecordedAudioInfo;
} // namespace cantorel

namespace cantorel::ui {

class DigitLabel;
class SavedSign;
class TagFields;

// What is known of one recording, at the right of the list or, in a narrow window, in its place, and the editor of its
// tags, or of those of several. Texts can be selected and copied; a picture can be dropped.
class DetailsPanel : public QWidget {
    Q_OBJECT

public:
    // tags: outlives it.
    DetailsPanel(ID3EditWindowController &tags, QWidget *parent);

    // How wide it is beside the list, and the side of its cover.
    int besideWidth() const;
    int coverSide() const;

    // item: the first of count; null for none. date: as it is written in full.
    void show(const RecordedAudioInfo *item, qsizetype count, const QPixmap &cover, const QString &date);
    void changeLanguageText();
    // In place of the list it has an arrow that leads back to it.
    void setCovering(bool covers);
    QToolButton &back() { return *mBack; }
    // A button that is to have the music of the chosen ones recognised; once, where somebody can.
    QPushButton &addIdentify();

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    using Rows = QList<std::pair<QString, QString>>; // names and texts

    void addRow(const QString &name, const QString &text);
    void dress();

    ID3EditWindowController &mTags;
    QToolButton *mBack;
    QWidget *mHead;
    QLabel *mCover, *mName, *mNobody, *mPlain;
    DigitLabel *mFigures;
    TagFields *mFields;
    SavedSign *mSaved;
    QPushButton *mIdentify = nullptr;
    QVBoxLayout *mColumn = nullptr, *mRows;
    Rows mShown;
};

} // namespace cantorel::ui
