#include "platform/media/LevelMeter.h"

#include <algorithm>
#include <cmath>

namespace cantorel::media {

LevelMeter::LevelMeter(int channels, double sampleRate)
    : mChannels(static_cast<std::size_t>(channels)),
      mPartFrames(std::max<std::size_t>(1, static_cast<std::size_t>(sampleRate / 100))),
      mSums(mChannels),
      mPast(mChannels * kParts),
      mPowers(mChannels) {}

void LevelMeter::feed(const float *interleaved, std::size_t frames) noexcept {
    while (frames > 0) {
        const std::size_t count = std::min(frames, mPartFrames - mFilled);
        for (std::size_t channel = 0; channel < mChannels; ++channel) {
            float sum = 0;
            for (std::size_t i = 0; i < count; ++i) {
                const float sample = interleaved[i * mChannels + channel];
                sum += sample * sample;
            }
            mSums[channel] += sum;
        }
        interleaved += count * mChannels;
        frames -= count;
        mFilled += count;
        if (mFilled == mPartFrames)
            endPart();
    }
}

void LevelMeter::endPart() noexcept {
    for (std::size_t channel = 0; channel < mChannels; ++channel) {
        double *past = &mPast[channel * kParts];
        past[mPart] = mSums[channel];
        mSums[channel] = 0;
        double sum = 0;
        for (std::size_t i = 0; i < kParts; ++i)
            sum += past[i];
        mPowers[channel].store(static_cast<float>(sum / static_cast<double>(kParts * mPartFrames)),
                               std::memory_order_relaxed);
    }
    mFilled = 0;
    mPart = (mPart + 1) % kParts;
}

std::vector<float> LevelMeter::decibels() const {
    std::vector<float> levels;
    for (const auto &power : mPowers) {
        const float decibels = 10 * std::log10(power.load(std::memory_order_relaxed));
        levels.push_back(decibels > kFloorDecibels ? decibels : kFloorDecibels); // not a number is the floor, too
    }
    return levels;
}

} // namespace cantorel::media
