#pragma once

#include "platform/foundation/Clock.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace cantorel::hal {

// What software devices live by: tells them when time has come. Owned by the EmbeddedBackend, but for a manual one,
// which a test shares to step it.
class DeviceClock : public foundation::Clock {
public:
    // The devices' turn at a moment: they do what is due and answer when they want the next one (Duration::max():
    // never).
    using Turn = std::function<Duration(Duration)>;

    virtual void start(Turn turn) = 0;
    // Returns after the last turn.
    virtual void stop() = 0;
    // The devices want a turn earlier than they said.
    virtual void wake() = 0;
};

// Stands still until it is stepped; a sleep steps it. Any thread asks what time it is; the turns and the timers' calls
// happen on the thread that steps, which must be the main thread where there are timers.
class ManualClock : public DeviceClock {
public:
    Duration now() const override { return mNow; }
    // As in a program, no timer calls while somebody sleeps.
    void sleepFor(Duration duration) override { step(now() + duration, false); }
    void advance(Duration duration) { step(now() + duration, true); }

    void start(Turn turn) override { mTurn = std::move(turn); }
    void stop() override { mTurn = {}; }
    void wake() override {}

private:
    struct Entry {
        Duration due{0}, interval{0};
        bool repeats = false;
        std::function<void()> action;
    };
    class SteppedTimer;

    void step(Duration target, bool withTimers);
    std::shared_ptr<Entry> earliestTimer() const;
    std::unique_ptr<foundation::Timer> timer(Duration interval, bool repeats, std::function<void()> action) override;

    std::atomic<Duration> mNow{Duration{0}};
    Turn mTurn;
    using Timers = std::vector<std::shared_ptr<Entry>>;
    std::shared_ptr<Timers> mTimers = std::make_shared<Timers>(); // in the order they were made
};

// The machine's monotonic clock and a thread "embedded-io" for the turns.
std::shared_ptr<DeviceClock> makeWallDeviceClock();

} // namespace cantorel::hal
