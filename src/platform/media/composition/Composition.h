#pragma once

#include "platform/media/asset/Asset.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cantorel::media {

// Sound that was put together from stretches of other assets, on tracks that sound together; made by a
// CompositionBuilder. To its readers it is one track: the sum of its tracks, where more than full scale is limited.
// Nothing is copied, so that its sources have to stay as they are until it has been read.
class Composition : public Asset {
public:
    // A stretch of a source on a track. Counts in frames of the composition's rate.
    struct Piece {
        AssetPointer source;
        std::int64_t sourceStart = 0;
        std::int64_t start = 0;
        std::int64_t length = 0; // above 0
        std::size_t track = 0;

        std::int64_t end() const { return start + length; }
    };

    Composition(SoundFormat format, std::int64_t frames, std::vector<Piece> pieces);

    QUrl url() const override { return {}; }
    MediaTime duration() const override { return {mFrames, mFormat.rate > 0 ? mFormat.rate : 1}; }
    SoundFormat format() const override { return mFormat; }
    bool isPlayable() const override { return mFrames > 0; }
    bool hasProtectedContent() const override;
    QList<MetadataItem> metadata() const override { return {}; }
    foundation::Result<std::unique_ptr<FrameReader>> openReader(SoundFormat format) const override;

    // By their start.
    const std::vector<Piece> &pieces() const { return mPieces; }

private:
    const SoundFormat mFormat;
    const std::int64_t mFrames;
    const std::vector<Piece> mPieces;
};

} // namespace cantorel::media
