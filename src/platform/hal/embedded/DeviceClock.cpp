#include "platform/hal/embedded/DeviceClock.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <thread>

namespace cantorel::hal {

class ManualClock::SteppedTimer : public foundation::Timer {
public:
    SteppedTimer(std::shared_ptr<Timers> timers, std::shared_ptr<Entry> entry)
        : mTimers(std::move(timers)), mEntry(std::move(entry)) {
        mTimers->push_back(mEntry);
    }
    ~SteppedTimer() override { std::erase(*mTimers, mEntry); }

private:
    std::shared_ptr<Timers> mTimers;
    std::shared_ptr<Entry> mEntry;
};

std::unique_ptr<foundation::Timer> ManualClock::timer(Duration interval, bool repeats, std::function<void()> action) {
    return std::make_unique<SteppedTimer>(
        mTimers, std::make_shared<Entry>(Entry{now() + interval, interval, repeats, std::move(action)}));
}

std::shared_ptr<ManualClock::Entry> ManualClock::earliestTimer() const {
    const auto first = std::min_element(mTimers->begin(), mTimers->end(),
                                        [](const auto &one, const auto &other) { return one->due < other->due; });
    return first == mTimers->end() ? nullptr : *first;
}

void ManualClock::step(Duration target, bool withTimers) {
    for (;;) {
        const Duration turn = mTurn ? mTurn(now()) : Duration::max();
        const std::shared_ptr<Entry> timer = withTimers ? earliestTimer() : nullptr;
        const Duration next = std::min(turn, timer ? timer->due : Duration::max());
        if (next > target)
            break;
        mNow = std::max(now(), next);
        if (timer && timer->due < turn) { // At one moment the devices come first.
            timer->due =
                timer->repeats ? now() + timer->interval - (now() - timer->due) % timer->interval : Duration::max();
            timer->action();
        }
    }
    mNow = std::max(now(), target);
}

namespace {

class WallDeviceClock : public DeviceClock {
public:
    ~WallDeviceClock() override { stop(); }

    Duration now() const override { return mWall.now(); }
    void sleepFor(Duration duration) override { mWall.sleepFor(duration); }

    void start(Turn turn) override {
        mThread = std::jthread([this, turn = std::move(turn)](const std::stop_token &stopping) {
            pthread_setname_np(pthread_self(), "embedded-io");
            while (!stopping.stop_requested()) {
                const Duration next = turn(now());
                std::unique_lock lock(mMutex);
                const auto woken = [this] { return mWoken; };
                if (next == Duration::max())
                    mCondition.wait(lock, stopping, woken);
                else
                    mCondition.wait_until(lock, stopping, std::chrono::steady_clock::time_point(next), woken);
                mWoken = false;
            }
        });
    }
    void stop() override {
        if (mThread.joinable()) {
            mThread.request_stop();
            mThread.join();
        }
    }
    void wake() override {
        {
            const std::lock_guard lock(mMutex);
            mWoken = true;
        }
        mCondition.notify_all();
    }

private:
    foundation::WallClock mWall;
    std::mutex mMutex;
    std::condition_variable_any mCondition;
    bool mWoken = false;
    std::jthread mThread;
};

} // namespace

std::shared_ptr<DeviceClock> makeWallDeviceClock() { return std::make_shared<WallDeviceClock>(); }

} // namespace cantorel::hal
