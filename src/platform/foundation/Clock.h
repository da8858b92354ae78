#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace cantorel::foundation {

// Calls its action for as long as it lives; made by a clock.
class Timer {
public:
    virtual ~Timer() = default;
};

// The passing of time as the program sees it. Waiting on it steps software devices in tests, so a wait holds no lock.
class Clock {
public:
    using Duration = std::chrono::nanoseconds;

    virtual ~Clock() = default;

    // Time since some fixed moment; never runs backwards. Any thread.
    virtual Duration now() const = 0;

    // Returns when the duration has passed. Not on a real-time thread.
    virtual void sleepFor(Duration duration) = 0;

    // Calls the action from the event loop whenever the interval has passed, or once when the delay has; never from
    // within another call. What was missed meanwhile is one call, not several. The action may end its own timer. Main
    // thread.
    [[nodiscard]] std::unique_ptr<Timer> every(Duration interval, std::function<void()> action) {
        return timer(interval, true, std::move(action));
    }
    [[nodiscard]] std::unique_ptr<Timer> after(Duration delay, std::function<void()> action) {
        return timer(delay, false, std::move(action));
    }

private:
    virtual std::unique_ptr<Timer> timer(Duration interval, bool repeats, std::function<void()> action);
};

// The machine's monotonic clock.
class WallClock : public Clock {
public:
    Duration now() const override;
    void sleepFor(Duration duration) override;
};

} // namespace cantorel::foundation
