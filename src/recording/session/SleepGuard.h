#pragma once

#include "platform/desktop/SleepDelay.h"

#include <functional>

namespace cantorel {

// Has the machine wait while a file is to be finished, and knows whether it sleeps. Owned by RecordingSession; main
// thread.
class SleepGuard {
public:
    // delay: null where the desktop has none; outlives the guard. The two functions are called as SleepDelay says.
    SleepGuard(desktop::SleepDelay *delay, std::function<void(bool shutsDown)> willSleep,
               std::function<void()> didWake);
    ~SleepGuard();
    SleepGuard(const SleepGuard &) = delete;
    SleepGuard &operator=(const SleepGuard &) = delete;

    // It sleeps, or is about to, or to shut down.
    bool isAsleep() const { return mIsAsleep; }
    void hold() const;
    void release() const;

private:
    desktop::SleepDelay *const mDelay;
    bool mIsAsleep = false;
};

} // namespace cantorel
