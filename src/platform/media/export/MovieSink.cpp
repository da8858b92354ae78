#include "platform/media/export/MovieSink.h"

#include "platform/media/DiskSpace.h"
#include "platform/media/asset/MediaTime.h"

#include <QFileInfo>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <utility>

namespace cantorel::media {

using foundation::HiddenFile;
using foundation::Result;

namespace {

// Codes as it goes.
class AacSink : public MovieSink {
public:
    AacSink(HiddenFile file, std::unique_ptr<AacEncoder> encoder, int rate)
        : MovieSink(std::move(file)), mEncoder(std::move(encoder)), mRate(rate) {}

    Result<void> put(std::int64_t, std::span<const float> interleaved) override {
        mPackets.clear();
        const auto coded = mEncoder->encode(interleaved, mPackets);
        return coded ? writePackets() : coded;
    }

    Result<void> finish(std::int64_t frames, std::span<const std::uint8_t> userData) override {
        mPackets.clear();
        Result<void> done = mEncoder->flush(mPackets);
        if (done)
            done = writePackets();
        if (done)
            done = closeData();
        if (!done)
            return done;
        // In a rate that AAC does not know, the coder has changed it.
        const std::int64_t heard = MediaTime{frames, mRate}.in(mEncoder->format().sampleRate).value;
        (void)writeMovie( // it stops at the failure that is answered
            mEncoder->format(), mTable, std::min(heard, mEncoder->frames()),
            [&](std::span<const std::uint8_t> piece) {
                done = write(piece);
                return done.ok();
            },
            userData);
        return done;
    }

private:
    Result<void> writePackets() {
        if (mPackets.sizes.empty())
            return {};
        mTable.addChunk(mEnd, mPackets.sizes);
        return write(mPackets.bytes);
    }

    const std::unique_ptr<AacEncoder> mEncoder;
    const int mRate;
    PacketRun mPackets;
    SampleTable mTable;
};

class PcmSink : public MovieSink {
public:
    PcmSink(HiddenFile file, int rate, bool isFloat) : MovieSink(std::move(file)), mFormat{rate, 2, isFloat} {}

    Result<void> put(std::int64_t frame, std::span<const float> interleaved) override {
        std::uint64_t position = positionOf(frame);
        if (mFormat.isFloat)
            return writeAt(position, bytesOf(interleaved));
        std::array<std::int16_t, 1 << 14> integers;
        Result<void> written;
        while (written && !interleaved.empty()) {
            const std::size_t count = std::min(interleaved.size(), integers.size());
            // Limited before it is rounded, so that nothing has to be asked in between.
            std::transform(interleaved.begin(), interleaved.begin() + static_cast<std::ptrdiff_t>(count),
                           integers.begin(), [](float sample) {
                               return static_cast<std::int16_t>(
                                   std::lrint(std::clamp(sample * 32768.0F, -32768.0F, 32767.0F)));
                           });
            written = writeAt(position, bytesOf(std::span<const std::int16_t>(integers).first(count)));
            position += count * sizeof(std::int16_t);
            interleaved = interleaved.subspan(count);
        }
        return written;
    }

    Result<void> finish(std::int64_t frames, std::span<const std::uint8_t>) override {
        mEnd = positionOf(frames);
        if (const auto closed = closeData(); !closed)
            return closed;
        return write(pcmMovie(mFormat, positionOf(0), static_cast<std::uint64_t>(frames)).data());
    }

private:
    template <class Sample> static std::span<const std::uint8_t> bytesOf(std::span<const Sample> samples) {
        return {reinterpret_cast<const std::uint8_t *>(samples.data()), samples.size_bytes()};
    }
    std::uint64_t positionOf(std::int64_t frame) const {
        return mBegin + static_cast<std::uint64_t>(frame) * static_cast<std::uint64_t>(mFormat.bytesPerFrame());
    }

    const PcmFormat mFormat;
    const std::uint64_t mBegin = plainMovieStart().size(); // of the samples
};

} // namespace

Result<HiddenFile> MovieSink::makeFile(const QString &folder) {
    int error = 0;
    auto file = HiddenFile::create(folder, QStringLiteral("m4a"), error);
    if (!file)
        return folderFailed(folder, error);
    return std::move(*file);
}

Result<std::unique_ptr<MovieSink>> MovieSink::aac(const QString &folder, int rate) {
    const auto codecs = loadCodecs();
    if (!codecs)
        return codecs.failure();
    auto encoder = codecs.value()->makeAacEncoder(rate, {.bitRate = 256000});
    if (!encoder)
        return encoder.failure();
    auto file = makeFile(folder);
    if (!file)
        return file.failure();
    std::unique_ptr<MovieSink> sink =
        std::make_unique<AacSink>(std::move(file).value(), std::move(encoder).value(), rate);
    const auto begun = sink->write(plainMovieStart().data());
    return begun ? Result(std::move(sink)) : begun.failure();
}

Result<std::unique_ptr<MovieSink>> MovieSink::pcm(const QString &folder, int rate, bool isFloat) {
    auto file = makeFile(folder);
    if (!file)
        return file.failure();
    std::unique_ptr<MovieSink> sink = std::make_unique<PcmSink>(std::move(file).value(), rate, isFloat);
    const auto begun = sink->write(plainMovieStart().data());
    return begun ? Result(std::move(sink)) : begun.failure();
}

Result<void> MovieSink::writeAt(std::uint64_t position, std::span<const std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const ssize_t written =
            ::pwrite(mFile.descriptor().get(), bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return folderFailed(QFileInfo(mFile.path()).path(), errno);
        position += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return {};
}

Result<void> MovieSink::write(std::span<const std::uint8_t> bytes) {
    const auto written = writeAt(mEnd, bytes);
    mEnd += bytes.size();
    return written;
}

Result<void> MovieSink::closeData() { return writeAt(kPlaceholderPosition, swallowingHeader(mEnd).data()); }

} // namespace cantorel::media
