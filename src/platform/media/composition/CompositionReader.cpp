#include "platform/media/composition/CompositionReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr std::size_t kMostIdle = 4;
constexpr std::size_t kMixBlock = 8192; // frames

constexpr foundation::SentenceKey kSourceEndsEarly("SourceEndsEarly", "FileName");

} // namespace

CompositionReader::CompositionReader(SoundFormat format, std::int64_t frames, std::vector<Composition::Piece> pieces)
    : mFormat(format), mFrames(frames), mPieces(std::move(pieces)) {}

std::int64_t CompositionReader::limited() const {
    std::int64_t count = mLimited;
    for (const Sounding &sounding : mSounding)
        count += sounding.source.reader->limited();
    for (const Source &source : mIdle)
        count += source.reader->limited();
    return count;
}

void CompositionReader::close(Source source) {
    mIdle.push_back(std::move(source));
    if (mIdle.size() <= kMostIdle)
        return;
    mLimited += mIdle.front().reader->limited();
    mIdle.erase(mIdle.begin());
}

Result<void> CompositionReader::begin(const Composition::Piece &piece) {
    const std::int64_t position = piece.sourceStart + mPosition - piece.start;
    const auto idle =
        std::find_if(mIdle.rbegin(), mIdle.rend(), [&](const Source &source) { return source.asset == piece.source; });
    Source source;
    if (idle != mIdle.rend()) {
        source = std::move(*idle);
        mIdle.erase(std::next(idle).base());
    } else {
        auto opened = piece.source->openReader(mFormat);
        if (!opened)
            return opened.failure();
        source = {piece.source, std::move(opened).value(), 0};
        if (mHurries)
            source.reader->hurry();
    }
    if (source.position != position)
        source.reader->seek(position);
    source.position = position;
    mSounding.push_back({piece, std::move(source)});
    return {};
}

void CompositionReader::seek(std::int64_t frame) {
    mPosition = std::clamp<std::int64_t>(frame, 0, mFrames);
    for (Sounding &sounding : mSounding)
        close(std::move(sounding.source));
    mSounding.clear();
    mNext = 0;
}

Failure CompositionReader::failed(Failure why) {
    seek(mPosition); // so that all sources agree again
    return why;
}

Result<std::size_t> CompositionReader::read(float *interleaved, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    std::size_t done = 0;
    while (done < frames && mPosition < mFrames) {
        for (auto sounding = mSounding.begin(); sounding != mSounding.end();) {
            if (sounding->piece.end() > mPosition) {
                ++sounding;
                continue;
            }
            close(std::move(sounding->source));
            sounding = mSounding.erase(sounding);
        }
        for (; mNext < mPieces.size() && mPieces[mNext].start <= mPosition; ++mNext)
            if (mPieces[mNext].end() > mPosition)
                if (const auto begun = begin(mPieces[mNext]); !begun)
                    return failed(begun.failure());
        std::int64_t until = mNext < mPieces.size() ? std::min(mPieces[mNext].start, mFrames) : mFrames;
        for (const Sounding &sounding : mSounding)
            until = std::min(until, sounding.piece.end());
        const std::size_t count = static_cast<std::size_t>(
            std::min<std::int64_t>(static_cast<std::int64_t>(frames - done), until - mPosition));
        if (const auto stretch = readStretch(interleaved + done * channels, count); !stretch)
            return failed(stretch.failure());
        done += count;
        mPosition += static_cast<std::int64_t>(count);
    }
    return done;
}

Result<void> CompositionReader::readStretch(float *interleaved, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    if (mSounding.empty()) {
        std::fill_n(interleaved, frames * channels, 0.0F);
        return {};
    }
    // A single one stays as it is, beyond full scale too.
    if (const auto first = readPiece(mSounding.front(), interleaved, frames); !first)
        return first;
    if (mSounding.size() == 1)
        return {};
    mScratch.resize(kMixBlock * channels);
    for (std::size_t at = 0; at < frames; at += kMixBlock) {
        const std::size_t count = std::min(kMixBlock, frames - at);
        float *sum = interleaved + at * channels;
        for (std::size_t other = 1; other < mSounding.size(); ++other) {
            if (const auto read = readPiece(mSounding[other], mScratch.data(), count); !read)
                return read;
            for (std::size_t i = 0; i < count * channels; ++i)
                sum[i] += mScratch[i];
        }
        for (std::size_t i = 0; i < count * channels; ++i) {
            if (std::abs(sum[i]) <= 1)
                continue;
            sum[i] = std::copysign(1.0F, sum[i]);
            ++mLimited;
        }
    }
    return {};
}

Result<void> CompositionReader::readPiece(Sounding &sounding, float *interleaved, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    Source &source = sounding.source;
    for (std::size_t done = 0; done < frames;) {
        const auto got = source.reader->read(interleaved + done * channels, frames - done);
        if (!got)
            return got.failure();
        done += got.value();
        source.position += static_cast<std::int64_t>(got.value());
        if (got.value() > 0)
            continue;
        // In another rate the source may be a frame shorter than its length; any other end comes too early.
        if (source.position < source.reader->frames())
            return Failure{kSourceEndsEarly(source.asset->url().toLocalFile()),
                           QStringLiteral("%1 of %2 frames").arg(source.position).arg(source.reader->frames())};
        std::fill_n(interleaved + done * channels, (frames - done) * channels, 0.0F);
        return {};
    }
    return {};
}

} // namespace cantorel::media
