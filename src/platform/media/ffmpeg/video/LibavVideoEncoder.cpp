#include "platform/media/ffmpeg/video/LibavVideoEncoder.h"

#include "platform/media/asset/MediaTime.h"
#include "platform/media/ffmpeg/video/LibavFitter.h"
#include "platform/media/movie/MovieFailures.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr const char *kDefaultCoder = "libx264";
constexpr const char *kGraphicsCardCoder = "h264_vaapi";

// So many seconds at most lie between a place in the movie and the picture from which it is decoded.
constexpr std::int64_t kSecondsBetweenKeys = 10;

// The pieces behind start codes.
std::vector<std::span<const std::uint8_t>> unitsOf(std::span<const std::uint8_t> bytes) {
    std::vector<std::size_t> starts, ends;
    for (std::size_t i = 0; i + 3 <= bytes.size();) {
        if (bytes[i] != 0 || bytes[i + 1] != 0 || bytes[i + 2] != 1) {
            ++i;
            continue;
        }
        ends.push_back(i > 0 && bytes[i - 1] == 0 ? i - 1 : i);
        starts.push_back(i += 3);
    }
    ends.push_back(bytes.size());
    std::vector<std::span<const std::uint8_t>> units;
    for (std::size_t i = 0; i < starts.size(); ++i)
        units.push_back(bytes.subspan(starts[i], ends[i + 1] - starts[i]));
    return units;
}

constexpr int kParameterSequence = 7, kParameterPicture = 8, kDelimiter = 9;

int kindOf(std::span<const std::uint8_t> unit) { return unit.empty() ? 0 : unit[0] & 0x1F; }

void big(std::vector<std::uint8_t> &out, std::uint64_t value, int count) {
    for (int i = count - 1; i >= 0; --i)
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

// The AVCDecoderConfigurationRecord of what the coder says of itself; empty when it says nothing.
std::vector<std::uint8_t> configurationOf(std::span<const std::uint8_t> extradata) {
    std::span<const std::uint8_t> sequence, picture;
    for (const auto unit : unitsOf(extradata)) {
        if (kindOf(unit) == kParameterSequence)
            sequence = unit;
        else if (kindOf(unit) == kParameterPicture)
            picture = unit;
    }
    if (sequence.size() < 4 || picture.empty())
        return {};
    std::vector<std::uint8_t> out{1, sequence[1], sequence[2], sequence[3], 0xFF, 0xE1};
    big(out, sequence.size(), 2);
    out.insert(out.end(), sequence.begin(), sequence.end());
    out.push_back(1);
    big(out, picture.size(), 2);
    out.insert(out.end(), picture.begin(), picture.end());
    if (sequence[1] == 100) // the high profile says more: three planes of half the colours, 8 bits
        out.insert(out.end(), {0xFD, 0xF8, 0xF8, 0});
    return out;
}

} // namespace

LibavVideoEncoder::LibavVideoEncoder(CodecContextHandle context)
    : mContext(std::move(context)), mFrame(av_frame_alloc()), mPacket(av_packet_alloc()) {
    mFormat.width = mContext->width;
    mFormat.height = mContext->height;
    mFormat.bitRate = static_cast<int>(mContext->bit_rate);
    mFormat.config = configurationOf({mContext->extradata, static_cast<std::size_t>(mContext->extradata_size)});
}

int LibavVideoEncoder::addFrames(AVCodecContext &context) {
    AVBufferRef *made = nullptr;
    int code = av_hwdevice_ctx_create(&made, AV_HWDEVICE_TYPE_VAAPI, nullptr, nullptr, 0);
    const VideoBuffer device(made);
    if (code < 0)
        return code;
    VideoBuffer frames(av_hwframe_ctx_alloc(device.get()));
    if (!frames)
        return AVERROR(ENOMEM);
    auto &format = *reinterpret_cast<AVHWFramesContext *>(frames->data);
    format.format = AV_PIX_FMT_VAAPI;
    format.sw_format = AV_PIX_FMT_NV12;
    format.width = context.width;
    format.height = context.height;
    format.initial_pool_size = 8;
    code = av_hwframe_ctx_init(frames.get());
    context.hw_frames_ctx = code < 0 ? nullptr : frames.release(); // the context's from here on
    return code;
}

Result<CodecContextHandle> LibavVideoEncoder::open(const VideoSettings &settings, const char *name) {
    const AVCodec *codec = avcodec_find_encoder_by_name(name);
    CodecContextHandle context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context)
        return failures::pictureCodecs(QStringLiteral("no coder %1").arg(QString::fromLatin1(name)));
    const bool onCard = std::strcmp(name, kGraphicsCardCoder) == 0;
    context->width = settings.size.width;
    context->height = settings.size.height;
    context->time_base = {1, kPictureTimescale};
    context->framerate = {settings.picturesPerSecond, 1};
    context->pix_fmt = onCard ? AV_PIX_FMT_VAAPI : AV_PIX_FMT_YUV420P;
    context->bit_rate = settings.bitRate;
    // What a still screen saves is not spent at once.
    context->rc_max_rate = 2 * std::int64_t{settings.bitRate};
    context->rc_buffer_size = 2 * settings.bitRate;
    context->max_b_frames = 0;
    context->gop_size = static_cast<int>(settings.picturesPerSecond * kSecondsBetweenKeys);
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context->color_range = AVCOL_RANGE_MPEG;
    context->colorspace = settings.isFromCamera ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
    context->color_primaries = settings.isFromCamera ? AVCOL_PRI_SMPTE170M : AVCOL_PRI_BT709;
    context->color_trc = settings.isFromCamera ? AVCOL_TRC_SMPTE170M : AVCOL_TRC_BT709;
    int code = 0;
    if (onCard) {
        code = addFrames(*context);
    } else {
        void *options = context->priv_data;
        code = av_opt_set(options, "preset", "veryfast", 0);
        code = std::min(code, av_opt_set(options, "tune", "zerolatency", 0));
        code = std::min(code, av_opt_set_int(options, "forced-idr", 1, 0));
    }
    if (code >= 0)
        code = avcodec_open2(context.get(), codec, nullptr);
    if (code < 0)
        return failures::pictureCodecs(ffmpegError(code));
    return context;
}

Result<std::unique_ptr<VideoEncoder>> LibavVideoEncoder::make(const VideoSettings &settings) {
    if (!isMovieSize(settings.size))
        return failures::movieSize(settings.size);
    Result<CodecContextHandle> context = failures::pictureCodecs({});
    if (settings.coder == QLatin1String(kGraphicsCardCoder))
        context = open(settings, kGraphicsCardCoder);
    if (!context) // where the card's does not start
        context = open(settings, kDefaultCoder);
    if (!context)
        return context.failure();
    std::unique_ptr<LibavVideoEncoder> encoder(new LibavVideoEncoder(std::move(context).value()));
    if (encoder->mFormat.config.empty())
        return failures::pictureCodecs(QStringLiteral("the coder says nothing of itself"));
    return std::unique_ptr<VideoEncoder>(std::move(encoder));
}

Result<void> LibavVideoEncoder::encode(const FittedPicture &picture, std::chrono::nanoseconds time, PictureRun &run) {
    const auto &fitted = static_cast<const LibavPicture &>(picture); // nobody else makes any
    av_frame_unref(mFrame.get());
    int code = 0;
    if (mContext->hw_frames_ctx != nullptr) {
        code = av_hwframe_get_buffer(mContext->hw_frames_ctx, mFrame.get(), 0);
        if (code >= 0)
            code = av_hwframe_transfer_data(mFrame.get(), fitted.frame.get(), 0);
    } else {
        code = av_frame_ref(mFrame.get(), fitted.frame.get());
    }
    if (code < 0)
        return failures::pictureCodecs(ffmpegError(code));
    mFrame->pts = MediaTime{time.count(), 1'000'000'000}.in(kPictureTimescale).value;
    const bool isKey = mFrame->pts - mLastKey >= kSecondsBetweenKeys * kPictureTimescale;
    mFrame->pict_type = isKey ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    code = avcodec_send_frame(mContext.get(), mFrame.get());
    if (code >= 0)
        code = avcodec_receive_packet(mContext.get(), mPacket.get());
    if (code < 0)
        return failures::pictureCodecs(ffmpegError(code));

    PictureRun::Entry entry;
    entry.isKey = (mPacket->flags & AV_PKT_FLAG_KEY) != 0;
    if (entry.isKey)
        mLastKey = mFrame->pts;
    // In a movie the length of each piece stands in place of its start code.
    const std::size_t before = run.bytes.size();
    for (const auto unit : unitsOf({mPacket->data, static_cast<std::size_t>(mPacket->size)})) {
        if (unit.empty() || kindOf(unit) == kDelimiter)
            continue;
        big(run.bytes, unit.size(), 4);
        run.bytes.insert(run.bytes.end(), unit.begin(), unit.end());
    }
    entry.bytes = static_cast<std::uint32_t>(run.bytes.size() - before);
    run.entries.push_back(entry);
    av_packet_unref(mPacket.get());
    return {};
}

} // namespace cantorel::media
