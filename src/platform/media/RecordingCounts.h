#pragma once

#include <cmath>
#include <cstdint>

namespace cantorel::media {

// What the file of a recording holds and lacks: up to now while it is written, in all once it is whole.
struct RecordingCounts {
    std::int64_t frames = 0;
    std::int32_t rate = 0; // frames in a second; 0 without a recording
    std::int64_t bytes = 0;
    std::int64_t droppedFrames = 0; // lost on the way to the file; 0 in a good recording
    // Silence that stands for what the device, or one of the two that it joins, did not bring while it was away; part
    // of the frames.
    std::int64_t filledFrames = 0;
    std::int64_t droppedPictures = 0; // of a movie: that came faster than they could be written
    double secondsAway = 0;           // how long the device was away when it came back last

    double seconds() const { return rate < 1 ? 0 : static_cast<double>(frames) / rate; }
    // What splits and displays go by.
    double wholeSeconds() const { return std::floor(seconds()); }
};

} // namespace cantorel::media
