#include "platform/media/ffmpeg/video/LibavReader.h"

#include "platform/media/movie/MovieFailures.h"

#include <cstring>
#include <tuple>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

AVPixelFormat formatOf(PixelLayout layout) {
    switch (layout) {
    case PixelLayout::Bgrx:
        return AV_PIX_FMT_BGR0;
    case PixelLayout::Rgbx:
        return AV_PIX_FMT_RGB0;
    case PixelLayout::Yuyv:
        return AV_PIX_FMT_YUYV422;
    case PixelLayout::Nv12:
        return AV_PIX_FMT_NV12;
    case PixelLayout::I420:
        return AV_PIX_FMT_YUV420P;
    case PixelLayout::Jpeg:
        break;
    }
    return AV_PIX_FMT_NONE;
}

// The older names say the range with the layout; the scaler wants it apart.
std::pair<AVPixelFormat, bool> withoutRange(AVPixelFormat format) {
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
        return {AV_PIX_FMT_YUV420P, true};
    case AV_PIX_FMT_YUVJ422P:
        return {AV_PIX_FMT_YUV422P, true};
    case AV_PIX_FMT_YUVJ444P:
        return {AV_PIX_FMT_YUV444P, true};
    default:
        return {format, false};
    }
}

} // namespace

Result<LibavSource> LibavReader::decoded(const Picture &picture) {
    if (!mJpeg) {
        const AVCodec *codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
        mJpeg.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
        mJpegFrame.reset(av_frame_alloc());
        mJpegPacket.reset(av_packet_alloc());
        if (!mJpeg || avcodec_open2(mJpeg.get(), codec, nullptr) < 0) {
            mJpeg.reset();
            return failures::pictureCodecs(QStringLiteral("no decoder for JPEG"));
        }
    }
    int code = av_new_packet(mJpegPacket.get(), static_cast<int>(picture.bytes));
    if (code >= 0) {
        std::memcpy(mJpegPacket->data, picture.planes[0], picture.bytes);
        code = avcodec_send_packet(mJpeg.get(), mJpegPacket.get());
        av_packet_unref(mJpegPacket.get());
    }
    if (code >= 0)
        code = avcodec_receive_frame(mJpeg.get(), mJpegFrame.get());
    if (code < 0)
        return failures::pictureUnreadable(ffmpegError(code));
    LibavSource source;
    std::tie(source.format, source.isFullRange) = withoutRange(static_cast<AVPixelFormat>(mJpegFrame->format));
    source.isFullRange |= mJpegFrame->color_range == AVCOL_RANGE_JPEG;
    source.size = {mJpegFrame->width, mJpegFrame->height};
    for (int i = 0; i < 4; ++i) {
        source.planes[i] = mJpegFrame->data[i];
        source.strides[i] = mJpegFrame->linesize[i];
    }
    return source;
}

Result<LibavSource> LibavReader::read(const Picture &picture) {
    if (picture.layout == PixelLayout::Jpeg)
        return decoded(picture);
    LibavSource source;
    source.format = formatOf(picture.layout);
    source.size = picture.size;
    for (std::size_t i = 0; i < picture.planes.size(); ++i) {
        source.planes[i] = picture.planes[i];
        source.strides[i] = picture.strides[i];
    }
    return source;
}

} // namespace cantorel::media
