#include "platform/media/FrameQueue.h"
#include "platform/media/LevelMeter.h"
#include "platform/media/StereoMix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <thread>

namespace cantorel::media {
namespace {

// Numbered frames through a small queue: what arrives is in order, and what is missing is counted to the frame.
TEST(FrameQueue, TwoThreadsNeitherDoubleNorReorderAndEveryLossIsCounted) {
    FrameQueue queue(2, 256);
    constexpr std::uint32_t kFrames = 300000;
    std::thread writer([&] {
        std::mt19937 random(3);
        std::vector<float> piece;
        for (std::uint32_t next = 0; next < kFrames;) {
            const std::uint32_t count = std::min<std::uint32_t>(1 + random() % 200, kFrames - next);
            piece.resize(count * 2);
            for (std::uint32_t i = 0; i < count; ++i) {
                piece[2 * i] = static_cast<float>(next + i);
                piece[2 * i + 1] = -piece[2 * i];
            }
            queue.push(piece.data(), count);
            next += count;
            if (random() % 8 == 0)
                std::this_thread::yield();
        }
        queue.countDiscontinuity(); // the end
    });
    std::mt19937 random(5);
    std::vector<float> got(2 * 300);
    std::uint64_t arrived = 0;
    float last = -1;
    for (bool ended = false; !ended || queue.available() > 0;) {
        ended = queue.discontinuities() > 0;
        const std::size_t count = queue.pop(got.data(), 1 + random() % 300);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_GT(got[2 * i], last);
            ASSERT_EQ(got[2 * i + 1], -got[2 * i]);
            last = got[2 * i];
        }
        arrived += count;
    }
    writer.join();
    arrived += queue.pop(got.data(), 256);
    EXPECT_EQ(arrived, queue.accepted());
    EXPECT_EQ(arrived + queue.dropped(), kFrames);
}

TEST(FrameQueue, FullQueueKeepsWhatItHas) {
    FrameQueue queue(1, 100); // 128 frames
    std::vector<float> piece(100, 1);
    queue.push(piece.data(), 100);
    queue.push(piece.data(), 29);
    EXPECT_EQ(queue.dropped(), 29u);
    queue.push(piece.data(), 28);
    EXPECT_EQ(queue.available(), 128u);
    EXPECT_EQ(queue.dropped(), 29u);
}

TEST(LevelMeter, TellsTheRootMeanSquareOfTheLastTenthOfASecond) {
    LevelMeter meter(2, 48000);
    EXPECT_EQ(meter.decibels(), (std::vector<float>{-80, -80}));
    std::vector<float> samples(512 * 2);
    std::size_t frame = 0;
    const auto feed = [&](float left, int cycles) {
        for (int cycle = 0; cycle < cycles; ++cycle) {
            for (std::size_t i = 0; i < 512; ++i, ++frame) {
                samples[2 * i] = left * static_cast<float>(std::sin(2 * std::numbers::pi * 1000 * frame / 48000.0));
                samples[2 * i + 1] = 0;
            }
            meter.feed(samples.data(), 512);
        }
    };
    feed(0.1f, 20);
    EXPECT_NEAR(meter.decibels()[0], -23.01, 0.05);
    EXPECT_EQ(meter.decibels()[1], -80);
    feed(1e-6f, 20);
    EXPECT_EQ(meter.decibels()[0], -80) << "the floor";
}

TEST(StereoMix, FollowsTheSources) {
    const struct {
        const char *what;
        std::vector<int> sources;
        std::vector<float> input; // one frame
        std::vector<float> stereo;
        std::size_t limited;
    } cases[] = {
        {"stereo passes, above 1 too", {2}, {1.5f, -0.25f}, {1.5f, -0.25f}, 0},
        {"mono goes to both", {1}, {0.5f}, {0.5f, 0.5f}, 0},
        {"two stereo sources add up", {2, 2}, {0.1f, 0.2f, 0.4f, 0.5f}, {0.1f + 0.4f, 0.2f + 0.5f}, 0},
        {"a mono source joins both sides", {1, 2}, {0.5f, 0.125f, 0.25f}, {0.625f, 0.75f}, 0},
        {"a mono source last", {2, 1}, {0.125f, 0.25f, 0.5f}, {0.625f, 0.75f}, 0},
        {"peaks are limited and counted", {2, 2}, {0.75f, -0.75f, 0.75f, -0.75f}, {1, -1}, 2},
    };
    for (const auto &[what, sources, input, stereo, limited] : cases) {
        SCOPED_TRACE(what);
        StereoMix mix(sources);
        const auto mixed = mix.mix(input);
        EXPECT_EQ(std::vector<float>(mixed.begin(), mixed.end()), stereo);
        EXPECT_EQ(mix.limitedSamples(), limited);
    }
}

} // namespace
} // namespace cantorel::media
