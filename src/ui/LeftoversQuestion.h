#pragma once

#include <QObject>
#include <QString>

namespace cantorel {
class CrashLeftovers;
class RecorderPanel;
} // namespace cantorel

namespace cantorel::ui {

class Card;

// Asks on a card what to do with recordings that a crash left unfinished, and does it. Owned by the main window.
class LeftoversQuestion : public QObject {
    Q_OBJECT

public:
    // All outlive it.
    LeftoversQuestion(CrashLeftovers &leftovers, RecorderPanel &panel, Card &card);

    // Where there are none, what was whole when the crash came is taken up without a question.
    void ask();

Q_SIGNALS:
    void recovered();

private:
    void recover();
    void askBeforeDiscarding(const QString &named);

    CrashLeftovers &mLeftovers;
    RecorderPanel &mPanel;
    Card &mCard;
};

} // namespace cantorel::ui
