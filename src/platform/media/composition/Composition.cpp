#include "platform/media/composition/Composition.h"

#include "platform/media/composition/CompositionReader.h"

#include <algorithm>
#include <utility>

namespace cantorel::media {

namespace {

std::vector<Composition::Piece> byStart(std::vector<Composition::Piece> pieces) {
    std::stable_sort(pieces.begin(), pieces.end(), [](const auto &a, const auto &b) { return a.start < b.start; });
    return pieces;
}

} // namespace

Composition::Composition(SoundFormat format, std::int64_t frames, std::vector<Piece> pieces)
    : mFormat(format), mFrames(frames), mPieces(byStart(std::move(pieces))) {}

bool Composition::hasProtectedContent() const {
    return std::any_of(mPieces.begin(), mPieces.end(),
                       [](const Piece &piece) { return piece.source->hasProtectedContent(); });
}

foundation::Result<std::unique_ptr<FrameReader>> Composition::openReader(SoundFormat format) const {
    // In another rate each piece keeps its place and is read in that rate from its own source.
    const auto scaled = [&](std::int64_t frame) { return MediaTime{frame, mFormat.rate}.in(format.rate).value; };
    std::vector<Piece> pieces = mPieces;
    for (Piece &piece : pieces) {
        const std::int64_t end = scaled(piece.end());
        piece.start = scaled(piece.start);
        piece.length = end - piece.start;
        piece.sourceStart = scaled(piece.sourceStart);
    }
    return std::unique_ptr<FrameReader>(
        std::make_unique<CompositionReader>(format, pieces.empty() ? mFrames : scaled(mFrames), std::move(pieces)));
}

} // namespace cantorel::media
