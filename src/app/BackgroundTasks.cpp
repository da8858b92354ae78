#include "app/BackgroundTasks.h"

#include "log/GuardedAction.h"

namespace cantorel {

namespace {

constexpr int kThreads = 2; // Tasks wait for devices, files and servers; they don't compute.

} // namespace

PooledBackgroundTasks::PooledBackgroundTasks() { mPool.setMaxThreadCount(kThreads); }

void PooledBackgroundTasks::run(std::function<void()> task) {
    mPool.start([task = std::move(task)] { (void)guarded("background task", task); }); // logged there
}

void PooledBackgroundTasks::finish() {
    mPool.clear();
    mPool.waitForDone();
}

} // namespace cantorel
