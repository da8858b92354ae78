#pragma once

#include <QString>

#include <functional>

namespace cantorel::desktop {

// Holds back that the machine falls asleep or shuts down, for the few seconds that finishing something takes. Main
// thread.
class SleepDelay {
public:
    virtual ~SleepDelay() = default;

    // From now on the machine waits for release(), some seconds at most. Holding twice is holding once. Where nothing
    // takes the wish, the machine does not wait.
    virtual void hold(const QString &reason) = 0;
    virtual void release() = 0;

    // Called from the first hold() on, held or not. willSleep: the machine is about to sleep or shut down, and does so
    // once no program holds it back. didWake: it is awake again, or has stayed awake. May be empty.
    std::function<void(bool shutsDown)> willSleep;
    std::function<void()> didWake;
};

} // namespace cantorel::desktop
