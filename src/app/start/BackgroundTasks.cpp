#include "app/start/BackgroundTasks.h"

#include "log/GuardedAction.h"

namespace cantorel {

namespace {

constexpr int kThreads = 2; // Tasks wait for devices, files and servers; they don't compute.

} // namespace

PooledBackgroundTasks::PooledBackgroundTasks() { mPool.setMaxThreadCount(kThreads); }

void PooledBackgroundTasks::begin() {
    mWaiting.with([this](Waiting &waiting) {
        waiting.hasBegun = true;
        for (auto &task : waiting.tasks)
            start(std::move(task));
        waiting.tasks.clear();
    });
}

void PooledBackgroundTasks::run(std::function<void()> task) {
    mWaiting.with([&](Waiting &waiting) {
        if (waiting.hasBegun)
            start(std::move(task));
        else
            waiting.tasks.push_back(std::move(task));
    });
}

void PooledBackgroundTasks::start(std::function<void()> task) {
    mPool.start([task = std::move(task)] { (void)guarded("background task", task); }); // logged there
}

void PooledBackgroundTasks::finish() {
    mWaiting.with([](Waiting &waiting) { waiting.tasks.clear(); });
    mPool.clear();
    mPool.waitForDone();
}

} // namespace cantorel
