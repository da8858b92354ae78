#include "recording/session/SilenceWatch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace std::chrono_literals;
using cantorel::SilenceWatch;

TEST(SilenceWatch, IsDueThreeSecondsAfterItBeganAndOnce) {
    SilenceWatch watch;
    EXPECT_FALSE(watch.isDue(100s)) << "never begun";
    watch.begin(10s);
    EXPECT_FALSE(watch.isDue(13s - 1ns));
    EXPECT_TRUE(watch.isDue(13s));
    EXPECT_FALSE(watch.isDue(14s));
    EXPECT_FALSE(watch.isDue(1000s));
}

TEST(SilenceWatch, TheFirstFramesBeginItAnew) {
    SilenceWatch watch;
    watch.begin(0s); // asked for
    watch.begin(2s); // the first frames came
    EXPECT_FALSE(watch.isDue(4s));
    EXPECT_TRUE(watch.isDue(5s));
}

TEST(SilenceWatch, APauseIsNoSilence) {
    SilenceWatch watch;
    watch.begin(0s);
    watch.resumed(10s);
    EXPECT_FALSE(watch.isDue(12s));
    EXPECT_TRUE(watch.isDue(13s));
    watch.begin(20s);
    watch.level(1);
    watch.resumed(30s);
    EXPECT_FALSE(watch.isDue(40s)) << "sound was heard before";
}

TEST(SilenceWatch, AnySoundAboveTheMetersFloorEndsIt) {
    // The level is 20 times the mean amplitude of the channels in dB.
    const auto level = [](double decibels) { return static_cast<float>(20 * std::pow(10, decibels / 20)); };
    const struct {
        float level;
        bool silent;
    } cases[] = {{level(-80), true},
                 {level(-79.9), false},
                 {level((-80 - 20) / 2.0), false}, // one of two channels is silent
                 {level(0), false},
                 {0, true},
                 {-1, true},
                 {std::numeric_limits<float>::quiet_NaN(), true},
                 {std::numeric_limits<float>::infinity(), false}};
    for (const auto &[value, silent] : cases) {
        SilenceWatch watch;
        watch.begin(0s);
        watch.level(value);
        EXPECT_EQ(watch.isDue(3s), silent) << value;
    }
}
