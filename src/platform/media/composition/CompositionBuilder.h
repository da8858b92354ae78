#pragma once

#include "platform/media/composition/Composition.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace cantorel::media {

// Makes a composition piece by piece. Its rate is that of the first piece; it has two channels as soon as a piece has
// more than one. Every time is turned into a place among its frames, never into a length, so that rounding does not add
// up. A value of one thread.
class CompositionBuilder {
public:
    using Track = std::size_t;

    Track addTrack();

    // What of the track lies behind that time moves back. Nothing is taken from beyond the asset's end; behind the end
    // of the track there is silence up to that time.
    foundation::Result<void> insertTimeRange(const MediaTimeRange &range, const AssetPointer &of, MediaTime at,
                                             Track track);
    // Silence on all tracks, also behind the end.
    foundation::Result<void> insertEmptyTimeRange(const MediaTimeRange &range);
    // Of all tracks; what lies behind moves up.
    void removeTimeRange(const MediaTimeRange &range);

    MediaTime duration() const { return {frames(), mFormat.rate > 0 ? mFormat.rate : 1}; }
    std::shared_ptr<const Composition> build() const;

private:
    std::int64_t frames() const;
    // Makes room at that frame of the tracks for which `moves` holds; a piece across it is split.
    template <class Moves> void makeRoom(std::int64_t at, std::int64_t frames, const Moves &moves);

    SoundFormat mFormat;
    std::vector<std::int64_t> mTracks; // the length of each
    std::vector<Composition::Piece> mPieces;
};

} // namespace cantorel::media
