#include "audio_device/AudioRingBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>
#include <vector>

using cantorel::AudioRingBuffer;

TEST(AudioRingBuffer, HoldsTheLatestFramesWhereverTheyAreStored) {
    std::mt19937 random(20260102);
    const auto pick = [&](std::int64_t low, std::int64_t high) {
        return std::uniform_int_distribution<std::int64_t>(low, high)(random);
    };
    for (int round = 0; round < 200; ++round) {
        const std::int64_t capacity = pick(1, 200);
        AudioRingBuffer ring(sizeof(int), std::uint32_t(capacity));
        std::int64_t first = pick(1, std::int64_t(1) << 34);
        std::vector<int> held; // from there on
        for (int step = 0; step < 200; ++step) {
            // Onwards, over what is held, behind a gap, or far ahead.
            const std::int64_t end = first + std::ssize(held);
            const std::int64_t at = pick(0, 2) && !held.empty() ? end : pick(first, end + 2 * capacity);
            std::vector<int> data(std::size_t(pick(1, capacity)));
            for (int &frame : data)
                frame = int(pick(1, 1 << 30));
            ASSERT_TRUE(ring.Store(data.data(), std::uint32_t(data.size()), at));
            if (held.empty() || at >= end + capacity) {
                first = at;
                held.clear();
            }
            held.resize(std::max(held.size(), std::size_t(at - first) + data.size()));
            std::copy(data.begin(), data.end(), held.begin() + (at - first));
            const std::int64_t over = std::max<std::int64_t>(0, std::ssize(held) - capacity);
            held.erase(held.begin(), held.begin() + over);
            first += over;
            ASSERT_EQ(ring.startFrame(), first);
            ASSERT_EQ(ring.endFrame(), first + std::ssize(held));
            const std::int64_t from = pick(0, std::ssize(held) - 1);
            std::vector<int> got(held.size() - std::size_t(from), -1);
            ASSERT_EQ(ring.Fetch(got.data(), std::uint32_t(got.size()), first + from), 0);
            ASSERT_TRUE(std::equal(got.begin(), got.end(), held.begin() + from));
        }
    }
}

TEST(AudioRingBuffer, KeepsItsBoundsAtTheEdges) {
    AudioRingBuffer ring(sizeof(int), 1000);
    std::vector<int> data(1001);
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = int(i) + 1;

    EXPECT_TRUE(ring.Store(data.data(), 512, 1000));
    EXPECT_EQ(ring.startFrame(), 1000);
    EXPECT_EQ(ring.endFrame(), 1512);
    EXPECT_FALSE(ring.Store(data.data(), 1001, 1512)) << "more than fits changes nothing";
    EXPECT_EQ(ring.endFrame(), 1512);

    std::vector<int> got(1000, -1);
    EXPECT_LT(ring.Fetch(got.data(), 10, 999), 0);
    EXPECT_GT(ring.Fetch(got.data(), 10, 1503), 0) << "not written yet is positive too";
    EXPECT_EQ(got[0], -1) << "the caller's data stays untouched";
    EXPECT_EQ(ring.Fetch(got.data(), 512, 1000), 0);
    EXPECT_EQ(got[511], 512);

    EXPECT_TRUE(ring.Store(data.data(), 100, 1612)) << "a gap is silence";
    EXPECT_EQ(ring.Fetch(got.data(), 200, 1500), 12);
    EXPECT_EQ(got[11], 512);
    EXPECT_EQ(got[12], 0);
    EXPECT_EQ(got[111], 0);
    EXPECT_EQ(got[112], 1);

    EXPECT_TRUE(ring.Store(data.data(), 1, ring.endFrame() + 1000)) << "a capacity ahead restarts";
    EXPECT_EQ(ring.startFrame(), ring.endFrame() - 1);
}

// Blocks are small, and the reader waits for none, so that the start of what is held moves during many reads.
TEST(AudioRingBuffer, HandsFramesFromOneThreadToAnotherWhole) {
    constexpr std::int64_t kBlock = 4, kCapacity = 20000, kFrames = 1500000;
    AudioRingBuffer ring(2 * sizeof(std::int64_t), kCapacity);
    std::atomic<std::int64_t> readerAt{kBlock};
    std::thread writer([&] {
        std::vector<std::int64_t> data(2 * kBlock);
        for (std::int64_t at = kBlock; at < kFrames; at += kBlock) {
            // Devices run at one pace: the writer is never a whole ring ahead of the reader.
            while (at > readerAt.load(std::memory_order_acquire) + kCapacity - 100 * kBlock)
                std::this_thread::yield();
            for (std::int64_t i = 0; i < kBlock; ++i)
                data[2 * i] = data[2 * i + 1] = at + i;
            ring.Store(data.data(), kBlock, at);
        }
    });
    std::vector<std::int64_t> got(2 * kBlock);
    std::int64_t read = 0, torn = 0;
    for (std::int64_t at = kBlock; at < kFrames - 100 * kBlock;) {
        got[0] = -1;
        (void)ring.Fetch(got.data(), kBlock, at);
        if (got[0] != -1) {
            ++read;
            for (std::int64_t i = 0; i < kBlock; ++i)
                torn += got[2 * i] != at + i || got[2 * i + 1] != at + i;
        }
        at = std::max(at, ring.endFrame() - 20 * kBlock);
        readerAt.store(at, std::memory_order_release);
    }
    writer.join();
    EXPECT_GT(read, kFrames / kCapacity);
    EXPECT_EQ(torn, 0);
}
