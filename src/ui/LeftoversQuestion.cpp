#include "ui/LeftoversQuestion.h"

#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/session/CrashLeftovers.h"
#include "ui/Card.h"

namespace cantorel::ui {

LeftoversQuestion::LeftoversQuestion(CrashLeftovers &leftovers, RecorderPanel &panel, Card &card)
    : mLeftovers(leftovers), mPanel(panel), mCard(card) {}

void LeftoversQuestion::ask() {
    const auto pending = mLeftovers.pending();
    if (pending.empty()) {
        recover(); // What was whole when the crash came may lack in the list.
        return;
    }
    const QString named = leftoversText(pending);
    const auto texts = [named] {
        return Card::Texts{QStringLiteral("wave"),
                           Lang::windowRecoveredTitle(),
                           named,
                           {Lang::windowRecover(), Lang::windowLater(), Lang::windowDiscard()}};
    };
    mCard.ask(texts, [this, named](int answer) {
        if (answer == 0)
            recover();
        else if (answer == 2)
            askBeforeDiscarding(named);
    });
}

void LeftoversQuestion::recover() {
    mLeftovers.recoverBehind([this](const CrashLeftovers::Recovered &recovery) {
        if (const QString text = recoveredText(recovery); !text.isEmpty())
            mPanel.setSentence(text);
        Q_EMIT recovered();
    });
}

void LeftoversQuestion::askBeforeDiscarding(const QString &named) {
    const auto texts = [named] {
        return Card::Texts{QStringLiteral("wastebasket"),
                           Lang::windowDiscardConfirm(),
                           named,
                           {Lang::windowLater(), Lang::windowDiscard()}};
    };
    const auto answered = [this](int answer) {
        if (answer != 1)
            return;
        if (const auto discarded = mLeftovers.discard(); !discarded)
            mPanel.setSentence(discarded.failure().sentence);
    };
    mCard.ask(texts, answered, true);
}

} // namespace cantorel::ui
