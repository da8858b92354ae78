#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace cantorel {

// The most recent stretch of interleaved frames of one device, addressed by the device's sample time. Owned by the thru
// engine.
//
// One writer (Store) and one reader (Fetch) may run at once on real-time threads, without a lock: the end is published
// after the bytes it promises, and the two words of the start are read together under a sequence number that is odd
// while they move. The reader keeps its distance from both ends of the held range by design; what it might read torn
// lies there. Allocate and Clear run only while neither does.
class AudioRingBuffer {
public:
    AudioRingBuffer(std::uint32_t bytesPerFrame, std::uint32_t capacityFrames);

    // Frees what was held; the new storage is zeroed and empty.
    void Allocate(std::uint32_t bytesPerFrame, std::uint32_t capacityFrames);
    void Clear() noexcept;

    // Writes the frames of sample times frameNumber and up. False, and nothing changes, when there are more than fit.
    bool Store(const void *data, std::uint32_t nFrames, std::int64_t frameNumber) noexcept [[clang::nonblocking]];

    // Reads the frames of sample times frameNumber and up if all are held, and answers how many are held beyond them.
    // Else data stays untouched: the answer is negative, by how many frames they are too old, or positive, by how many
    // they are not written yet. The sign alone does not tell a read from one that came too early; callers treat it as a
    // diagnostic.
    double Fetch(void *data, std::uint32_t nFrames, std::int64_t frameNumber) const noexcept [[clang::nonblocking]];

    // The same without copying: where the frames lie, in one piece or two. Empty when not all are held.
    struct Held {
        std::span<const std::byte> pieces[2];
        double answer = 0; // what Fetch answers
    };
    Held Peek(std::uint32_t nFrames, std::int64_t frameNumber) const noexcept [[clang::nonblocking]];

    std::int64_t startFrame() const { return mStartFrame.load(std::memory_order_acquire); }
    std::int64_t endFrame() const { return mEndFrame.load(std::memory_order_acquire); }
    std::int64_t startOffset() const { return mStartOffset.load(std::memory_order_acquire); }
    std::uint32_t capacityFrames() const { return mCapacityFrames; }

private:
    // Byte position of a sample time, in 32-bit arithmetic.
    std::uint32_t position(std::int64_t frame, std::int64_t startFrame, std::int64_t startOffset) const noexcept;
    void moveStart(std::int64_t startFrame, std::int64_t startOffset) noexcept;
    void copyIn(const void *data, std::uint32_t bytes, std::uint32_t from, std::uint32_t to) noexcept;

    std::uint32_t mBytesPerFrame = 0;
    std::uint32_t mCapacityFrames = 0;
    std::uint32_t mCapacityBytes = 0;
    std::unique_ptr<std::byte[]> mBuffer;
    std::atomic<std::uint32_t> mSequence{0};   // odd while the start moves
    std::atomic<std::int64_t> mStartOffset{0}; // byte position of mStartFrame
    std::atomic<std::int64_t> mStartFrame{0};  // oldest frame held; 0 deliberately means empty as well
    std::atomic<std::int64_t> mEndFrame{0};    // one past the newest frame held
};

} // namespace cantorel
