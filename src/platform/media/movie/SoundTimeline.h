#pragma once

#include "platform/media/CaptureStream.h"
#include "platform/media/FrameQueue.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace cantorel::media {

// A device that is heard: its stream fills the queue.
struct SoundInput {
    std::shared_ptr<FrameQueue> queue;
    const CaptureStream *stream = nullptr;
};

// The sound of one or more devices as one stream by the clock of the first: silence fills what is missing, the others
// are mixed in where they were heard. One device with one, two or four channels keeps them, all else becomes stereo.
// One thread at a time.
class SoundTimeline {
public:
    // begin: host time, ns; position 0 of the timeline.
    SoundTimeline(std::vector<SoundInput> inputs, std::uint64_t begin);
    ~SoundTimeline();

    int channels() const { return mChannels; }
    int rate() const { return mRate; } // frames a second

    // Where a moment lies, in frames from the begin.
    std::int64_t positionOf(std::uint64_t hostTime) const;
    std::chrono::nanoseconds timeOf(std::int64_t position) const;

    // Where the next frame to be taken lies.
    std::int64_t position() const { return mPosition; }
    // What can be taken at that host time, up to a position; empty where it has to be waited for. Valid until the next
    // call. The first frames that are taken at all begin the sound; silence begins it half a second after the begin.
    std::span<const float> take(std::int64_t until, std::uint64_t now);
    // Goes on at a position behind what was taken.
    void skipTo(std::int64_t position);

private:
    struct Track;

    std::vector<std::unique_ptr<Track>> mTracks;
    const std::uint64_t mBegin;
    int mRate = 0;
    int mChannels = 0;
    std::int64_t mPosition = 0;
    bool mHasBegun = false;
    std::vector<float> mBlock;
};

} // namespace cantorel::media
