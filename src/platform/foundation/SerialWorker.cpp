#include "platform/foundation/SerialWorker.h"

#include <utility>

namespace cantorel::foundation {

void SerialWorker::start(std::function<void()> job) {
    {
        const std::scoped_lock lock(mMutex);
        mJobs.push_back(std::move(job));
    }
    mWake.notify_one();
    if (!mThread.joinable())
        mThread = std::jthread([this](const std::stop_token &stop) { run(stop); });
}

void SerialWorker::clear() {
    const std::scoped_lock lock(mMutex);
    mJobs.clear();
}

void SerialWorker::finish() { mThread = {}; }

void SerialWorker::run(const std::stop_token &stop) {
    std::unique_lock lock(mMutex);
    while (mWake.wait(lock, stop, [this] { return !mJobs.empty(); })) { // Asked to stop, it does what is left.
        std::function<void()> job = std::move(mJobs.front());
        mJobs.pop_front();
        lock.unlock();
        job();
        job = nullptr; // What it holds ends before anybody waits for the lock.
        lock.lock();
    }
}

} // namespace cantorel::foundation
