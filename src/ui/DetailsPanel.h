#pragma once

#include <QList>
#include <QWidget>

#include <utility>

class QLabel;
class QToolButton;
class QVBoxLayout;

namespace cantorel {
class RecordedAudioInfo;
}

namespace cantorel::ui {

class DigitLabel;

// What is known of one recording, at the right of the list or, in a narrow window, in its place. Texts can be selected
// and copied.
class DetailsPanel : public QWidget {
    Q_OBJECT

public:
    explicit DetailsPanel(QWidget *parent);

    // How wide it is beside the list, and the side of its cover.
    int besideWidth() const;
    int coverSide() const;

    // date: as it is written in full; null for no recording.
    void show(const RecordedAudioInfo *item, const QPixmap &cover, const QString &date);
    // In place of the list it has an arrow that leads back to it.
    void setCovering(bool covers);
    QToolButton &back() { return *mBack; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    using Rows = QList<std::pair<QString, QString>>; // names and texts

    void addRow(const QString &name, const QString &text);
    void dress();

    QToolButton *mBack;
    QWidget *mHead;
    QLabel *mCover, *mName, *mNobody;
    DigitLabel *mFigures;
    QVBoxLayout *mColumn = nullptr, *mRows;
    Rows mShown;
};

} // namespace cantorel::ui
