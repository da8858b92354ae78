#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace cantorel::media {

// Where each packet of a track lies in its file, and which frames come out of it: all that is needed to begin anywhere.
// Packets of one length cost twelve bytes each, blocks of plain samples none.
class PacketTable {
public:
    struct Packet {
        std::int64_t position; // bytes from the start of the file
        std::int32_t size;
        std::int64_t firstFrame;
        std::int32_t frames;
    };

    // Plain samples that lie one after the other.
    void setBlocks(std::int64_t position, std::int64_t bytes, std::int32_t frameBytes) {
        mPosition = position;
        mFrameBytes = frameBytes;
        mEach = kBlockFrames;
        mTotal = bytes / frameBytes;
    }
    void add(std::int64_t position, std::int32_t size, std::int32_t frames) {
        if (mPositions.empty())
            mEach = frames;
        const auto count = static_cast<std::int64_t>(mPositions.size());
        if (mFirst.empty() && mTotal != mEach * count)
            for (std::int64_t i = 0; i < count; ++i)
                mFirst.push_back(mEach * i); // The last one was the first that differs.
        if (!mFirst.empty())
            mFirst.push_back(mTotal);
        mPositions.push_back(position);
        mSizes.push_back(size);
        mTotal += frames;
    }
    void removeLast() {
        mTotal = packet(count() - 1).firstFrame;
        mPositions.pop_back();
        mSizes.pop_back();
        if (!mFirst.empty())
            mFirst.pop_back();
    }

    bool areBlocks() const { return mFrameBytes > 0; }
    std::int64_t frames() const { return mTotal; }
    std::size_t count() const {
        return areBlocks() ? static_cast<std::size_t>((mTotal + mEach - 1) / mEach) : mPositions.size();
    }
    Packet packet(std::size_t index) const {
        const std::int64_t first = firstFrame(index);
        const std::int64_t end = index + 1 < count() ? firstFrame(index + 1) : mTotal;
        const auto frames = static_cast<std::int32_t>(end - first);
        if (areBlocks())
            return {mPosition + first * mFrameBytes, frames * mFrameBytes, first, frames};
        return {mPositions[index], mSizes[index], first, frames};
    }
    // The packet that holds a frame; the last one for those behind it. Only where there is one.
    std::size_t at(std::int64_t frame) const {
        const std::size_t last = count() - 1;
        if (mFirst.empty())
            return std::min(static_cast<std::size_t>(std::max<std::int64_t>(frame, 0) / mEach), last);
        const auto behind = std::upper_bound(mFirst.begin() + 1, mFirst.end(), frame);
        return static_cast<std::size_t>(behind - mFirst.begin()) - 1;
    }

private:
    static constexpr std::int32_t kBlockFrames = 4096;

    std::int64_t firstFrame(std::size_t index) const {
        return mFirst.empty() ? static_cast<std::int64_t>(index) * mEach : mFirst[index];
    }

    std::int64_t mPosition = 0; // of blocks
    std::int32_t mFrameBytes = 0;
    std::int64_t mEach = 1; // frames of a packet, the last one apart
    std::int64_t mTotal = 0;
    std::vector<std::int64_t> mPositions;
    std::vector<std::int32_t> mSizes;
    std::vector<std::int64_t> mFirst; // only where packets differ
};

} // namespace cantorel::media
