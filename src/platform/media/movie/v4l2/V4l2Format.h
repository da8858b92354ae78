#pragma once

#include "platform/media/movie/PictureSources.h"
#include "platform/media/movie/v4l2/VideoDevices.h"

#include <cstdint>
#include <optional>

namespace cantorel::media {

// What a camera can be asked for.
struct V4l2Format {
    std::uint32_t code = 0; // of Video4Linux
    PixelLayout layout = PixelLayout::Yuyv;
    PictureSize size;
    double picturesPerSecond = 0; // at most; 0: not said
};

// The layout of a format that can be taken.
std::optional<PixelLayout> layoutOf(std::uint32_t code);

// The largest pictures at the pace that is wanted, or at as much of it as there is; those that are not packed first.
// Nothing where the device offers none that can be taken.
std::optional<V4l2Format> chooseFormat(VideoDevices &devices, int device, CameraQuality quality, int picturesPerSecond);

} // namespace cantorel::media
