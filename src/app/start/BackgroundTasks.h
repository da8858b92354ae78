#pragma once

#include "platform/foundation/Guarded.h"

#include <QThreadPool>

#include <functional>
#include <vector>

namespace cantorel {

// Runs tasks beside the main thread. Outlives the objects that give it tasks.
class BackgroundTasks {
public:
    virtual ~BackgroundTasks() = default;

    // Any thread. What a task throws is logged.
    virtual void run(std::function<void()> task) = 0;
    // Returns when all tasks have ended; those that have not begun may be dropped.
    virtual void finish() = 0;
};

// On a few threads of its own, from begin() on: what is given before waits, so that it is not in the way of the first
// picture.
class PooledBackgroundTasks : public BackgroundTasks {
public:
    PooledBackgroundTasks();
    ~PooledBackgroundTasks() override { finish(); }

    void begin();
    void run(std::function<void()> task) override;
    void finish() override;

private:
    struct Waiting {
        bool hasBegun = false;
        std::vector<std::function<void()>> tasks;
    };

    void start(std::function<void()> task);

    foundation::Guarded<Waiting> mWaiting;
    QThreadPool mPool;
};

} // namespace cantorel
