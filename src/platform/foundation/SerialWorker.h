#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace cantorel::foundation {

// A thread that does one job after the other, there from the first one on. Its end waits until all are done. Used by
// one thread; jobs must not throw.
class SerialWorker {
public:
    void start(std::function<void()> job);
    // What has not begun never does.
    void clear();
    // Waits until all is done.
    void finish();

private:
    void run(const std::stop_token &stop);

    std::mutex mMutex; // guards the jobs
    std::condition_variable_any mWake;
    std::deque<std::function<void()>> mJobs;
    std::jthread mThread; // last: it uses the above
};

} // namespace cantorel::foundation
