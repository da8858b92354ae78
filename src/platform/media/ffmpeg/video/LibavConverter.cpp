#include "platform/media/ffmpeg/video/LibavConverter.h"

#include "platform/media/movie/MovieFailures.h"

namespace cantorel::media {

using foundation::Result;

Result<void> LibavConverter::convert(const Picture &picture, PictureSize size, std::uint8_t *bgrx, int stride) {
    const auto read = mReader.read(picture);
    if (!read)
        return read.failure();
    const LibavSource &source = read.value();
    mScaler.reset(sws_getCachedContext(mScaler.release(), source.size.width, source.size.height, source.format,
                                       size.width, size.height, AV_PIX_FMT_BGR0, SWS_FAST_BILINEAR, nullptr, nullptr,
                                       nullptr));
    if (!mScaler)
        return failures::pictureUnreadable(QStringLiteral("no scaler"));
    const int *matrix = sws_getCoefficients(SWS_CS_SMPTE170M);
    (void)sws_setColorspaceDetails(mScaler.get(), matrix, source.isFullRange, matrix, 1, 0, 1 << 16, 1 << 16);
    std::uint8_t *const planes[4] = {bgrx, nullptr, nullptr, nullptr};
    const int strides[4] = {stride, 0, 0, 0};
    if (sws_scale(mScaler.get(), source.planes, source.strides, 0, source.size.height, planes, strides) < 0)
        return failures::pictureUnreadable(QStringLiteral("not scaled"));
    return {};
}

} // namespace cantorel::media
