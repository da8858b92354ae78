#pragma once

#include "ui/Unfolding.h"

#include <map>

class QBoxLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QToolButton;

namespace cantorel::ui {

// One line of news above the deck or the player, with what can be done about it; below it where both have no room side
// by side. Or a card with a title and a second line.
class Strip : public Unfolding {
    Q_OBJECT

public:
    enum class Kind { Hint, Result, Progress, Waiting, Warning, Error };

    enum class Form { Line, Card };

    explicit Strip(QWidget *parent, Form form = Form::Line);

    // An empty text hides it. title: of a card.
    void tell(Kind kind, const QString &text, const QString &title = {});
    QLabel &title() { return *mTitle; }
    QLabel &text() { return *mText; }
    // A button of its own, with an edge where it is not filled; flat on a card.
    QPushButton &addAction(const QString &objectName, bool isFilled);
    // What a button with an icon says; only as a tip where there is no room.
    void setWord(QPushButton &button, const QString &word);
    // A bar beside the text.
    QProgressBar &addBar();
    // A field in front of the text, hidden at first.
    QLineEdit &addField(const QString &objectName);
    QToolButton &close() { return *mClose; }

Q_SIGNALS:
    void closed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void showIcon();
    void fit();

    QRectF place() const; // of a card

    const Form mForm;
    std::map<QPushButton *, QString> mWords;
    Kind mKind = Kind::Hint;
    QHBoxLayout *mRow, *mActions;
    QBoxLayout *mContent;
    QLabel *mIcon, *mTitle, *mText;
    QToolButton *mClose;
};

} // namespace cantorel::ui
