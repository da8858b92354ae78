#include "platform/media/ffmpeg/reader/FlacFrames.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <vector>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr std::size_t kLongestHeader = 16;
constexpr std::size_t kWindowBytes = 1024 * 1024;
constexpr std::int64_t kMostAround = 1024; // bytes of a frame beside its samples
constexpr std::uint8_t kSync = 0xFF;

constexpr std::array<std::uint8_t, 256> makeCheckTable() {
    std::array<std::uint8_t, 256> table = {};
    for (unsigned value = 0; value < table.size(); ++value) {
        unsigned rest = value;
        for (int bit = 0; bit < 8; ++bit)
            rest = rest & 0x80 ? rest << 1 ^ 0x07 : rest << 1;
        table[value] = static_cast<std::uint8_t>(rest);
    }
    return table;
}

struct Header {
    std::uint64_t number = 0; // of the frame, or of its first sample
    std::int32_t frames = 0;
    bool isNumberedBySample = false;
    std::array<std::uint8_t, 3> kind = {}; // what is the same for all of a stream

    std::int32_t frameBytes = 0; // of samples that are not compressed

    // No frame is longer.
    std::int64_t mostBytes() const { return std::int64_t(frames) * frameBytes + kMostAround; }
    std::uint64_t next() const { return number + (isNumberedBySample ? static_cast<std::uint64_t>(frames) : 1); }
};

// Of sixteen bytes.
std::optional<Header> readHeader(const std::uint8_t *bytes) {
    if (bytes[0] != kSync || (bytes[1] & 0xFE) != 0xF8 || (bytes[3] & 1) != 0)
        return {};
    Header header;
    header.isNumberedBySample = bytes[1] & 1;
    header.kind = {bytes[1], static_cast<std::uint8_t>(bytes[2] & 0x0F), static_cast<std::uint8_t>(bytes[3] & 0x0E)};
    static constexpr std::int32_t kBytes[] = {4, 1, 2, 4, 2, 3, 3, 4}; // of a sample
    const int channels = bytes[3] >> 4;
    header.frameBytes = (channels < 8 ? channels + 1 : 2) * kBytes[bytes[3] >> 1 & 7];
    std::size_t at = 4;
    int more = 0;
    while (more < 7 && bytes[at] & 0x80 >> more)
        ++more;
    if (more == 1)
        return {};
    header.number = more == 0 ? bytes[at] : bytes[at] & (0x7F >> more);
    ++at;
    for (int i = 1; i < more; ++i, ++at) {
        if ((bytes[at] & 0xC0) != 0x80)
            return {};
        header.number = header.number << 6 | (bytes[at] & 0x3F);
    }
    const int size = bytes[2] >> 4;
    if (size == 0)
        return {};
    if (size == 1)
        header.frames = 192;
    else if (size <= 5)
        header.frames = 576 << (size - 2);
    else if (size == 6)
        header.frames = bytes[at++] + 1;
    else if (size == 7) {
        header.frames = (bytes[at] << 8 | bytes[at + 1]) + 1;
        at += 2;
    } else
        header.frames = 256 << (size - 8);
    const int rate = bytes[2] & 0x0F;
    at += rate == 12 ? 1 : rate == 13 || rate == 14 ? 2 : 0;
    if (at >= kLongestHeader)
        return {};
    static constexpr std::array<std::uint8_t, 256> kCheck = makeCheckTable();
    std::uint8_t check = 0;
    for (std::size_t i = 0; i < at; ++i)
        check = kCheck[check ^ bytes[i]];
    return check == bytes[at] ? std::optional(header) : std::nullopt;
}

} // namespace

Result<bool> findFlacFrames(const SourceFile &file, std::int64_t begin, PacketTable &packets) {
    std::vector<std::uint8_t> window(kWindowBytes + kLongestHeader);
    std::optional<Header> last;
    std::int64_t lastPosition = begin;
    for (std::int64_t position = begin; position < file.size();) {
        const auto got = file.read(position, {window.data(), kWindowBytes});
        if (!got)
            return got.failure();
        const std::uint8_t *const from = window.data();
        const std::uint8_t *end = from + got.value(); // of where a header may begin
        if (position + static_cast<std::int64_t>(got.value()) >= file.size())
            std::memset(window.data() + got.value(), 0, kLongestHeader);
        else
            end -= kLongestHeader;
        for (const std::uint8_t *at = from; at < end; ++at) {
            at = static_cast<const std::uint8_t *>(std::memchr(at, kSync, static_cast<std::size_t>(end - at)));
            if (!at)
                break;
            const auto header = readHeader(at);
            const std::int64_t place = position + (at - from);
            if (!last) {
                if (!header || place != begin || header->number != 0)
                    return false;
            } else if (!header || header->number != last->next() || header->kind != last->kind) {
                continue;
            } else {
                if (place - lastPosition > last->mostBytes())
                    return false;
                packets.add(lastPosition, static_cast<std::int32_t>(place - lastPosition), last->frames);
            }
            last = header;
            lastPosition = place;
        }
        if (!last)
            return false;
        position += end - from;
    }
    if (!last || file.size() - lastPosition > last->mostBytes())
        return false;
    packets.add(lastPosition, static_cast<std::int32_t>(file.size() - lastPosition), last->frames);
    return true;
}

} // namespace cantorel::media
