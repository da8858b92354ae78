#pragma once

#include <cstdint>
#include <deque>
#include <span>

namespace cantorel::media {

// Where the packets of a recording lie: two bytes a packet and twelve a fragment, so ten hours take under 4 MB.
class SampleTable {
public:
    struct Chunk {
        std::uint64_t offset; // bytes from the start of the file
        std::uint32_t packets;
    };

    // An AAC packet of two channels has at most 1536 bytes.
    static constexpr std::uint32_t kLargestPacket = 0xFFFF;

    void addChunk(std::uint64_t offset, std::span<const std::uint32_t> packetSizes) {
        mOffsets.push_back(offset);
        mCounts.push_back(static_cast<std::uint32_t>(packetSizes.size()));
        for (const std::uint32_t size : packetSizes)
            mSizes.push_back(static_cast<std::uint16_t>(size));
    }

    std::size_t packets() const { return mSizes.size(); }
    std::size_t chunks() const { return mOffsets.size(); }
    std::uint32_t packetSize(std::size_t packet) const { return mSizes[packet]; }
    Chunk chunk(std::size_t index) const { return {mOffsets[index], mCounts[index]}; }

private:
    std::deque<std::uint16_t> mSizes;
    std::deque<std::uint64_t> mOffsets;
    std::deque<std::uint32_t> mCounts;
};

} // namespace cantorel::media
