#include "recording/hotkeys/HotkeyRecord.h"

#include <utility>

namespace cantorel {

HotkeyRecord::HotkeyRecord(std::shared_ptr<desktop::HotKeys> hotKeys, quint32 HotkeyID, quint32 keyRef,
                           quint32 modifiers, std::shared_ptr<HotkeyTarget> target, HotkeyAction action,
                           desktop::HotKeyTarget &receiver)
    : mHotKeys(std::move(hotKeys)), _target(std::move(target)), _action(action) {
    if (mHotKeys)
        _ref = mHotKeys->RegisterEventHotKey({keyRef, modifiers}, {HotkeyID, HotkeyID}, receiver);
}

HotkeyRecord::~HotkeyRecord() {
    if (mHotKeys)
        mHotKeys->UnregisterEventHotKey(_ref);
}

void HotkeyRecord::invoke() const {
    // The action may end this record.
    const auto target = _target;
    const QString hotkey = _hotkey;
    if (target)
        (target.get()->*_action)(hotkey);
}

QString HotkeyRecord::trigger() const { return mHotKeys ? mHotKeys->triggerOf(_ref) : QString(); }

} // namespace cantorel
