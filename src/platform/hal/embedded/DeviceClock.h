#pragma once

#include "platform/foundation/Clock.h"

#include <functional>
#include <memory>
#include <mutex>

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

// Stands still until it is stepped; a sleep steps it. The turns happen on the thread that steps.
class ManualClock : public DeviceClock {
public:
    Duration now() const override { return mNow; }
    void sleepFor(Duration duration) override { advance(duration); }
    void advance(Duration duration);

    void start(Turn turn) override { mTurn = std::move(turn); }
    void stop() override { mTurn = {}; }
    void wake() override {}

private:
    Duration mNow{0};
    Turn mTurn;
};

// The machine's monotonic clock and a thread "embedded-io" for the turns.
std::shared_ptr<DeviceClock> makeWallDeviceClock();

} // namespace cantorel::hal
