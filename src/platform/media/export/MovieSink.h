#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/foundation/Result.h"
#include "platform/media/BoxBuffer.h"
#include "platform/media/Codecs.h"
#include "platform/media/MovieBoxes.h"
#include "platform/media/SampleTable.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace cantorel::media {

// Takes stereo sound and makes an ordinary M4A of it in a hidden file, which is gone when it is not finished.
class MovieSink {
public:
    static foundation::Result<std::unique_ptr<MovieSink>> aac(const QString &folder, int rate);
    // Bare samples: floats, or integers of 16 bits.
    static foundation::Result<std::unique_ptr<MovieSink>> pcm(const QString &folder, int rate, bool isFloat);
    virtual ~MovieSink() = default;

    // Interleaved stereo that lies from that frame on. What is coded comes one stretch after the other, on one thread;
    // bare samples come in any order, from several threads at a time.
    virtual foundation::Result<void> put(std::int64_t frame, std::span<const float> interleaved) = 0;
    // Once only, after all of the frames. userData: see writeMovie().
    virtual foundation::Result<void> finish(std::int64_t frames, std::span<const std::uint8_t> userData) = 0;
    // Only after finish().
    foundation::HiddenFile take() && { return std::move(mFile); }

protected:
    explicit MovieSink(foundation::HiddenFile file) : mFile(std::move(file)) {}
    // Behind what is there.
    foundation::Result<void> write(std::span<const std::uint8_t> bytes);
    foundation::Result<void> writeAt(std::uint64_t position, std::span<const std::uint8_t> bytes) const;
    // The moov begins here.
    foundation::Result<void> closeData();

    foundation::HiddenFile mFile;
    std::uint64_t mEnd = 0;

private:
    static foundation::Result<foundation::HiddenFile> makeFile(const QString &folder);
};

} // namespace cantorel::media
