#pragma once

#include "recording/hotkeys/HotkeyRecord.h"

#include <QString>

#include <map>
#include <memory>
#include <utility>

namespace cantorel {

// Binds texts such as "ctrl cmd s" to actions, as long as it lives. Identifiers are its own and begin at 1. Owned by
// RecordingHotkeys; main thread.
class HotkeyManager : public desktop::HotKeyTarget {
public:
    // Null where the desktop has no hot keys.
    explicit HotkeyManager(std::shared_ptr<desktop::HotKeys> hotKeys) : mHotKeys(std::move(hotKeys)) {}

    // The key code and the sum of the modifiers of a text, in any case. Unknown words are ignored, of several keys the
    // last one counts, and a text without a key is the key with code 0.
    static desktop::HotKeyCombination combinationOf(const QString &hotkey);

    quint32 bind(const QString &hotkey, std::shared_ptr<HotkeyTarget> target, HotkeyAction action);
    quint32 bindKeyRef(quint32 keyRef, quint32 withModifiers, std::shared_ptr<HotkeyTarget> target,
                       HotkeyAction action);
    // Unregisters it; ignores an identifier that this manager does not hold.
    void unbind(quint32 identifier);
    void _dispatch(quint32 identifier) const;

    // How the person presses it, as far as the desktop tells.
    QString trigger(quint32 identifier) const;

private:
    void hotKeyPressed(const desktop::EventHotKeyID &identity) override;

    const std::shared_ptr<desktop::HotKeys> mHotKeys;
    std::map<quint32, std::unique_ptr<HotkeyRecord>> _hotkeys;
    quint32 _nextId = 1;
    QString _hotkeyString;
};

// Hands a pressed key to the manager that it was registered for; answers that it is handled.
bool hotkeyHandler(const desktop::EventHotKeyID &identity, const HotkeyManager &manager);

} // namespace cantorel
