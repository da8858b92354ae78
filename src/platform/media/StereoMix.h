#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace cantorel::media {

// Brings the channels of one or more sources to stereo at unity: a mono source goes to both sides, of the others the
// odd channels go left and the even ones right. One stereo source passes bit by bit; in a mix, peaks above 1 are
// limited and counted. One thread at a time.
class StereoMix {
public:
    // sourceChannels: channels of each source, in the order of the interleaved input.
    explicit StereoMix(std::vector<int> sourceChannels);

    // Valid until the next call.
    std::span<const float> mix(std::span<const float> interleaved);

    std::size_t limitedSamples() const { return mLimited; }

private:
    struct Route {
        bool left = false;
        bool right = false;
    };

    std::vector<Route> mRoutes; // one a channel
    const bool mPassThrough;
    std::vector<float> mOutput;
    std::size_t mLimited = 0;
};

} // namespace cantorel::media
