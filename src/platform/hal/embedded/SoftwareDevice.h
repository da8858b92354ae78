#pragma once

#include "platform/hal/HardwareBackend.h"

#include <deque>
#include <functional>
#include <span>

namespace cantorel::hal {

// Gives a device's input its sound: fills frames x channels interleaved samples that begin at the position in frames.
using SoundSource = std::function<void(std::span<float> samples, int channels, std::int64_t position)>;
// Hears what came out of a device: interleaved samples that begin at the position in frames.
using SoundTap = std::function<void(std::span<const float> samples, int channels, std::int64_t position)>;

// A stream between a software device and its client.
struct SoftwareStream {
    QString uid;
    bool input;
    bool output;
    StreamClient *client;
    SoftwareStream *leader = nullptr;
    std::int64_t position = 0; // frames delivered
    bool ended = false;
};

// One device in software: its description, its place in time, and the sound on its way through it. Belongs to
// EmbeddedBackend, which locks it.
struct SoftwareDevice {
    DeviceRecord record;
    std::vector<double> rates;    // that it can do
    std::vector<QString> members; // of an aggregate, in order
    std::vector<int> widths;      // channels of each member, once all have been there
    SoundSource source;           // silence without one
    SoundTap tap;
    bool stalls = false;
    foundation::Clock::Duration start{}; // when position was 0
    std::int64_t position = 0;           // frames since it began
    std::vector<float> heard;            // the last cycle of the input side
    std::vector<float> played;           // the mix of the current cycle of the output side
    std::vector<float> ahead;            // played by followers, for the cycle that is about to come

    // When the next cycle begins.
    foundation::Clock::Duration nextCycle() const {
        const double seconds = static_cast<double>(position) / record.sampleRate;
        return start + foundation::Clock::Duration(static_cast<std::int64_t>(seconds * 1e9));
    }
    std::uint32_t cycleFrames() const { return record.cycleFrames; }
};

} // namespace cantorel::hal
