#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/ffmpeg/FFmpegHandles.h"

#include <span>
#include <vector>

namespace cantorel::media {

// Changes the rate of interleaved floats. One thread at a time.
class Resampler {
public:
    static foundation::Result<Resampler> make(int fromRate, int toRate, int channels);

    // What is ready of the input; an empty input gives the rest. Valid until the next call.
    foundation::Result<std::span<const float>> convert(std::span<const float> interleaved);

private:
    Resampler(ResamplerHandle context, int channels) : mContext(std::move(context)), mChannels(channels) {}

    ResamplerHandle mContext;
    int mChannels;
    std::vector<float> mOutput;
};

} // namespace cantorel::media
