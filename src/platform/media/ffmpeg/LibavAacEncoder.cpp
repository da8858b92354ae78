#include "platform/media/ffmpeg/LibavAacEncoder.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr int kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};
constexpr int kHighestInputRate = 768000;

int nearestRate(int rate) {
    return *std::min_element(std::begin(kRates), std::end(kRates),
                             [&](int a, int b) { return std::abs(a - rate) < std::abs(b - rate); });
}

// Four are front left and right, centre and back centre; AAC has no other layout of four.
AVChannelLayout layoutOf(int channels) {
    const AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO, stereo = AV_CHANNEL_LAYOUT_STEREO,
                          four = AV_CHANNEL_LAYOUT_4POINT0;
    return channels == 1 ? mono : channels == 2 ? stereo : four;
}

Failure refused(const QString &detail) {
    return {QStringLiteral("The sound cannot be coded; choose another sample rate for the device."), detail};
}

} // namespace

LibavAacEncoder::LibavAacEncoder(CodecContextHandle context, std::optional<Resampler> resampler, AacFormat format)
    : mContext(std::move(context)),
      mResampler(std::move(resampler)),
      mFormat(std::move(format)),
      mFrame(av_frame_alloc()),
      mPacket(av_packet_alloc()) {}

Result<std::unique_ptr<AacEncoder>> LibavAacEncoder::make(int inputRate, const AacSettings &settings) {
    if (inputRate < 1 || inputRate > kHighestInputRate)
        return refused(QStringLiteral("input rate %1").arg(inputRate));
    if (settings.channels != 1 && settings.channels != 2 && settings.channels != kMostChannels)
        return refused(QStringLiteral("%1 channels").arg(settings.channels));
    const int rate = nearestRate(settings.rate > 0 ? settings.rate : inputRate);
    std::optional<Resampler> resampler;
    if (rate != inputRate) {
        auto made = Resampler::make(inputRate, rate, settings.channels);
        if (!made)
            return made.failure();
        resampler = std::move(made).value();
    }

    const AVCodec *codec = avcodec_find_encoder_by_name("aac");
    CodecContextHandle context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context)
        return refused(QStringLiteral("no aac coder"));
    context->sample_fmt = AV_SAMPLE_FMT_FLTP;
    context->sample_rate = rate;
    context->ch_layout = layoutOf(settings.channels);
    context->bit_rate = settings.bitRate > 0 ? settings.bitRate : defaultAacBitRate(rate);
    context->profile = FF_PROFILE_AAC_LOW;
    context->time_base = {1, rate};
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    void *options = context->priv_data;
    int code = av_opt_set_int(options, "aac_pns", settings.noiseSubstitution, 0);
    code = std::min(code, av_opt_set_int(options, "aac_is", settings.intensityStereo, 0));
    code = std::min(code, av_opt_set_int(options, "aac_tns", settings.temporalNoiseShaping, 0));
    if (!settings.midSide)
        code = std::min(code, av_opt_set_int(options, "aac_ms", 0, 0));
    if (settings.fastCoder)
        code = std::min(code, av_opt_set(options, "aac_coder", "fast", 0));
    if (code >= 0)
        code = avcodec_open2(context.get(), codec, nullptr);
    if (code < 0)
        return refused(ffmpegError(code));
    if (context->frame_size != kFramesPerPacket)
        return refused(QStringLiteral("frame size %1").arg(context->frame_size));

    AacFormat format;
    format.sampleRate = rate;
    format.channels = settings.channels;
    format.bitRate = static_cast<int>(context->bit_rate);
    format.primingFrames = context->initial_padding;
    format.config.assign(context->extradata, context->extradata + context->extradata_size);
    return std::unique_ptr<AacEncoder>(
        new LibavAacEncoder(std::move(context), std::move(resampler), std::move(format)));
}

Result<void> LibavAacEncoder::encode(std::span<const float> interleaved, PacketRun &packets) {
    if (!mResampler)
        return take(interleaved, packets);
    const auto converted = mResampler->convert(interleaved);
    return converted ? take(converted.value(), packets) : Result<void>(converted.failure());
}

Result<void> LibavAacEncoder::take(std::span<const float> interleaved, PacketRun &packets) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    while (interleaved.size() >= channels) {
        if (mFilled == 0) {
            // A fresh buffer each time: the coder keeps the ones before.
            av_frame_unref(mFrame.get());
            mFrame->format = AV_SAMPLE_FMT_FLTP;
            mFrame->nb_samples = kFramesPerPacket;
            mFrame->ch_layout = layoutOf(mFormat.channels);
            mFrame->sample_rate = mFormat.sampleRate;
            if (const int code = av_frame_get_buffer(mFrame.get(), 0); code < 0)
                return refused(ffmpegError(code));
        }
        const int count = std::min(kFramesPerPacket - mFilled, static_cast<int>(interleaved.size() / channels));
        for (std::size_t channel = 0; channel < channels; ++channel) {
            auto *plane = reinterpret_cast<float *>(mFrame->data[channel]) + mFilled;
            for (int i = 0; i < count; ++i)
                plane[i] = interleaved[channels * static_cast<std::size_t>(i) + channel];
        }
        interleaved = interleaved.subspan(static_cast<std::size_t>(count) * channels);
        mFilled += count;
        mFrames += count;
        if (mFilled == kFramesPerPacket)
            if (const auto sent = sendFrame(packets); !sent)
                return sent;
    }
    return {};
}

Result<void> LibavAacEncoder::sendFrame(PacketRun &packets) {
    mFrame->nb_samples = mFilled;
    mFrame->pts = mFrames - mFilled;
    mFilled = 0;
    const int code = avcodec_send_frame(mContext.get(), mFrame.get());
    return code < 0 ? refused(ffmpegError(code)) : receive(packets);
}

Result<void> LibavAacEncoder::receive(PacketRun &packets) {
    for (;;) {
        const int code = avcodec_receive_packet(mContext.get(), mPacket.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return {};
        if (code < 0)
            return refused(ffmpegError(code));
        packets.bytes.insert(packets.bytes.end(), mPacket->data, mPacket->data + mPacket->size);
        packets.sizes.push_back(static_cast<std::uint32_t>(mPacket->size));
        av_packet_unref(mPacket.get());
    }
}

Result<void> LibavAacEncoder::flush(PacketRun &packets) {
    if (mResampler) {
        const auto rest = mResampler->convert({});
        if (!rest)
            return rest.failure();
        if (const auto taken = take(rest.value(), packets); !taken)
            return taken;
    }
    if (mFilled > 0)
        if (const auto sent = sendFrame(packets); !sent)
            return sent;
    const int code = avcodec_send_frame(mContext.get(), nullptr);
    return code < 0 && code != AVERROR_EOF ? refused(ffmpegError(code)) : receive(packets);
}

} // namespace cantorel::media
