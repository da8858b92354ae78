#pragma once

#include "platform/desktop/SleepDelay.h"

#include <functional>
#include <vector>

namespace cantorel {

// Has the machine wait while somebody has a file to finish, and knows whether it sleeps. Main
// thread.
class SleepGuard {
public:
    // delay: null where the desktop has none; outlives the guard.
    explicit SleepGuard(desktop::SleepDelay *delay);
    ~SleepGuard();
    SleepGuard(const SleepGuard &) = delete;
    SleepGuard &operator=(const SleepGuard &) = delete;

    // It sleeps, or is about to, or to shut down.
    bool isAsleep() const { return mIsAsleep; }

    // One who has files to finish: the machine waits as long as any of them holds it. Owned by that one.
    class Holder {
    public:
        // The guard outlives it. The two functions are called as SleepDelay says.
        Holder(SleepGuard &guard, std::function<void(bool shutsDown)> willSleep, std::function<void()> didWake);
        ~Holder();
        Holder(const Holder &) = delete;
        Holder &operator=(const Holder &) = delete;

        bool isAsleep() const { return mGuard.isAsleep(); }
        void hold();
        void release();

    private:
        friend SleepGuard;
        SleepGuard &mGuard;
        const std::function<void(bool)> mWillSleep;
        const std::function<void()> mDidWake;
        bool mHolds = false;
    };

private:
    desktop::SleepDelay *const mDelay;
    std::vector<Holder *> mHolders;
    bool mIsAsleep = false;
};

} // namespace cantorel
