#include "platform/media/StereoMix.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cantorel::media {

StereoMix::StereoMix(std::vector<int> sourceChannels) : mPassThrough(sourceChannels == std::vector<int>{2}) {
    for (const int channels : sourceChannels) {
        for (int channel = 0; channel < channels; ++channel)
            mRoutes.push_back({channels == 1 || channel % 2 == 0, channels == 1 || channel % 2 == 1});
    }
}

std::span<const float> StereoMix::mix(std::span<const float> interleaved) {
    if (mPassThrough || mRoutes.empty())
        return interleaved;
    const std::size_t channels = mRoutes.size();
    const std::size_t frames = interleaved.size() / channels;
    mOutput.assign(frames * 2, 0);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        for (std::size_t i = 0; i < frames; ++i) {
            const float sample = interleaved[i * channels + channel];
            mOutput[2 * i] += mRoutes[channel].left ? sample : 0;
            mOutput[2 * i + 1] += mRoutes[channel].right ? sample : 0;
        }
    }
    for (float &sample : mOutput) {
        if (std::abs(sample) > 1) {
            sample = std::clamp(sample, -1.0f, 1.0f);
            ++mLimited;
        }
    }
    return mOutput;
}

} // namespace cantorel::media
