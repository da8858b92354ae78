#pragma once

#include <QThreadPool>

#include <functional>

namespace cantorel {

// Runs tasks beside the main thread. Outlives whoever gives it tasks.
class BackgroundTasks {
public:
    virtual ~BackgroundTasks() = default;

    // Any thread. What a task throws is logged.
    virtual void run(std::function<void()> task) = 0;
    // Returns when all tasks have ended; those that have not begun may be dropped.
    virtual void finish() = 0;
};

// On a few threads of its own.
class PooledBackgroundTasks : public BackgroundTasks {
public:
    PooledBackgroundTasks();
    ~PooledBackgroundTasks() override { finish(); }

    void run(std::function<void()> task) override;
    void finish() override;

private:
    QThreadPool mPool;
};

} // namespace cantorel
