#pragma once

#include "platform/desktop/PowerActivity.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>

namespace cantorel {

// Keeps the machine awake while it lives: a thread of its own holds an inhibitor, and looks at every interval whether
// it is still held. Its end waits for the thread, at most as long as one call of the service lasts.
class KeepAwake {
public:
    explicit KeepAwake(std::shared_ptr<desktop::PowerActivity> power,
                       std::chrono::milliseconds interval = std::chrono::seconds(30));

private:
    void run(const std::stop_token &stop);
    void MyKeepWakeSystemTimerCallback(bool &told);

    const std::shared_ptr<desktop::PowerActivity> mPower;
    const std::chrono::milliseconds mInterval;
    std::mutex mMutex; // guards nothing but the wait
    std::condition_variable_any mWake;
    std::jthread mThread; // last, so that it ends first
};

} // namespace cantorel
