#pragma once

#include "platform/desktop/HotKeys.h"

#include <QString>

#include <memory>

namespace cantorel {

// Receives the actions of hot keys. Main thread.
class HotkeyTarget {
public:
    virtual ~HotkeyTarget() = default;
    // hotkey: the text that the pressed key was bound from.
    virtual void pressedHotkey(const QString &hotkey) = 0;
};
using HotkeyAction = void (HotkeyTarget::*)(const QString &hotkey);

// One registered combination, from its making to its end. One that the desktop refuses exists but never fires. Owned by
// its HotkeyManager; main thread.
class HotkeyRecord {
public:
    // The identity's signature and number are both the identifier. hotKeys: null where the desktop has none.
    // receiver: hears of presses; outlives the record.
    HotkeyRecord(std::shared_ptr<desktop::HotKeys> hotKeys, quint32 HotkeyID, quint32 keyRef, quint32 modifiers,
                 std::shared_ptr<HotkeyTarget> target, HotkeyAction action, desktop::HotKeyTarget &receiver);
    ~HotkeyRecord();
    HotkeyRecord(const HotkeyRecord &) = delete;
    HotkeyRecord &operator=(const HotkeyRecord &) = delete;

    void setHotkey(const QString &hotkey) { _hotkey = hotkey; }
    QString hotkey() const { return _hotkey; }
    // Calls the action with the text.
    void invoke() const;
    // How the person presses it, as far as the desktop tells.
    QString trigger() const;

private:
    const std::shared_ptr<desktop::HotKeys> mHotKeys;
    desktop::EventHotKeyRef _ref = 0;
    const std::shared_ptr<HotkeyTarget> _target;
    const HotkeyAction _action;
    QString _hotkey;
};

} // namespace cantorel
