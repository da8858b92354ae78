#pragma once

#include "platform/media/Codecs.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace cantorel::media {

// Frames on their way from one real-time writer to one reader. The counters only grow; write minus read is never above
// the capacity. The writer releases mWritten after the samples and the reader acquires it before them; the other way
// round for mRead. The rest is counted relaxed. mPushing, mEnding and mClosed are sequentially consistent: either
// push() sees that the queue ends or is closed, or who said so sees that push() is under way.
class FrameQueue {
public:
    // A recording that ends with a whole block is as long in every player as it was captured.
    static constexpr std::size_t kBlockFrames = kFramesPerPacket;

    // capacityFrames: rounded up to a power of two. The memory is touched here, so that the writer never faults.
    FrameQueue(int channels, std::size_t capacityFrames)
        : mChannels(static_cast<std::size_t>(channels)),
          mCapacity(std::bit_ceil(capacityFrames)),
          mSamples(mCapacity * mChannels) {}

    // The writer. All frames or, when they do not fit, none: those are counted as dropped.
    void push(const float *interleaved, std::size_t frames) noexcept [[clang::nonblocking]] {
        mPushing.store(true);
        if (!mClosed.load())
            take(interleaved, frames);
        mPushing.store(false);
    }
    void countDiscontinuity() noexcept [[clang::nonblocking]] {
        mDiscontinuities.fetch_add(1, std::memory_order_relaxed);
    }

    // Any thread. After end() only the frames up to the next whole block are taken, which is complete() then.
    void end() { mEnding.store(true); }
    bool complete() const { return !mPushing.load() && accepted() % kBlockFrames == 0; }
    // Any thread but the writer. Nothing is taken once this has returned.
    void close() {
        mClosed.store(true);
        while (mPushing.load())
            std::this_thread::yield();
    }

    // The reader. Takes up to `frames` frames; answers how many.
    std::size_t pop(float *interleaved, std::size_t frames) {
        const std::uint64_t read = mRead.load(std::memory_order_relaxed);
        const std::size_t count = std::min<std::uint64_t>(frames, mWritten.load(std::memory_order_acquire) - read);
        const std::size_t start = read & (mCapacity - 1);
        const std::size_t first = std::min(count, mCapacity - start);
        std::memcpy(interleaved, &mSamples[start * mChannels], first * mChannels * sizeof(float));
        std::memcpy(interleaved + first * mChannels, mSamples.data(), (count - first) * mChannels * sizeof(float));
        mRead.store(read + count, std::memory_order_release);
        return count;
    }
    std::size_t available() const {
        return mWritten.load(std::memory_order_acquire) - mRead.load(std::memory_order_relaxed);
    }

    // Any thread.
    int channels() const { return static_cast<int>(mChannels); }
    std::uint64_t accepted() const { return mWritten.load(std::memory_order_relaxed); } // frames
    std::uint64_t dropped() const { return mDropped.load(std::memory_order_relaxed); }  // frames
    std::uint64_t discontinuities() const { return mDiscontinuities.load(std::memory_order_relaxed); }

private:
    void take(const float *interleaved, std::size_t frames) noexcept [[clang::nonblocking]] {
        const std::uint64_t written = mWritten.load(std::memory_order_relaxed);
        if (mEnding.load())
            frames = std::min<std::size_t>(frames, (kBlockFrames - written % kBlockFrames) % kBlockFrames);
        if (mCapacity - (written - mRead.load(std::memory_order_acquire)) < frames) {
            mDropped.fetch_add(frames, std::memory_order_relaxed);
            return;
        }
        const std::size_t start = written & (mCapacity - 1);
        const std::size_t first = std::min(frames, mCapacity - start);
        std::memcpy(&mSamples[start * mChannels], interleaved, first * mChannels * sizeof(float));
        std::memcpy(mSamples.data(), interleaved + first * mChannels, (frames - first) * mChannels * sizeof(float));
        mWritten.store(written + frames, std::memory_order_release);
    }

    const std::size_t mChannels;
    const std::size_t mCapacity; // frames, a power of two
    std::vector<float> mSamples;
    alignas(64) std::atomic<std::uint64_t> mWritten{0};
    std::atomic<bool> mPushing{false};
    std::atomic<std::uint64_t> mDropped{0};
    std::atomic<std::uint64_t> mDiscontinuities{0};
    alignas(64) std::atomic<std::uint64_t> mRead{0};
    std::atomic<bool> mEnding{false};
    std::atomic<bool> mClosed{false};
};

} // namespace cantorel::media
