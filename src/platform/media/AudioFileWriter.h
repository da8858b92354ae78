#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/Codecs.h"
#include "platform/media/FragmentedFile.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <span>

namespace cantorel::media {

// Writes stereo sound to an M4A file that survives a crash: every append() codes what it gets and hands it to the
// kernel as one fragment, so callers hand over a quarter of a second to one second at a time. One thread at a time.
class AudioFileWriter {
public:
    // Replaces a file of that name. inputRate: frames a second.
    static foundation::Result<std::unique_ptr<AudioFileWriter>> open(const QString &path, int inputRate,
                                                                     const AacSettings &settings = {});

    // Interleaved stereo. After a failure the file holds what was written before, and finish() still closes it.
    foundation::Result<void> append(std::span<const float> interleaved);

    // Writes the rest and closes the file. Once only.
    foundation::Result<FileForm> finish();

    // See FragmentedFile.
    bool isLost() const { return mFile->isLost(); }
    foundation::Result<void> copyTo(const QString &path) const { return mFile->copyTo(path); }

    std::uint64_t bytes() const { return mFile->bytes(); }
    const AacFormat &format() const { return mEncoder->format(); }

private:
    AudioFileWriter(std::unique_ptr<AacEncoder> encoder, std::unique_ptr<FragmentedFile> file);

    std::unique_ptr<AacEncoder> mEncoder;
    std::unique_ptr<FragmentedFile> mFile;
    PacketRun mPackets; // kept, so that its room is
    bool mFailed = false;
};

} // namespace cantorel::media
