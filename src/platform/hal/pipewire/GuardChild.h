#pragma once

#include "platform/hal/HardwareBackend.h"

#include <sys/types.h>

namespace cantorel::hal {

// A small child that outlives the program for a moment: when the program ends without disarming it, by whatever signal,
// it puts a default device back, unless somebody has chosen another one meanwhile. Owned by PipeWireBackend.
class GuardChild {
public:
    GuardChild() = default;
    ~GuardChild() { disarm(); }
    GuardChild(const GuardChild &) = delete;
    GuardChild &operator=(const GuardChild &) = delete;

    // Watches over one direction: while standIn is the configured default, the setting comes back.
    bool arm(Direction direction, const QString &standIn, const DefaultSetting &before);
    // Lets it go without doing anything.
    void disarm();

private:
    int mPipe = -1; // our end; its closing is the signal
    pid_t mPid = -1;
};

} // namespace cantorel::hal
