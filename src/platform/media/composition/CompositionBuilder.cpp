#include "platform/media/composition/CompositionBuilder.h"

#include <algorithm>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kCompositionTooLong("CompositionTooLong");

Failure tooLong() { return {kCompositionTooLong(), QStringLiteral("a composition of more than 2^53 frames")}; }

} // namespace

CompositionBuilder::Track CompositionBuilder::addTrack() {
    mTracks.push_back(0);
    return mTracks.size() - 1;
}

std::int64_t CompositionBuilder::frames() const {
    return mTracks.empty() ? 0 : *std::max_element(mTracks.begin(), mTracks.end());
}

template <class Moves> void CompositionBuilder::makeRoom(std::int64_t at, std::int64_t frames, const Moves &moves) {
    std::vector<Composition::Piece> behind;
    for (Composition::Piece &piece : mPieces) {
        if (!moves(piece) || piece.end() <= at)
            continue;
        if (piece.start >= at) {
            piece.start += frames;
            continue;
        }
        Composition::Piece rest = piece;
        piece.length = at - piece.start;
        rest.sourceStart += piece.length;
        rest.length -= piece.length;
        rest.start = at + frames;
        behind.push_back(std::move(rest));
    }
    mPieces.insert(mPieces.end(), behind.begin(), behind.end());
}

Result<void> CompositionBuilder::insertTimeRange(const MediaTimeRange &range, const AssetPointer &of, MediaTime at,
                                                 Track track) {
    const SoundFormat format = of->format();
    if (format.rate <= 0 || format.channels <= 0)
        return {}; // no sound in it
    if (mFormat.rate == 0)
        mFormat.rate = format.rate;
    mFormat.channels = std::max(mFormat.channels, std::min(format.channels, 2));

    const int rate = mFormat.rate;
    const std::int64_t start = frameAt(rate, at);
    const std::int64_t sourceStart = frameAt(rate, range.start);
    const std::int64_t length =
        std::min(frameAt(rate, at, range.duration) - start, frameAt(rate, of->duration()) - sourceStart);
    if (start > kMostFrames)
        return tooLong();
    if (length <= 0)
        return {};
    std::int64_t &end = mTracks[track];
    if (std::max(end, start) + length > kMostFrames)
        return tooLong();
    const auto isOnTrack = [&](const Composition::Piece &piece) { return piece.track == track; };
    makeRoom(start, length, isOnTrack);
    mPieces.push_back({of, sourceStart, start, length, track});
    end = std::max(end, start) + length;
    return {};
}

Result<void> CompositionBuilder::insertEmptyTimeRange(const MediaTimeRange &range) {
    if (mFormat.rate == 0)
        return {}; // silence of no rate
    const std::int64_t at = frameAt(mFormat.rate, range.start);
    const std::int64_t frames = frameAt(mFormat.rate, range.start, range.duration) - at;
    if (at > kMostFrames)
        return tooLong();
    if (frames <= 0)
        return {};
    if (std::max(this->frames(), at) + frames > kMostFrames)
        return tooLong();
    makeRoom(at, frames, [](const Composition::Piece &) { return true; });
    for (std::int64_t &end : mTracks)
        end = std::max(end, at) + frames;
    return {};
}

void CompositionBuilder::removeTimeRange(const MediaTimeRange &range) {
    if (mFormat.rate == 0)
        return;
    const std::int64_t from = frameAt(mFormat.rate, range.start);
    const std::int64_t to = frameAt(mFormat.rate, range.start, range.duration);
    if (to <= from)
        return;
    makeRoom(to, 0, [](const Composition::Piece &) { return true; }); // splits what reaches across the end
    std::vector<Composition::Piece> kept;
    for (Composition::Piece piece : mPieces) {
        if (piece.start >= to)
            piece.start -= to - from;
        else
            piece.length = std::min(piece.end(), from) - piece.start;
        if (piece.length > 0)
            kept.push_back(std::move(piece));
    }
    mPieces = std::move(kept);
    for (std::int64_t &end : mTracks)
        end -= std::min(end, to) - std::min(end, from);
}

std::shared_ptr<const Composition> CompositionBuilder::build() const {
    return std::make_shared<const Composition>(mFormat, frames(), mPieces);
}

} // namespace cantorel::media
