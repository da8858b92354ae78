#include "audio_device/AudioRingBuffer.h"

#include <algorithm>
#include <cstring>

namespace cantorel {

namespace {
constexpr int kMostAttempts = 16;
}

AudioRingBuffer::AudioRingBuffer(std::uint32_t bytesPerFrame, std::uint32_t capacityFrames) {
    Allocate(bytesPerFrame, capacityFrames);
}

void AudioRingBuffer::Allocate(std::uint32_t bytesPerFrame, std::uint32_t capacityFrames) {
    mBytesPerFrame = bytesPerFrame;
    mCapacityFrames = capacityFrames;
    mCapacityBytes = bytesPerFrame * capacityFrames;
    mBuffer = std::make_unique<std::byte[]>(mCapacityBytes);
    mStartOffset.store(0);
    mStartFrame.store(0);
    mEndFrame.store(0);
}

void AudioRingBuffer::Clear() noexcept {
    std::memset(mBuffer.get(), 0, mCapacityBytes);
    moveStart(0, 0);
    mEndFrame.store(0, std::memory_order_release);
}

std::uint32_t AudioRingBuffer::position(std::int64_t frame, std::int64_t startFrame,
                                        std::int64_t startOffset) const noexcept {
    std::uint32_t bytes =
        static_cast<std::uint32_t>(frame - startFrame) * mBytesPerFrame + static_cast<std::uint32_t>(startOffset);
    // Within the held range one subtraction is the whole modulo.
    if (bytes >= mCapacityBytes)
        bytes -= mCapacityBytes;
    return bytes < mCapacityBytes ? bytes : bytes % mCapacityBytes;
}

void AudioRingBuffer::moveStart(std::int64_t startFrame, std::int64_t startOffset) noexcept {
    const std::uint32_t sequence = mSequence.load(std::memory_order_relaxed);
    mSequence.store(sequence + 1, std::memory_order_relaxed);
    mStartOffset.store(startOffset, std::memory_order_release);
    mStartFrame.store(startFrame, std::memory_order_release);
    mSequence.store(sequence + 2, std::memory_order_release);
}

void AudioRingBuffer::copyIn(const void *data, std::uint32_t bytes, std::uint32_t from, std::uint32_t to) noexcept {
    // Positions before the held range follow the 32-bit formula and may lie further apart than there is data.
    const std::uint32_t first = std::min(bytes, to <= from ? mCapacityBytes - from : to - from);
    std::memcpy(mBuffer.get() + from, data, first);
    if (to <= from)
        std::memcpy(mBuffer.get(), static_cast<const std::byte *>(data) + first, bytes - first);
}

bool AudioRingBuffer::Store(const void *data, std::uint32_t nFrames, std::int64_t frameNumber) noexcept
    [[clang::nonblocking]] {
    if (nFrames > mCapacityFrames)
        return false;
    const std::uint32_t bytes = nFrames * mBytesPerFrame;
    std::int64_t startFrame = mStartFrame.load(std::memory_order_relaxed);
    std::int64_t startOffset = mStartOffset.load(std::memory_order_relaxed);
    const std::int64_t endFrame = mEndFrame.load(std::memory_order_relaxed);
    const std::int64_t end = frameNumber + nFrames;

    const bool farAhead = frameNumber >= endFrame + mCapacityFrames;
    if (farAhead)
        Clear();
    // An end at 0 can't be told from an empty buffer and restarts it as well; deliberate.
    if (farAhead || startFrame == 0) {
        moveStart(frameNumber, 0);
        if (bytes > 0)
            std::memcpy(mBuffer.get(), data, bytes);
        mEndFrame.store(end, std::memory_order_release);
        return true;
    }

    const bool extends = end > endFrame;
    if (extends) {
        if (endFrame < frameNumber) {
            const std::uint32_t from = position(endFrame, startFrame, startOffset);
            const std::uint32_t to = position(frameNumber, startFrame, startOffset);
            std::memset(mBuffer.get() + from, 0, (to < from ? mCapacityBytes : to) - from);
            if (to < from)
                std::memset(mBuffer.get(), 0, to);
        }
        const std::int64_t newStart = end - mCapacityFrames;
        if (newStart > startFrame) {
            startOffset = position(newStart, startFrame, startOffset);
            startFrame = newStart;
            moveStart(startFrame, startOffset);
        }
    }
    if (bytes > 0)
        copyIn(data, bytes, position(frameNumber, startFrame, startOffset), position(end, startFrame, startOffset));
    if (extends)
        mEndFrame.store(end, std::memory_order_release);
    return true;
}

AudioRingBuffer::Held AudioRingBuffer::Peek(std::uint32_t nFrames, std::int64_t frameNumber) const noexcept
    [[clang::nonblocking]] {
    Held held;
    const std::int64_t endFrame = mEndFrame.load(std::memory_order_acquire);
    std::uint32_t sequence = 0;
    std::int64_t startFrame = 0;
    std::int64_t startOffset = 0;
    int attempts = 0;
    do {
        // A writer that was held up in the middle of its move is not waited for: one read goes without.
        if (++attempts > kMostAttempts)
            return {{}, static_cast<double>(nFrames)};
        sequence = mSequence.load(std::memory_order_acquire);
        startFrame = mStartFrame.load(std::memory_order_acquire);
        startOffset = mStartOffset.load(std::memory_order_acquire);
    } while (sequence % 2 != 0 || mSequence.load(std::memory_order_acquire) != sequence);
    const std::int64_t end = frameNumber + nFrames;
    if (startFrame > frameNumber) {
        held.answer = static_cast<double>(frameNumber - startFrame);
    } else if (end > endFrame) {
        held.answer = static_cast<double>(end - endFrame);
    } else {
        const std::uint32_t bytes = std::min(nFrames * mBytesPerFrame, mCapacityBytes);
        const std::uint32_t from = position(frameNumber, startFrame, startOffset);
        const std::uint32_t first = std::min(bytes, mCapacityBytes - from);
        held.pieces[0] = {mBuffer.get() + from, first};
        held.pieces[1] = {mBuffer.get(), bytes - first};
        held.answer = static_cast<double>(endFrame - end);
    }
    return held;
}

double AudioRingBuffer::Fetch(void *data, std::uint32_t nFrames, std::int64_t frameNumber) const noexcept
    [[clang::nonblocking]] {
    const Held held = Peek(nFrames, frameNumber);
    auto *target = static_cast<std::byte *>(data);
    for (const std::span<const std::byte> piece : held.pieces) {
        if (piece.empty())
            continue;
        std::memcpy(target, piece.data(), piece.size());
        target += piece.size();
    }
    return held.answer;
}

} // namespace cantorel
