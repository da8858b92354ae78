#include "audio_device/AudioRingBuffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

using cantorel::AudioRingBuffer;

namespace {

// The ring as plainly as it can be said: bounds and byte positions in 32-bit arithmetic, one byte at a time.
class PlainRing {
public:
    PlainRing(std::uint32_t bytesPerFrame, std::uint32_t capacityFrames)
        : mBytes(bytesPerFrame), mCapacity(capacityFrames), mRing(std::size_t(bytesPerFrame) * capacityFrames) {}

    bool store(const std::uint8_t *data, std::uint32_t frames, std::int64_t at) {
        if (frames > mCapacity)
            return false;
        if (at >= end + mCapacity) {
            std::fill(mRing.begin(), mRing.end(), 0);
            start = offset = end = 0;
        }
        if (start == 0) {
            offset = 0;
            start = at;
            end = at + frames;
            std::copy_n(data, frames * mBytes, mRing.begin());
            return true;
        }
        if (at + frames > end) {
            for (std::int64_t gap = end; gap < at; ++gap) {
                for (std::uint32_t b = 0; b < mBytes; ++b)
                    mRing[position(gap) + b] = 0;
            }
            end = at + frames;
            if (const std::int64_t oldest = end - mCapacity; oldest > start) {
                offset = position(oldest);
                start = oldest;
            }
        }
        const std::uint32_t bytes = frames * mBytes, from = position(at), to = position(at + frames);
        if (bytes == 0)
            return true;
        for (std::uint32_t i = 0; i < bytes; ++i) {
            if (to > from && i >= to - from)
                break; // positions that lie further together than there is data
            const std::uint32_t where = to <= from && i >= mRing.size() - from ? i - (mRing.size() - from) : from + i;
            mRing[where] = data[i];
        }
        return true;
    }

    double fetch(std::vector<std::uint8_t> &data, std::uint32_t frames, std::int64_t at) const {
        if (start > at)
            return double(at - start);
        if (at + frames > end)
            return double(at + frames - end);
        for (std::uint32_t i = 0; i < frames * mBytes; ++i)
            data[i] = mRing[(position(at) + i) % mRing.size()];
        return double(end - (at + frames));
    }

    std::int64_t start = 0, end = 0, offset = 0;

private:
    std::uint32_t position(std::int64_t frame) const {
        return (std::uint32_t(frame - start) * mBytes + std::uint32_t(offset)) % std::uint32_t(mRing.size());
    }
    std::uint32_t mBytes;
    std::int64_t mCapacity;
    std::vector<std::uint8_t> mRing;
};

} // namespace

TEST(AudioRingBuffer, AgreesWithAPlainModelOverRandomUse) {
    std::mt19937 random(20260102);
    const auto pick = [&](std::int64_t low, std::int64_t high) {
        return std::uniform_int_distribution<std::int64_t>(low, high)(random);
    };
    for (int round = 0; round < 300; ++round) {
        const auto bytesPerFrame = std::uint32_t(pick(1, 12));
        const auto capacity = std::uint32_t(pick(1, 200));
        AudioRingBuffer ring(bytesPerFrame, capacity);
        PlainRing model(bytesPerFrame, capacity);
        std::int64_t time = pick(0, 3) == 0 ? pick(0, 5) : pick(1, std::int64_t(1) << 34);
        for (int step = 0; step < 400; ++step) {
            const auto frames = std::uint32_t(pick(0, capacity + 2));
            if (pick(0, 1)) {
                // Mostly onwards; sometimes a gap, an overwrite, a time before everything, or far ahead.
                const std::int64_t at = pick(0, 9) < 6 ? time : time + pick(-3 * std::int64_t(capacity), 2 * capacity);
                std::vector<std::uint8_t> data(std::size_t(frames) * bytesPerFrame);
                for (auto &byte : data)
                    byte = std::uint8_t(pick(0, 255));
                ASSERT_EQ(ring.Store(data.data(), frames, at), model.store(data.data(), frames, at));
                time = std::max(at + frames, std::int64_t(0));
            } else {
                const std::int64_t at = model.end - pick(-2, 2 * capacity);
                std::vector<std::uint8_t> got(std::size_t(frames) * bytesPerFrame, 0xEE), wanted = got;
                ASSERT_EQ(ring.Fetch(got.data(), frames, at), model.fetch(wanted, frames, at));
                ASSERT_EQ(got, wanted);
            }
            ASSERT_EQ(ring.startFrame(), model.start);
            ASSERT_EQ(ring.endFrame(), model.end);
            ASSERT_EQ(ring.startOffset(), model.offset);
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
