#include "platform/media/movie/v4l2/V4l2Format.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

namespace cantorel::media {

namespace {

constexpr double kEnough = 24;       // pictures a second; a faster pace is not worth smaller pictures
constexpr std::uint32_t kMost = 256; // entries of a list, whatever the device says

struct KnownCode {
    std::uint32_t code;
    PixelLayout layout;
};
constexpr std::array kCodes = {
    KnownCode{V4L2_PIX_FMT_YUYV, PixelLayout::Yuyv},   KnownCode{V4L2_PIX_FMT_NV12, PixelLayout::Nv12},
    KnownCode{V4L2_PIX_FMT_YUV420, PixelLayout::I420}, KnownCode{V4L2_PIX_FMT_XBGR32, PixelLayout::Bgrx},
    KnownCode{V4L2_PIX_FMT_BGR32, PixelLayout::Bgrx},  KnownCode{V4L2_PIX_FMT_MJPEG, PixelLayout::Jpeg},
    KnownCode{V4L2_PIX_FMT_JPEG, PixelLayout::Jpeg},
};

bool fits(PictureSize size, PictureSize most) { return size.width <= most.width && size.height <= most.height; }

// Calls with one entry after the other until the device says that there is none, or `take` wants no more.
template <class Entry, class Take>
void forEach(VideoDevices &devices, int device, unsigned long request, Entry entry, Take take) {
    for (entry.index = 0; entry.index < kMost && devices.control(device, request, &entry) == 0; ++entry.index)
        if (!take(entry))
            return;
}

PictureSize sized(std::uint32_t width, std::uint32_t height) {
    return {static_cast<int>(width), static_cast<int>(height)};
}

std::vector<PictureSize> sizesOf(VideoDevices &devices, int device, std::uint32_t code, PictureSize most) {
    std::vector<PictureSize> sizes;
    v4l2_frmsizeenum entry{};
    entry.pixel_format = code;
    forEach(devices, device, VIDIOC_ENUM_FRAMESIZES, entry, [&](const v4l2_frmsizeenum &found) {
        if (found.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            sizes.push_back(sized(found.discrete.width, found.discrete.height));
            return true;
        }
        // A range: the largest step in it that is wanted.
        const auto within = [](std::uint32_t least, std::uint32_t greatest, std::uint32_t step, int wanted) {
            const auto end = std::clamp(static_cast<std::uint32_t>(wanted), least, std::max(least, greatest));
            return least + (end - least) / std::max(step, 1U) * std::max(step, 1U);
        };
        const v4l2_frmsize_stepwise &range = found.stepwise;
        sizes.push_back(sized(within(range.min_width, range.max_width, range.step_width, most.width),
                              within(range.min_height, range.max_height, range.step_height, most.height)));
        return false;
    });
    return sizes;
}

double paceOf(VideoDevices &devices, int device, std::uint32_t code, PictureSize size) {
    double fastest = 0;
    v4l2_frmivalenum entry{};
    entry.pixel_format = code;
    entry.width = static_cast<std::uint32_t>(size.width);
    entry.height = static_cast<std::uint32_t>(size.height);
    forEach(devices, device, VIDIOC_ENUM_FRAMEINTERVALS, entry, [&](const v4l2_frmivalenum &found) {
        const bool isDiscrete = found.type == V4L2_FRMIVAL_TYPE_DISCRETE;
        const v4l2_fract interval = isDiscrete ? found.discrete : found.stepwise.min;
        if (interval.numerator > 0)
            fastest = std::max(fastest, double(interval.denominator) / interval.numerator);
        return isDiscrete;
    });
    return fastest;
}

} // namespace

std::optional<PixelLayout> layoutOf(std::uint32_t code) {
    const auto *known = std::find_if(kCodes.begin(), kCodes.end(), [&](const auto &one) { return one.code == code; });
    return known != kCodes.end() ? std::optional(known->layout) : std::nullopt;
}

std::optional<V4l2Format> chooseFormat(VideoDevices &devices, int device, CameraQuality quality,
                                       int picturesPerSecond) {
    const PictureSize most = largestSize(quality);
    const double enough = std::min<double>(picturesPerSecond, kEnough);
    std::optional<V4l2Format> best;
    const auto worth = [&](const V4l2Format &format) {
        const int area = format.size.width * format.size.height;
        const bool isSmallEnough = fits(format.size, most);
        return std::tuple(isSmallEnough, std::min(format.picturesPerSecond, enough), isSmallEnough ? area : -area,
                          format.layout != PixelLayout::Jpeg);
    };
    v4l2_fmtdesc entry{};
    entry.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    forEach(devices, device, VIDIOC_ENUM_FMT, entry, [&](const v4l2_fmtdesc &found) {
        const auto layout = layoutOf(found.pixelformat);
        if (!layout)
            return true;
        auto sizes = sizesOf(devices, device, found.pixelformat, most);
        if (sizes.empty()) // An old driver does not say them, and makes of any what it can.
            sizes.push_back(most);
        for (const PictureSize size : sizes) {
            const V4l2Format format{found.pixelformat, *layout, size, paceOf(devices, device, found.pixelformat, size)};
            if (!best || worth(format) > worth(*best))
                best = format;
        }
        return true;
    });
    return best;
}

} // namespace cantorel::media
