#pragma once

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QToolButton;

namespace cantorel::ui {

// One line of news above the deck or the player, with what can be done about it.
class Strip : public QWidget {
    Q_OBJECT

public:
    enum class Kind { Hint, Result, Warning, Error };

    explicit Strip(QWidget *parent);

    // An empty text hides it.
    void tell(Kind kind, const QString &text);
    QLabel &text() { return *mText; }
    // A button of its own that is only there while its text is not empty.
    QPushButton &addAction(const QString &objectName, bool isFilled);
    QToolButton &close() { return *mClose; }

Q_SIGNALS:
    void closed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void showIcon();

    Kind mKind = Kind::Hint;
    QHBoxLayout *mRow;
    QLabel *mIcon, *mText;
    QToolButton *mClose;
};

} // namespace cantorel::ui
