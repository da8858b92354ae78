#pragma once

#include <QObject>
#include <QThreadPool>

#include <functional>

namespace cantorel {

// Threads that wait for converters, and bring what they find to the main thread. Owned and used by the main thread.
class ConvertWorkers : public QObject {
public:
    explicit ConvertWorkers(int threads);
    // Waits for what runs; what has not begun never does. Its owner has had the jobs asked to stop.
    ~ConvertWorkers() override;

    // Jobs begin in this order.
    void start(std::function<void()> job);
    // From within a job: has the action called on the main thread, unless the workers are gone by then.
    void tell(std::function<void()> action);

private:
    QThreadPool mPool;
};

} // namespace cantorel
