#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace cantorel::media {

// Builds the boxes of an MPEG-4 file in memory: big-endian numbers and nested boxes whose sizes are filled in when they
// are closed.
class BoxBuffer {
public:
    void u8(std::uint32_t value) { mBytes.push_back(static_cast<std::uint8_t>(value)); }
    void u16(std::uint32_t value) { big(value, 2); }
    void u32(std::uint64_t value) { big(value, 4); }
    void u64(std::uint64_t value) { big(value, 8); }
    void text(std::string_view value) { mBytes.insert(mBytes.end(), value.begin(), value.end()); }
    void bytes(std::span<const std::uint8_t> value) { mBytes.insert(mBytes.end(), value.begin(), value.end()); }
    void zeros(std::size_t count) { mBytes.insert(mBytes.end(), count, 0); }

    // Answers a mark for close().
    std::size_t open(std::string_view type) {
        const std::size_t mark = mBytes.size();
        u32(0);
        text(type);
        return mark;
    }
    std::size_t openFull(std::string_view type, unsigned version, unsigned flags) {
        const std::size_t mark = open(type);
        u32(version << 24 | flags);
        return mark;
    }
    // `following`: bytes that belong to the box and are written behind this buffer.
    void close(std::size_t mark, std::uint64_t following = 0) { patch32(mark, mBytes.size() - mark + following); }
    void patch32(std::size_t position, std::uint64_t value) {
        for (int i = 0; i < 4; ++i)
            mBytes[position + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }

    std::size_t size() const { return mBytes.size(); }
    const std::vector<std::uint8_t> &data() const { return mBytes; }
    void clear() { mBytes.clear(); }

private:
    void big(std::uint64_t value, int count) {
        for (int i = count - 1; i >= 0; --i)
            mBytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }

    std::vector<std::uint8_t> mBytes;
};

} // namespace cantorel::media
