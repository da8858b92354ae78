#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace cantorel::media {

// In pixels.
struct PictureSize {
    int width = 0;
    int height = 0;

    bool operator==(const PictureSize &) const = default;
};

// How the pixels of a picture lie in memory.
enum class PixelLayout {
    Bgrx, // one plane, 4 bytes a pixel
    Rgbx, // the same, red first
    Yuyv, // one plane, 2 bytes a pixel
    Nv12, // two planes
    I420, // three planes
    Jpeg, // one picture file; `bytes` says how long it is
};

// A picture in memory that belongs to who hands it over, and only while it is handed over.
struct Picture {
    PixelLayout layout = PixelLayout::Bgrx;
    PictureSize size;
    std::array<const std::uint8_t *, 3> planes{};
    std::array<int, 3> strides{}; // bytes from one line to the next
    std::size_t bytes = 0;
    std::uint64_t hostTime = 0; // ns on the monotonic clock, when it was to be seen
};

} // namespace cantorel::media
