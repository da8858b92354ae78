#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/asset/FrameReader.h"

#include <cstddef>
#include <cstdint>

namespace cantorel::media {

// The same for sound as interleaved 16-bit samples in its own rate and channels.
class SampleReader {
public:
    virtual ~SampleReader() = default;

    virtual SoundFormat format() const = 0;
    virtual std::int64_t frames() const = 0;
    virtual foundation::Result<std::size_t> read(std::int16_t *interleaved, std::size_t frames) = 0;
    virtual void seek(std::int64_t frame) = 0;
    // What was read since the last seek would have been other, had all before it been read first. True as well where
    // that is done anyhow, so that a seek is slow, and once this was true. Reading goes on only after a seek.
    virtual bool needsAllBefore() { return false; }
};

} // namespace cantorel::media
