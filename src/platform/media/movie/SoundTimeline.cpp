#include "platform/media/movie/SoundTimeline.h"

#include "platform/media/Codecs.h"
#include "platform/media/StereoMix.h"
#include "platform/media/asset/MediaTime.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <utility>

namespace cantorel::media {

namespace {

constexpr double kNanoseconds = 1e9;
constexpr double kPatience = 0.5;     // seconds, until silence stands in
constexpr double kOthersDelay = 0.06; // seconds that the others may bring a moment later than the first
constexpr double kMostDoubt = 0.05;   // seconds; two looks at one clock differ by less
constexpr double kMostDrift = 0.01;   // seconds that another device may stand apart before it jumps
constexpr double kDriftFrames = 4;    // from here on it is drawn near
constexpr double kDriftStep = 0.0005; // by so much of its speed
constexpr double kLongestBlock = 0.5; // seconds

} // namespace

// One device: what it brought and was not taken yet, at positions that count its own frames from the begin.
class SoundTimeline::Track {
public:
    Track(SoundInput input, bool keepsChannels, std::uint64_t begin)
        : mInput(std::move(input)),
          mMix(keepsChannels ? std::nullopt : std::optional<StereoMix>(mInput.sourceChannels)),
          mChannels(keepsChannels ? mInput.queue->channels() : 2),
          mBegin(begin) {}

    int rate() const { return mInput.rate; }
    int channels() const { return mChannels; }
    bool isEmpty() const { return mPieces.empty(); }
    std::int64_t first() const { return mPieces.front().first; }
    std::int64_t end() const { return mEnd; }

    double placeOf(std::uint64_t hostTime) const {
        const std::uint64_t known = mMoment ? mMoment->hostTime : mBegin;
        const double seconds = (hostTime < known ? -1 : 1)
                               * static_cast<double>(hostTime < known ? known - hostTime : hostTime - known)
                               / kNanoseconds;
        return (mMoment ? static_cast<double>(static_cast<std::int64_t>(mMoment->accepted) + mShift) : 0.0)
               + seconds * rate();
    }

    void look() {
        const auto moment = mInput.moment();
        if (!moment)
            return;
        const double expected = placeOf(moment->hostTime);
        const bool isFirst = !mMoment;
        if (isFirst)
            mShift = std::llround(expected) - static_cast<std::int64_t>(moment->accepted);
        FrameQueue &queue = *mInput.queue;
        const std::size_t known = mPieces.size();
        while (queue.taken() < moment->accepted) {
            const auto hole = queue.nextHole();
            if (hole && hole->position <= queue.taken()) {
                // Only what comes last is known to stand where it was heard when a device is first looked at.
                if (isFirst)
                    mPieces.clear();
                else
                    mShift += static_cast<std::int64_t>(hole->frames);
                queue.passHole();
                continue;
            }
            keep(queue, (hole ? std::min(hole->position, moment->accepted) : moment->accepted) - queue.taken());
        }
        mMoment = moment;
        // A device that stood still without a word, or that was made anew, stands elsewhere by now.
        const double doubt = expected - static_cast<double>(static_cast<std::int64_t>(moment->accepted) + mShift);
        if (std::abs(doubt) <= kMostDoubt * rate())
            return;
        mShift += std::llround(doubt);
        for (std::size_t i = known; doubt > 0 && i < mPieces.size(); ++i) {
            mPieces[i].first += std::llround(doubt);
            mEnd = mPieces[i].end(mChannels);
        }
    }

    void dropBefore(std::int64_t position) {
        while (!mPieces.empty() && mPieces.front().end(mChannels) <= position)
            mPieces.pop_front();
    }

    // Copies frames from a position on; silence where there are none.
    void copy(std::int64_t position, std::span<float> frames) const {
        std::fill(frames.begin(), frames.end(), 0.0f);
        const auto channels = static_cast<std::int64_t>(mChannels);
        const std::int64_t end = position + static_cast<std::int64_t>(frames.size()) / channels;
        for (const Piece &piece : mPieces) {
            const std::int64_t from = std::max(position, piece.first), to = std::min(end, piece.end(mChannels));
            if (from < to)
                std::copy_n(piece.frames.begin() + (from - piece.first) * channels, (to - from) * channels,
                            frames.begin() + (from - position) * channels);
        }
    }

    // Adds stereo frames as they were heard from that host time on, at another device's rate.
    void mixInto(std::span<float> stereo, std::uint64_t hostTime, int otherRate) {
        const auto count = static_cast<std::int64_t>(stereo.size() / 2);
        const double wanted = placeOf(hostTime), away = wanted - mNext;
        const double ratio = static_cast<double>(rate()) / otherRate;
        double step = ratio;
        if (std::abs(away) > kMostDrift * rate())
            mNext = rate() == otherRate ? std::round(wanted) : wanted;
        else if (std::abs(away) > kDriftFrames)
            step *= 1 + std::copysign(kDriftStep, away);
        const auto begin = static_cast<std::int64_t>(std::floor(mNext));
        const auto needed = static_cast<std::int64_t>(std::ceil(static_cast<double>(count) * step)) + 2;
        mScratch.resize(static_cast<std::size_t>(needed) * 2);
        copy(begin, mScratch);
        for (std::int64_t i = 0; i < count; ++i) {
            const double at = mNext - static_cast<double>(begin) + static_cast<double>(i) * step;
            const auto index = static_cast<std::size_t>(at);
            const auto part = static_cast<float>(at - static_cast<double>(index));
            for (std::size_t channel = 0; channel < 2; ++channel) {
                const float one = mScratch[2 * index + channel], next = mScratch[2 * index + 2 + channel];
                float &sample = stereo[2 * static_cast<std::size_t>(i) + channel];
                sample = std::clamp(sample + one + (next - one) * part, -1.0f, 1.0f);
            }
        }
        mNext += static_cast<double>(count) * step;
        dropBefore(static_cast<std::int64_t>(mNext) - 1);
    }

private:
    struct Piece {
        std::int64_t first = 0;
        std::vector<float> frames; // interleaved

        std::int64_t end(int channels) const { return first + static_cast<std::int64_t>(frames.size()) / channels; }
    };

    void keep(FrameQueue &queue, std::uint64_t count) {
        const std::int64_t at = static_cast<std::int64_t>(queue.taken()) + mShift;
        mPopped.resize(count * static_cast<std::size_t>(queue.channels()));
        const std::size_t got = queue.pop(mPopped.data(), count);
        std::span<const float> frames = std::span(mPopped).first(got * static_cast<std::size_t>(queue.channels()));
        if (mMix)
            frames = mMix->mix(frames);
        // What a correction would have heard twice is left out.
        const auto twice = static_cast<std::size_t>(std::max<std::int64_t>(mEnd - at, 0) * mChannels);
        if (twice >= frames.size())
            return;
        frames = frames.subspan(twice);
        const std::int64_t first = std::max(at, mEnd);
        mPieces.push_back({first, {frames.begin(), frames.end()}});
        mEnd = mPieces.back().end(mChannels);
    }

    const SoundInput mInput;
    std::optional<StereoMix> mMix;
    const int mChannels;
    const std::uint64_t mBegin;
    std::optional<CaptureStream::Moment> mMoment; // the last one
    std::int64_t mShift = 0;                      // the position of the queue's first frame
    std::deque<Piece> mPieces;                    // in order, apart where something is missing
    std::int64_t mEnd = 0;                        // of the last piece that there ever was
    double mNext = 0;                             // of a device that is mixed in: what is to be heard next
    std::vector<float> mPopped, mScratch;
};

SoundTimeline::SoundTimeline(std::vector<SoundInput> inputs, std::uint64_t begin) : mBegin(begin) {
    const bool isAlone = inputs.size() == 1 && inputs.front().sourceChannels.size() == 1;
    for (SoundInput &input : inputs) {
        const int channels = input.queue->channels();
        mTracks.push_back(
            std::make_unique<Track>(std::move(input), isAlone && (channels <= 2 || channels == kMostChannels), begin));
    }
    mChannels = mTracks.front()->channels();
}

SoundTimeline::~SoundTimeline() = default;

int SoundTimeline::rate() const { return mTracks.front()->rate(); }

std::int64_t SoundTimeline::placeOf(std::uint64_t hostTime) const {
    return std::llround(mTracks.front()->placeOf(hostTime));
}

std::chrono::nanoseconds SoundTimeline::timeOf(std::int64_t position) const {
    return std::chrono::nanoseconds(MediaTime{position, rate()}.in(1'000'000'000).value);
}

std::int64_t SoundTimeline::ready(std::uint64_t now) const {
    const Track &first = *mTracks.front();
    const double here = first.placeOf(now);
    auto ready = first.end();
    if (mTracks.size() > 1)
        ready = std::min(ready, static_cast<std::int64_t>(here - kOthersDelay * rate()));
    return std::max(ready, static_cast<std::int64_t>(here - kPatience * rate()));
}

std::span<const float> SoundTimeline::take(std::int64_t until, std::uint64_t now) {
    for (const auto &track : mTracks)
        track->look();
    Track &first = *mTracks.front();
    if (!mHasBegun && !first.isEmpty())
        mPosition = std::max(mPosition, first.first());
    const std::int64_t count =
        std::min({ready(now), until, mPosition + static_cast<std::int64_t>(kLongestBlock * rate())}) - mPosition;
    if (count <= 0)
        return {};
    mHasBegun = true;
    mBlock.resize(static_cast<std::size_t>(count * mChannels));
    first.copy(mPosition, mBlock);
    // When the first frame was heard, by what is known of now.
    const double ago = (first.placeOf(now) - static_cast<double>(mPosition)) / rate() * kNanoseconds;
    const auto heard = static_cast<std::uint64_t>(static_cast<double>(now - mBegin) - ago) + mBegin;
    for (std::size_t i = 1; i < mTracks.size(); ++i)
        mTracks[i]->mixInto(mBlock, heard, rate());
    mPosition += count;
    first.dropBefore(mPosition);
    return mBlock;
}

void SoundTimeline::skipTo(std::int64_t position) {
    for (const auto &track : mTracks)
        track->look();
    mPosition = std::max(mPosition, position);
    mTracks.front()->dropBefore(mPosition);
}

} // namespace cantorel::media
