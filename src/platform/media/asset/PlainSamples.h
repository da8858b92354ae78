#pragma once

#include "platform/media/asset/SampleReader.h"
#include "platform/media/asset/SourceFile.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace cantorel::media {

// Whole numbers that lie one after the other in a file.
struct PlainSound {
    SoundFormat format;
    int sampleBytes = 0;       // one that is unsigned, or up to four, the lowest first
    std::int64_t position = 0; // of the first, in bytes from the start of the file
    std::int64_t frames = 0;

    std::int64_t frameBytes() const { return std::int64_t(sampleBytes) * format.channels; }
};

// Reads them; of long ones the upper 16 bits.
class PlainSamples : public SampleReader {
public:
    PlainSamples(std::shared_ptr<const SourceFile> file, PlainSound sound) : mFile(std::move(file)), mSound(sound) {}

    SoundFormat format() const override { return mSound.format; }
    std::int64_t frames() const override { return mSound.frames; }
    foundation::Result<std::size_t> read(std::int16_t *interleaved, std::size_t frames) override;
    void seek(std::int64_t frame) override;

private:
    // Answers how many samples were read.
    foundation::Result<std::size_t> readOthers(std::int64_t position, std::span<std::int16_t> samples);

    const std::shared_ptr<const SourceFile> mFile;
    const PlainSound mSound;
    std::int64_t mNext = 0;
    std::vector<std::uint8_t> mBytes; // as they lie in the file
};

} // namespace cantorel::media
