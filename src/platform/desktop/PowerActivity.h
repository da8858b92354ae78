#pragma once

#include "platform/foundation/Result.h"

namespace cantorel::desktop {

// Keeps the machine from falling asleep because nobody uses it: never from what the person asks for, and never the
// screen from being locked. The calls may block on the desktop's answer; one thread at a time.
class PowerActivity {
public:
    virtual ~PowerActivity() = default;

    // Holds the machine awake until release(); holding twice is holding once. Fails when no service takes the wish.
    // reason: shown to a person who asks the desktop why it stays awake.
    virtual foundation::Result<void> hold(const QString &reason) = 0;
    virtual void release() = 0;
};

} // namespace cantorel::desktop
