#pragma once

#include "platform/foundation/Result.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace cantorel::desktop {

// A key by its virtual code, and the sum of its modifiers; HotKeyTable.h tells which codes are known.
struct HotKeyCombination {
    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;
    bool operator==(const HotKeyCombination &) const = default;
};

// By what the owner of a registration knows it again.
struct EventHotKeyID {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;
};

// Hears of pressed keys, on the main thread.
class HotKeyTarget {
public:
    virtual ~HotKeyTarget() = default;
    virtual void hotKeyPressed(const EventHotKeyID &identity) = 0;
};

// Names a registration until it is ended; 0 names none.
using EventHotKeyRef = std::uint64_t;

// Keys that reach the program wherever the person is. A combination may be registered several times; a press is
// delivered once, to the newest registration. Main thread.
class HotKeys {
public:
    virtual ~HotKeys() = default;

    // Always makes a registration. One that the desktop does not grant never fires, and `trouble` is called. The target
    // outlives the registration.
    virtual EventHotKeyRef RegisterEventHotKey(const HotKeyCombination &combination, const EventHotKeyID &identity,
                                               HotKeyTarget &target) = 0;
    virtual void UnregisterEventHotKey(EventHotKeyRef reference) = 0;

    // How the person presses it, in the desktop's words; empty while that is unknown or the key is not granted.
    virtual QString triggerOf(EventHotKeyRef reference) const = 0;

    // Told, perhaps later, why keys don't work: once for each reason. May be empty.
    std::function<void(const foundation::Failure &)> trouble;
    // What triggerOf answers has changed. May be empty.
    std::function<void()> triggersDidChange;
};

} // namespace cantorel::desktop
