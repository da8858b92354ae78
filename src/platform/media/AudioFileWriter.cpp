#include "platform/media/AudioFileWriter.h"

#include <algorithm>
#include <utility>

namespace cantorel::media {

using foundation::Result;

AudioFileWriter::AudioFileWriter(std::unique_ptr<AacEncoder> encoder, std::unique_ptr<FragmentedFile> file)
    : mEncoder(std::move(encoder)), mFile(std::move(file)) {}

Result<std::unique_ptr<AudioFileWriter>> AudioFileWriter::open(const QString &path, int inputRate,
                                                               const AacSettings &settings) {
    const auto codecs = loadCodecs();
    if (!codecs)
        return codecs.failure();
    auto encoder = codecs.value()->makeAacEncoder(inputRate, settings);
    if (!encoder)
        return encoder.failure();
    auto file = FragmentedFile::create(path, encoder.value()->format());
    if (!file)
        return file.failure();
    return std::unique_ptr<AudioFileWriter>(new AudioFileWriter(std::move(encoder).value(), std::move(file).value()));
}

Result<void> AudioFileWriter::append(std::span<const float> interleaved) {
    mPackets.clear();
    Result<void> done = mEncoder->encode(interleaved, mPackets);
    if (done)
        done = mFile->append(mPackets);
    mFailed = mFailed || !done;
    return done;
}

Result<FileForm> AudioFileWriter::finish() {
    if (!mFailed) {
        mPackets.clear();
        Result<void> done = mEncoder->flush(mPackets);
        if (done)
            done = mFile->append(mPackets);
        mFailed = !done;
    }
    // What did not reach the file is not counted.
    const std::int64_t written =
        static_cast<std::int64_t>(mFile->packets()) * kFramesPerPacket - format().primingFrames;
    return mFile->finish(std::clamp<std::int64_t>(mEncoder->frames(), 0, std::max<std::int64_t>(written, 0)));
}

} // namespace cantorel::media
