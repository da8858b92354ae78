#pragma once

#include "platform/media/asset/SourceFile.h"
#include "platform/media/ffmpeg/reader/DemuxerHandles.h"

#include <optional>

namespace cantorel::media {

// What the edits of a movie do to its packets.
enum class Edits { Ignored, Applied };

// The packets of one file, and of no other that it may name. One thread at a time.
class Demuxer {
public:
    static foundation::Result<std::unique_ptr<Demuxer>> open(std::shared_ptr<const SourceFile> file, Edits edits);

    AVFormatContext &context() { return *mContext; }
    // The first track of sound, null without one.
    AVStream *sound();
    // Only the packets of that stream are wanted.
    void select(const AVStream &stream);
    // False at the end, damage included; a failure when the file can't be read.
    foundation::Result<bool> next(AVPacket &packet);

private:
    explicit Demuxer(std::shared_ptr<const SourceFile> file) : mFile(std::move(file)) {}
    static int readBytes(void *self, std::uint8_t *into, int size);
    static std::int64_t seekBytes(void *self, std::int64_t offset, int whence);

    std::shared_ptr<const SourceFile> mFile;
    std::int64_t mPosition = 0;
    std::optional<foundation::Failure> mFailure; // of reading the file
    StreamHandle mStream;
    InputHandle mContext;
};

} // namespace cantorel::media
