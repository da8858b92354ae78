#pragma once

#include "platform/media/MovieFormat.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <utility>

namespace cantorel::media {

// Where the packets of a track lie.
template <class Size> class PacketTable {
public:
    struct Chunk {
        std::uint64_t offset; // bytes from the start of the file
        std::uint32_t packets;
    };

    std::size_t packets() const { return mSizes.size(); }
    std::size_t chunks() const { return mOffsets.size(); }
    std::uint32_t packetSize(std::size_t packet) const { return mSizes[packet]; }
    Chunk chunk(std::size_t index) const { return {mOffsets[index], mCounts[index]}; }

protected:
    void add(std::uint32_t packetSize) { mSizes.push_back(static_cast<Size>(packetSize)); }
    void close(std::uint64_t offset, std::size_t packets) {
        mOffsets.push_back(offset);
        mCounts.push_back(static_cast<std::uint32_t>(packets));
    }

private:
    std::deque<Size> mSizes;
    std::deque<std::uint64_t> mOffsets;
    std::deque<std::uint32_t> mCounts;
};

// Of sound: two bytes a packet and twelve a fragment, so ten hours take under 4 MB.
class SampleTable : public PacketTable<std::uint16_t> {
public:
    // An AAC packet of two channels has at most 1536 bytes.
    static constexpr std::uint32_t kLargestPacket = 0xFFFF;

    void addChunk(std::uint64_t offset, std::span<const std::uint32_t> packetSizes) {
        for (const std::uint32_t size : packetSizes)
            add(size);
        close(offset, packetSizes.size());
    }
};

// Of pictures, each with its length.
class PictureTable : public PacketTable<std::uint32_t> {
public:
    void addChunk(std::uint64_t offset, std::span<const PictureRun::Entry> entries) {
        for (const PictureRun::Entry &entry : entries) {
            if (entry.isKey)
                mKeys.push_back(static_cast<std::uint32_t>(packets()));
            add(entry.bytes);
            mLengths.push_back(entry.length);
            mDuration += entry.length;
        }
        close(offset, entries.size());
    }

    // Shows the last one for so much longer, or shorter.
    void prolongLast(std::int64_t units) {
        if (mLengths.empty())
            return;
        const std::int64_t length = std::max<std::int64_t>(mLengths.back() + units, 1);
        mDuration += static_cast<std::uint64_t>(length) - mLengths.back();
        mLengths.back() = static_cast<std::uint32_t>(length);
    }

    std::uint32_t length(std::size_t picture) const { return mLengths[picture]; }
    const std::deque<std::uint32_t> &keys() const { return mKeys; } // pictures that need no other one
    std::uint64_t duration() const { return mDuration; }            // in units of kPictureTimescale

private:
    std::deque<std::uint32_t> mLengths;
    std::deque<std::uint32_t> mKeys;
    std::uint64_t mDuration = 0;
};

// Of a whole file.
struct MovieTable {
    MovieTable() = default;
    MovieTable(SampleTable sound) : sound(std::move(sound)) {} // deliberately from any sound

    PictureTable pictures;
    SampleTable sound;
};

} // namespace cantorel::media
