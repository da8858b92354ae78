#include "platform/media/ffmpeg/video/LibavFitter.h"

#include "platform/media/movie/MovieFailures.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

// Lines begin where the coder's wide instructions like it.
constexpr int kAlignment = 32;

constexpr int aligned(int bytes) { return (bytes + kAlignment - 1) & ~(kAlignment - 1); }

} // namespace

LibavFitter::LibavFitter(const VideoSettings &settings)
    : mSize(settings.size),
      mIsFromCamera(settings.isFromCamera),
      mPool(av_buffer_pool_init(static_cast<std::size_t>(aligned(settings.size.width)) * settings.size.height
                                    + static_cast<std::size_t>(aligned(settings.size.width / 2)) * settings.size.height
                                    + kAlignment,
                                nullptr)) {}

FrameHandle LibavFitter::blank() {
    FrameHandle frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = mSize.width;
    frame->height = mSize.height;
    frame->buf[0] = av_buffer_pool_get(mPool.get());
    if (frame->buf[0] == nullptr)
        return {};
    std::uint8_t *at = frame->buf[0]->data;
    for (int plane = 0; plane < 3; ++plane) {
        frame->data[plane] = at;
        frame->linesize[plane] = aligned(plane == 0 ? mSize.width : mSize.width / 2);
        at += static_cast<std::size_t>(frame->linesize[plane]) * (plane == 0 ? mSize.height : mSize.height / 2);
    }
    return frame;
}

LibavFitter::Place LibavFitter::placeOf(PictureSize size) const {
    // As large as it goes, in the middle; where the colours lie, on even lines.
    const auto width = std::min<std::int64_t>(mSize.width, std::int64_t{size.width} * mSize.height / size.height);
    const auto height = std::min<std::int64_t>(mSize.height, std::int64_t{size.height} * mSize.width / size.width);
    Place place;
    place.size = {std::max(2, static_cast<int>(width) & ~1), std::max(2, static_cast<int>(height) & ~1)};
    place.x = (mSize.width - place.size.width) / 2 & ~1;
    place.y = (mSize.height - place.size.height) / 2 & ~1;
    return place;
}

Result<std::shared_ptr<const FittedPicture>> LibavFitter::fit(const Picture &picture) {
    auto read = mReader.read(picture);
    if (!read)
        return read.failure();
    LibavSource &source = read.value();
    if (source.size.width < 1 || source.size.height < 1)
        return failures::pictureUnreadable(QStringLiteral("an empty picture"));
    // A line or column that only makes the size odd is left out rather than the whole scaled.
    if (evenSize(source.size) == mSize)
        source.size = mSize;
    const bool fills = source.size == mSize;
    const Place place = fills ? Place{0, 0, mSize} : placeOf(source.size);
    if (!mScaler || mScaled.format != source.format || mScaled.size != source.size
        || mScaled.isFullRange != source.isFullRange) {
        mScaler.reset(sws_getContext(source.size.width, source.size.height, source.format, place.size.width,
                                     place.size.height, AV_PIX_FMT_YUV420P, fills ? SWS_POINT : SWS_BILINEAR, nullptr,
                                     nullptr, nullptr));
        if (!mScaler)
            return failures::pictureUnreadable(QStringLiteral("no scaler"));
        const int *matrix = sws_getCoefficients(mIsFromCamera ? SWS_CS_SMPTE170M : SWS_CS_ITU709);
        (void)sws_setColorspaceDetails(mScaler.get(), matrix, source.isFullRange, matrix, 0, 0, 1 << 16, 1 << 16);
        mScaled = source;
    }
    auto fitted = std::make_shared<LibavPicture>();
    fitted->frame = blank();
    if (!fitted->frame)
        return failures::pictureUnreadable(QStringLiteral("no memory"));
    AVFrame &frame = *fitted->frame;
    if (!fills) {
        std::memset(frame.data[0], 16, static_cast<std::size_t>(frame.linesize[0]) * mSize.height);
        for (int plane = 1; plane < 3; ++plane)
            std::memset(frame.data[plane], 128, static_cast<std::size_t>(frame.linesize[plane]) * mSize.height / 2);
    }
    std::uint8_t *const planes[4] = {frame.data[0] + place.y * frame.linesize[0] + place.x,
                                     frame.data[1] + place.y / 2 * frame.linesize[1] + place.x / 2,
                                     frame.data[2] + place.y / 2 * frame.linesize[2] + place.x / 2, nullptr};
    if (sws_scale(mScaler.get(), source.planes, source.strides, 0, source.size.height, planes, frame.linesize) < 0)
        return failures::pictureUnreadable(QStringLiteral("not scaled"));
    return std::shared_ptr<const FittedPicture>(std::move(fitted));
}

} // namespace cantorel::media
