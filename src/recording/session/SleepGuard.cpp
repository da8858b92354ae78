#include "recording/session/SleepGuard.h"

#include "log/GuardedAction.h"

#include <algorithm>
#include <utility>

namespace cantorel {

SleepGuard::SleepGuard(desktop::SleepDelay *delay) : mDelay(delay) {
    if (!mDelay)
        return;
    mDelay->willSleep = [this](bool shutsDown) {
        mIsAsleep = true;
        for (Holder *holder : mHolders)
            (void)guarded("machineWillSleep", [&] { holder->mWillSleep(shutsDown); }); // logged there
    };
    mDelay->didWake = [this] {
        if (!std::exchange(mIsAsleep, false))
            return;
        for (Holder *holder : mHolders)
            (void)guarded("machineDidWake", holder->mDidWake); // logged there
    };
}

SleepGuard::~SleepGuard() {
    if (!mDelay)
        return;
    mDelay->willSleep = {};
    mDelay->didWake = {};
}

SleepGuard::Holder::Holder(SleepGuard &guard, std::function<void(bool)> willSleep, std::function<void()> didWake)
    : mGuard(guard), mWillSleep(std::move(willSleep)), mDidWake(std::move(didWake)) {
    mGuard.mHolders.push_back(this);
}

SleepGuard::Holder::~Holder() {
    release();
    std::erase(mGuard.mHolders, this);
}

void SleepGuard::Holder::hold() {
    mHolds = true;
    if (mGuard.mDelay)
        mGuard.mDelay->hold(QStringLiteral("A recording is being finished"));
}

void SleepGuard::Holder::release() {
    mHolds = false;
    const auto &holders = mGuard.mHolders;
    if (mGuard.mDelay && std::none_of(holders.begin(), holders.end(), [](const Holder *one) { return one->mHolds; }))
        mGuard.mDelay->release();
}

} // namespace cantorel
