#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace cantorel::media {

// Reads big-endian numbers and finds boxes; whatever lies outside reads as 0 or is not found.
class BoxReader {
public:
    explicit BoxReader(std::span<const std::uint8_t> bytes) : mBytes(bytes) {}

    std::uint64_t number(std::size_t position, std::size_t count) const {
        if (position > mBytes.size() || mBytes.size() - position < count)
            return 0;
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value = value << 8 | mBytes[position + i];
        return value;
    }
    std::string_view text(std::size_t position, std::size_t count) const {
        if (position > mBytes.size() || mBytes.size() - position < count)
            return {};
        return {reinterpret_cast<const char *>(mBytes.data()) + position, count};
    }
    // The contents of the first box of the type among the boxes from `position` on.
    std::optional<std::span<const std::uint8_t>> find(std::string_view type, std::size_t position = 0) const {
        while (mBytes.size() >= position + 8) {
            const std::uint64_t size = number(position, 4);
            if (size < 8 || size > mBytes.size() - position)
                return {};
            if (text(position + 4, 4) == type)
                return mBytes.subspan(position + 8, size - 8);
            position += size;
        }
        return {};
    }

private:
    std::span<const std::uint8_t> mBytes;
};

inline std::optional<std::span<const std::uint8_t>> descend(std::span<const std::uint8_t> bytes,
                                                            std::initializer_list<std::string_view> path) {
    std::optional<std::span<const std::uint8_t>> found = bytes;
    for (const std::string_view type : path) {
        found = BoxReader(*found).find(type);
        if (!found)
            return {};
    }
    return found;
}

} // namespace cantorel::media
