#pragma once

#include "platform/foundation/Result.h"

#include <cstddef>
#include <cstdint>

namespace cantorel::media {

struct SoundFormat {
    int rate = 0;     // frames a second
    int channels = 0; // 0: no sound

    // What is beyond is no sound: a resampler takes for ever there.
    static constexpr int kLowestRate = 100, kHighestRate = 1 << 20;
    static constexpr int kMostChannels = 64;
    bool isSound() const {
        return rate >= kLowestRate && rate <= kHighestRate && channels > 0 && channels <= kMostChannels;
    }
    bool operator==(const SoundFormat &) const = default;
};

// Sound that is read forwards from any of its frames, as interleaved floats where 1 is full scale. Used by one thread
// at a time.
class FrameReader {
public:
    virtual ~FrameReader() = default;

    virtual SoundFormat format() const = 0;
    // How many there are. What a coder has put in front and behind does not count.
    virtual std::int64_t frames() const = 0;
    // Reads up to that many frames; answers how many, 0 only at the end. Fails when the file was changed or has gone.
    virtual foundation::Result<std::size_t> read(float *interleaved, std::size_t frames) = 0;
    // The next frame read is this one, to the frame and to the bit as if all before it had been read; clamped to the
    // end.
    virtual void seek(std::int64_t frame) = 0;
    // From now on a seek is quick in every sound: where its coder has put noise, other noise of the same loudness may
    // be read.
    virtual void hurry() {}
    // How many of the samples read so far were beyond full scale where several sounds met, and were limited to it.
    virtual std::int64_t limited() const { return 0; }
};

} // namespace cantorel::media
