#include "recording/session/SleepGuard.h"

#include "log/GuardedAction.h"

#include <utility>

namespace cantorel {

SleepGuard::SleepGuard(desktop::SleepDelay *delay, std::function<void(bool)> willSleep, std::function<void()> didWake)
    : mDelay(delay) {
    if (!mDelay)
        return;
    mDelay->willSleep = [this, told = std::move(willSleep)](bool shutsDown) {
        mIsAsleep = true;
        (void)guarded("machineWillSleep", [&] { told(shutsDown); }); // logged there
    };
    mDelay->didWake = [this, told = std::move(didWake)] {
        if (std::exchange(mIsAsleep, false))
            (void)guarded("machineDidWake", told); // logged there
    };
}

SleepGuard::~SleepGuard() {
    if (!mDelay)
        return;
    mDelay->willSleep = {};
    mDelay->didWake = {};
    mDelay->release();
}

void SleepGuard::hold() const {
    if (mDelay)
        mDelay->hold(QStringLiteral("A recording is being finished"));
}

void SleepGuard::release() const {
    if (mDelay)
        mDelay->release();
}

} // namespace cantorel
