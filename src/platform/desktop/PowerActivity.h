#pragma once

#include "platform/foundation/Result.h"

namespace cantorel::desktop {

// Keeps the machine awake. The calls may block on the desktop's answer; one thread at a time.
class PowerActivity {
public:
    virtual ~PowerActivity() = default;

    // Holds the machine awake until release(); holding twice is holding once. Fails when no service takes the wish.
    virtual foundation::Result<void> hold(const QString &reason) = 0;
    virtual void release() = 0;

    // Tells the desktop that the user is there. Silently nothing where the desktop has no such call.
    virtual void reportUserActivity() = 0;
};

} // namespace cantorel::desktop
