#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <optional>
#include <vector>

namespace cantorel::media {

// Frames on their way from one real-time writer to one reader. The counters only grow; write minus read is never above
// the capacity. The writer releases mWritten after the samples and the reader acquires it before them; the other way
// round for mRead. The rest is counted relaxed. Two recordings that follow each other read one queue in turn: what the
// first leaves is what the second begins with.
class FrameQueue {
public:
    // capacityFrames: rounded up to a power of two. The memory is touched here, so that the writer never faults.
    FrameQueue(int channels, std::size_t capacityFrames)
        : mChannels(static_cast<std::size_t>(channels)),
          mCapacity(std::bit_ceil(capacityFrames)),
          mSamples(mCapacity * mChannels) {}

    // The writer. All frames or, when they do not fit, none: those are counted as dropped.
    void push(const float *interleaved, std::size_t frames) noexcept [[clang::nonblocking]] {
        const std::uint64_t written = mWritten.load(std::memory_order_relaxed);
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
    void countDiscontinuity() noexcept [[clang::nonblocking]] {
        mDiscontinuities.fetch_add(1, std::memory_order_relaxed);
    }

    // The writer. That many frames are missing in front of the next one. False when there is no room for the note.
    struct Hole {
        std::uint64_t position = 0; // frames accepted before it
        std::uint64_t frames = 0;
    };
    bool noteHole(std::uint64_t frames) noexcept [[clang::nonblocking]] {
        const std::uint32_t noted = mHolesNoted.load(std::memory_order_relaxed);
        if (noted - mHolesPassed.load(std::memory_order_acquire) == mHoles.size())
            return false;
        mHoles[noted % mHoles.size()] = {mWritten.load(std::memory_order_relaxed), frames};
        mHolesNoted.store(noted + 1, std::memory_order_release);
        return true;
    }
    // The reader. The first hole that was not passed yet. One is noted before the frame behind it is accepted.
    std::optional<Hole> nextHole() const {
        const std::uint32_t passed = mHolesPassed.load(std::memory_order_relaxed);
        if (passed == mHolesNoted.load(std::memory_order_acquire))
            return {};
        return mHoles[passed % mHoles.size()];
    }
    // The writer. Of the next frames so many hold silence for a source that is away.
    void countFilled(std::uint64_t frames) noexcept [[clang::nonblocking]] {
        mFilled.fetch_add(frames, std::memory_order_relaxed);
    }
    void passHole() { mHolesPassed.fetch_add(1, std::memory_order_release); }

    // Held by who reads; the next reader waits for it.
    std::mutex &reading() { return mReading; }
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
    void discard(std::size_t frames) {
        mRead.store(mRead.load(std::memory_order_relaxed) + std::min(frames, available()), std::memory_order_release);
    }

    // Any thread.
    int channels() const { return static_cast<int>(mChannels); }
    std::uint64_t accepted() const { return mWritten.load(std::memory_order_acquire); } // frames
    std::uint64_t taken() const { return mRead.load(std::memory_order_relaxed); }       // frames
    std::uint64_t dropped() const { return mDropped.load(std::memory_order_relaxed); }  // frames
    std::uint64_t filled() const { return mFilled.load(std::memory_order_relaxed); }    // frames
    std::uint64_t discontinuities() const { return mDiscontinuities.load(std::memory_order_relaxed); }

private:
    const std::size_t mChannels;
    const std::size_t mCapacity; // frames, a power of two
    std::vector<float> mSamples;
    alignas(64) std::atomic<std::uint64_t> mWritten{0};
    std::atomic<std::uint64_t> mDropped{0};
    std::atomic<std::uint64_t> mDiscontinuities{0};
    std::atomic<std::uint64_t> mFilled{0};
    alignas(64) std::atomic<std::uint64_t> mRead{0};
    std::mutex mReading;
    std::array<Hole, 64> mHoles;
    std::atomic<std::uint32_t> mHolesNoted{0};
    std::atomic<std::uint32_t> mHolesPassed{0};
};

} // namespace cantorel::media
