#pragma once

#include "platform/media/CaptureStream.h"
#include "platform/media/FrameQueue.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace cantorel::media {

// A device that is heard.
struct SoundInput {
    std::shared_ptr<FrameQueue> queue; // that its stream fills
    int rate = 0;                      // its frames a second
    std::vector<int> sourceChannels;   // of each device behind it, together those of the queue
    // When its next frame is due; see CaptureStream. Any thread.
    std::function<std::optional<CaptureStream::Moment>()> moment;
};

// The sound of one or more devices as one stream by the clock of the first: silence fills what is missing, the others
// are mixed in where they were heard. One device with one, two or four channels keeps them, all else becomes stereo.
// Positions count the frames of the first device from the begin. One thread at a time.
class SoundTimeline {
public:
    // begin: host time, ns. At least one input.
    SoundTimeline(std::vector<SoundInput> inputs, std::uint64_t begin);
    ~SoundTimeline();

    int channels() const { return mChannels; }
    int rate() const; // frames a second

    // Where a moment lies, as far as is known by now.
    std::int64_t placeOf(std::uint64_t hostTime) const;
    std::chrono::nanoseconds timeOf(std::int64_t position) const;

    // Where the next frame to be taken lies.
    std::int64_t position() const { return mPosition; }
    // What can be taken at that host time, up to a position and half a second at a time; empty where it has to be
    // waited for. Silence stands in for sound that has not come within half a second. Valid until the next call.
    std::span<const float> take(std::int64_t until, std::uint64_t now);
    // Passes over what comes before a position.
    void skipTo(std::int64_t position);

private:
    class Track;

    std::int64_t ready(std::uint64_t now) const;

    std::vector<std::unique_ptr<Track>> mTracks; // the first one's clock is that of all
    const std::uint64_t mBegin;
    int mChannels = 0;
    std::int64_t mPosition = 0;
    bool mHasBegun = false; // some sound came, or silence stood in for it
    std::vector<float> mBlock;
};

} // namespace cantorel::media
