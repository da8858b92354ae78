#pragma once

#include <chrono>

namespace cantorel::foundation {

// The passing of time as the program sees it. Waiting on it steps software devices in tests, so a wait holds no lock.
class Clock {
public:
    using Duration = std::chrono::nanoseconds;

    virtual ~Clock() = default;

    // Time since some fixed moment; never runs backwards. Any thread.
    virtual Duration now() const = 0;

    // Returns when the duration has passed. Not on a real-time thread.
    virtual void sleepFor(Duration duration) = 0;
};

// The machine's monotonic clock.
class WallClock : public Clock {
public:
    Duration now() const override;
    void sleepFor(Duration duration) override;
};

} // namespace cantorel::foundation
