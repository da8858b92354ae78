#include "platform/media/ffmpeg/video/LibavConverter.h"

#include "platform/media/movie/MovieFailures.h"

namespace cantorel::media {

using foundation::Result;

Result<void> LibavConverter::convert(const Picture &picture, PictureSize size, std::uint8_t *bgrx) {
    if (!mFitter || mSize != size) {
        VideoSettings settings;
        settings.size = size;
        settings.isFromCamera = true;
        mFitter.emplace(settings);
        mColours.reset(sws_getContext(size.width, size.height, AV_PIX_FMT_YUV420P, size.width, size.height,
                                      AV_PIX_FMT_BGR0, SWS_POINT, nullptr, nullptr, nullptr));
        mSize = size;
    }
    if (!mColours)
        return failures::pictureUnreadable(QStringLiteral("no scaler"));
    const auto fitted = mFitter->fit(picture);
    if (!fitted)
        return fitted.failure();
    const AVFrame &frame = *static_cast<const LibavPicture &>(*fitted.value()).frame; // nobody else makes any
    std::uint8_t *const planes[4] = {bgrx, nullptr, nullptr, nullptr};
    const int strides[4] = {size.width * 4, 0, 0, 0};
    if (sws_scale(mColours.get(), frame.data, frame.linesize, 0, size.height, planes, strides) < 0)
        return failures::pictureUnreadable(QStringLiteral("not scaled"));
    return {};
}

} // namespace cantorel::media
