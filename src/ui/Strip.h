#pragma once

#include <QWidget>

class QBoxLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace cantorel::ui {

// One line of news above the deck or the player, with what can be done about it; below it where both have no room side
// by side.
class Strip : public QWidget {
    Q_OBJECT

public:
    enum class Kind { Hint, Result, Waiting, Warning, Error };

    explicit Strip(QWidget *parent);

    // An empty text hides it.
    void tell(Kind kind, const QString &text);
    QLabel &text() { return *mText; }
    // A button of its own that is only there while its text is not empty.
    QPushButton &addAction(const QString &objectName, bool isFilled);
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

    Kind mKind = Kind::Hint;
    QHBoxLayout *mRow, *mActions;
    QBoxLayout *mBody;
    QLabel *mIcon, *mText;
    QToolButton *mClose;
};

} // namespace cantorel::ui
