#include "platform/media/ffmpeg/Resampler.h"

#include <cstdint>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

Failure failed(int code) {
    return {QStringLiteral("The sample rate of the device cannot be converted."), ffmpegError(code)};
}

} // namespace

Result<Resampler> Resampler::make(int fromRate, int toRate, int channels) {
    AVChannelLayout layout;
    av_channel_layout_default(&layout, channels); // any that has so many: they are only counted
    SwrContext *raw = nullptr;
    int code =
        swr_alloc_set_opts2(&raw, &layout, AV_SAMPLE_FMT_FLT, toRate, &layout, AV_SAMPLE_FMT_FLT, fromRate, 0, nullptr);
    ResamplerHandle context(raw);
    if (code >= 0)
        code = swr_init(context.get());
    if (code < 0)
        return failed(code);
    return Resampler(std::move(context), channels);
}

Result<std::span<const float>> Resampler::convert(std::span<const float> interleaved) {
    const int frames = static_cast<int>(interleaved.size() / static_cast<std::size_t>(mChannels));
    const int room = swr_get_out_samples(mContext.get(), frames);
    if (room < 0)
        return failed(room);
    mOutput.resize((static_cast<std::size_t>(room) + 1) * static_cast<std::size_t>(mChannels));
    const auto *in = reinterpret_cast<const std::uint8_t *>(interleaved.data());
    auto *out = reinterpret_cast<std::uint8_t *>(mOutput.data());
    const int made = swr_convert(mContext.get(), &out, room, frames ? &in : nullptr, frames);
    if (made < 0)
        return failed(made);
    return std::span<const float>(mOutput.data(), static_cast<std::size_t>(made * mChannels));
}

} // namespace cantorel::media
