#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

namespace cantorel::media {

// The loudness of each channel over the last 100 ms. Fed by one real-time thread, read by any; they share only the
// published powers, each a plain word of its own.
class LevelMeter {
public:
    static constexpr float kFloorDecibels = -80;

    LevelMeter(int channels, double sampleRate);

    void feed(const float *interleaved, std::size_t frames) noexcept [[clang::nonblocking]];

    // RMS in dB of full scale, not below the floor; one value a channel.
    std::vector<float> decibels() const;

private:
    static constexpr std::size_t kParts = 10; // of 10 ms

    void endPart() noexcept [[clang::nonblocking]];

    const std::size_t mChannels;
    const std::size_t mPartFrames;
    std::vector<double> mSums; // of squares in the part under way, one a channel
    std::vector<double> mPast; // kParts sums a channel
    std::size_t mFilled = 0;   // frames of the part under way
    std::size_t mPart = 0;
    std::vector<std::atomic<float>> mPowers; // mean square
};

} // namespace cantorel::media
