#include "platform/hal/embedded/DeviceClock.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <thread>

namespace cantorel::hal {

void ManualClock::advance(Duration duration) {
    const Duration target = mNow + duration;
    while (mTurn) {
        const Duration next = mTurn(mNow);
        if (next > target)
            break;
        mNow = std::max(mNow, next);
    }
    mNow = target;
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
