#include "platform/desktop/recorded/RecordedHotKeys.h"

namespace cantorel::desktop {

namespace {

QString textOf(const HotKeyCombination &combination) {
    return QStringLiteral("%1 %2").arg(combination.keyCode).arg(combination.modifiers);
}

} // namespace

EventHotKeyRef RecordedHotKeys::RegisterEventHotKey(const HotKeyCombination &combination, const EventHotKeyID &identity,
                                                    HotKeyTarget &target) {
    if (const auto noted = mRecord->note(QStringLiteral("register"), textOf(combination)); !noted && trouble)
        trouble(noted.failure());
    return mBook.add(combination, identity, target);
}

void RecordedHotKeys::UnregisterEventHotKey(EventHotKeyRef reference) {
    if (const auto *registration = mBook.find(reference)) {
        (void)mRecord->note(QStringLiteral("unregister"), textOf(registration->combination)); // cannot fail
        mBook.remove(reference);
    }
}

void RecordedHotKeys::press(const HotKeyCombination &combination) {
    mBook.press([&](const HotKeyBook::Registration &other) { return other.combination == combination; });
}

} // namespace cantorel::desktop
