#pragma once

#include "ui/Unfolding.h"

#include <functional>
#include <vector>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QToolButton;

namespace cantorel::ui {

// What stands at the top of a page and waits for the person without standing in the way: an icon, a title, one or two
// sentences, buttons that say what they do, and a cross.
class Card : public Unfolding {
    Q_OBJECT

public:
    struct Texts {
        QString icon, title, text;
        QStringList actions; // the first is the filled button
        bool canClose = true;
    };
    static constexpr int kClosed = -1; // the answer of the cross and of Escape

    // Its buttons are called by its name with a number behind it, and "Close".
    Card(const QString &objectName, QWidget *parent);

    // Asks until answered() was called with the number of an action, or kClosed; the card is gone by then. texts: asked
    // for again in another language. takesFocus: the person has caused the question.
    void ask(std::function<Texts()> texts, std::function<void(int answer)> answered, bool takesFocus = false);
    // Nobody asks any more.
    void putAway();
    bool isAsking() const { return static_cast<bool>(mTexts); }
    void answer(int answer);
    void showTexts();

    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // It asks now, or does no longer.
    void changed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void showIcons();
    int besideLines() const; // width

    std::function<Texts()> mTexts;
    std::function<void(int)> mAnswered;
    QLabel *mIcon, *mTitle, *mText;
    QHBoxLayout *mActions;
    std::vector<QPushButton *> mButtons;
    QToolButton *mClose;
    QString mIconName;
};

} // namespace cantorel::ui
