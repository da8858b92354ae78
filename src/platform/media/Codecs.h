#pragma once

#include "platform/foundation/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace cantorel::media {

// What the coder may do to spend fewer bits. The defaults are what recordings are made with; why stands in
// docs/decisions/coder-settings.md.
struct AacSettings {
    int bitRate = 0;                // bits a second; 0: 256,000 at 44.1 and 48 kHz, in proportion elsewhere
    bool noiseSubstitution = false; // off: files written with it cannot be decoded in parallel to the bit
    bool intensityStereo = false;
    bool temporalNoiseShaping = false;
    bool midSide = true;
    bool fastCoder = true;
    int channels = 2; // 1, 2 or 4
    int rate = 0;     // that is coded; 0: the nearest to the input's that AAC knows
};

// What a file has to say about its AAC track.
struct AacFormat {
    int sampleRate = 0;               // frames a second
    int channels = 0;                 // 1, 2 or 4
    int bitRate = 0;                  // bits a second
    int primingFrames = 0;            // decoded frames before the first frame that was handed in
    std::vector<std::uint8_t> config; // the AudioSpecificConfig

    bool operator==(const AacFormat &) const = default;
};

inline constexpr int kFramesPerPacket = 1024;
inline constexpr int kMostChannels = 4;

// Bits a second of a recording, by its rate in frames a second.
inline constexpr int defaultAacBitRate(int rate) {
    if (rate >= 44100 && rate <= 48000)
        return 256000;
    return static_cast<int>(256000LL * rate / (rate < 44100 ? 44100 : 48000));
}

// Coded packets, one behind the other.
struct PacketRun {
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint32_t> sizes; // bytes of each packet

    void clear() {
        bytes.clear();
        sizes.clear();
    }
};

// Codes one stream of sound. Used by one thread at a time.
class AacEncoder {
public:
    virtual ~AacEncoder() = default;

    virtual const AacFormat &format() const = 0;

    // Adds what is ready to `packets`; interleaved at the input rate, any number of frames.
    virtual foundation::Result<void> encode(std::span<const float> interleaved, PacketRun &packets) = 0;
    // Adds the rest. Nothing can be encoded afterwards.
    virtual foundation::Result<void> flush(PacketRun &packets) = 0;
    // Frames taken in so far, in the format's rate; exact after flush().
    virtual std::int64_t frames() const = 0;
};

// Makes coders. One implementation, in a shared object that is loaded when it is first needed, so that programs
// without sound to code do not pay for its libraries.
class Codecs {
public:
    virtual ~Codecs() = default;

    // Rates that AAC does not know are resampled to the nearest that it knows.
    virtual foundation::Result<std::unique_ptr<AacEncoder>> makeAacEncoder(int inputRate,
                                                                           const AacSettings &settings) const = 0;
};

// The one function that the shared object exports, by this name and type.
inline constexpr const char *kCodecsEntryPoint = "cantorel_media_codecs";
using CodecsEntryPoint = const Codecs *(*)();

// The codecs, loaded at the first call; lives to the end of the program. Any thread. They lie in ../lib/cantorel from
// the program's own folder, or in the folder that the variable CANTOREL_MODULES names.
foundation::Result<const Codecs *> loadCodecs();

} // namespace cantorel::media
