#pragma once

#include "platform/media/asset/FrameReader.h"
#include "platform/media/composition/Composition.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace cantorel::media {

// Reads what sounds at each frame of a composition. A source is open while one of its pieces sounds, and a little
// longer, since the next one is often of the same source. One thread at a time.
class CompositionReader : public FrameReader {
public:
    // By their start; all in frames of the format.
    CompositionReader(SoundFormat format, std::int64_t frames, std::vector<Composition::Piece> pieces);

    SoundFormat format() const override { return mFormat; }
    std::int64_t frames() const override { return mFrames; }
    foundation::Result<std::size_t> read(float *interleaved, std::size_t frames) override;
    void seek(std::int64_t frame) override;
    void hurry() override { mHurries = true; } // called before anything is read
    std::int64_t limited() const override;

private:
    // A source that is open, and the frame that it is read from next.
    struct Source {
        AssetPointer asset;
        std::unique_ptr<FrameReader> reader;
        std::int64_t position = 0;
    };
    struct Sounding {
        Composition::Piece piece;
        Source source;
    };

    // Up to the next frame at which a piece begins or ends.
    foundation::Result<void> readStretch(float *interleaved, std::size_t frames);
    foundation::Result<void> readPiece(Sounding &sounding, float *interleaved, std::size_t frames);
    foundation::Result<void> begin(const Composition::Piece &piece);
    void close(Source source);
    foundation::Failure failed(foundation::Failure why);

    const SoundFormat mFormat;
    const std::int64_t mFrames;
    const std::vector<Composition::Piece> mPieces;
    bool mHurries = false;
    std::int64_t mPosition = 0;
    std::size_t mNext = 0; // the first piece that has not begun
    std::vector<Sounding> mSounding;
    std::vector<Source> mIdle;
    std::vector<float> mScratch;
    std::int64_t mLimited = 0; // by this reader, and by those that were closed
};

} // namespace cantorel::media
