#include "platform/hal/embedded/DeviceClock.h"

#include <gtest/gtest.h>

#include <vector>

namespace cantorel::hal {
namespace {

using std::chrono::milliseconds;

struct ManualClockTest : testing::Test {
    ManualClock clock;
    std::vector<long> calls; // the milliseconds of each

    auto note() {
        return [this] { calls.push_back(clock.now() / milliseconds(1)); };
    }
};

} // namespace

TEST_F(ManualClockTest, TimersCallInTheOrderOfTimeAfterTheDevices) {
    std::vector<long> turns;
    clock.start([&](auto now) {
        turns.push_back(now / milliseconds(1));
        return now / milliseconds(10) * milliseconds(10) + milliseconds(10);
    });
    std::size_t turnsBefore = 0;
    const auto slow = clock.every(milliseconds(30), [&] {
        note()();
        turnsBefore = turns.size();
    });
    const auto once = clock.after(milliseconds(25), note());
    const auto atOnce = clock.after(milliseconds(0), [] {});
    clock.advance(milliseconds(65));
    EXPECT_EQ(calls, (std::vector<long>{25, 30, 60}));
    EXPECT_EQ(turns[turnsBefore - 1], 60);
    clock.stop();
}

TEST_F(ManualClockTest, ATimerEndsWithItsHandleAlsoInItsOwnCall) {
    std::unique_ptr<foundation::Timer> own;
    own = clock.every(milliseconds(5), [&] {
        calls.push_back(0);
        own.reset();
    });
    auto other = clock.every(milliseconds(7), note());
    clock.advance(milliseconds(10));
    other.reset();
    clock.advance(milliseconds(100));
    EXPECT_EQ(calls, (std::vector<long>{0, 7}));
}

TEST_F(ManualClockTest, WhatASleepMissesIsOneCallAfterIt) {
    const auto steady = clock.every(milliseconds(10), note());
    const auto sleeper = clock.after(milliseconds(15), [&] { clock.sleepFor(milliseconds(30)); });
    clock.advance(milliseconds(60));
    EXPECT_EQ(calls, (std::vector<long>{10, 45, 50, 60}));
}

} // namespace cantorel::hal
