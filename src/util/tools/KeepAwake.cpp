#include "util/tools/KeepAwake.h"

#include "log/Log.h"

#include <utility>

namespace cantorel {

namespace {

constexpr const char *kReason = "Recording sound, or ready for the next recording";

} // namespace

KeepAwake::KeepAwake(std::shared_ptr<desktop::PowerActivity> power, std::chrono::milliseconds interval)
    : mPower(std::move(power)), mInterval(interval), mThread([this](const std::stop_token &stop) { run(stop); }) {}

void KeepAwake::run(const std::stop_token &stop) {
    bool told = false;
    while (!stop.stop_requested()) {
        MyKeepWakeSystemTimerCallback(told);
        std::unique_lock lock(mMutex);
        mWake.wait_for(lock, stop, mInterval, [] { return false; });
    }
    mPower->release();
}

void KeepAwake::MyKeepWakeSystemTimerCallback(bool &told) {
    if (const auto held = mPower->hold(QString::fromLatin1(kReason)); !held && !told) {
        told = true; // once, not at every interval
        Log(held.failure().detail);
    }
}

} // namespace cantorel
