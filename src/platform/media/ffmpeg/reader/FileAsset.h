#pragma once

#include "platform/media/asset/Asset.h"
#include "platform/media/ffmpeg/reader/SoundTrack.h"

namespace cantorel::media {

// A file as an asset. Its readers share what is known of its track, and each has a decoder of its own.
class FileAsset : public Asset {
public:
    static foundation::Result<AssetPointer> open(std::shared_ptr<const SourceFile> file);

    QUrl url() const override { return QUrl::fromLocalFile(mTrack->file->path()); }
    MediaTime duration() const override;
    SoundFormat format() const override { return mTrack->format; }
    bool isPlayable() const override { return mTrack->isPlayable; }
    bool hasProtectedContent() const override { return mTrack->isProtected; }
    QList<MetadataItem> metadata() const override { return mMetadata; }
    std::int64_t soundBytes() const override { return mTrack->bytes; }
    foundation::Result<std::unique_ptr<FrameReader>> openReader(SoundFormat format) const override;
    foundation::Result<std::unique_ptr<SampleReader>> openSampleReader() const override;

private:
    FileAsset(SoundTrack track, QList<MetadataItem> metadata)
        : mTrack(std::make_shared<const SoundTrack>(std::move(track))), mMetadata(std::move(metadata)) {}

    std::shared_ptr<const SoundTrack> mTrack;
    QList<MetadataItem> mMetadata;
};

// Reads no more of the file than that needs.
foundation::Result<QList<MetadataItem>> readMetadataOf(std::shared_ptr<const SourceFile> file);

} // namespace cantorel::media
