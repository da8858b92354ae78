#include "platform/media/ffmpeg/reader/ConvertedSound.h"

#include "platform/media/asset/AssetFailures.h"
#include "platform/media/asset/MediaTime.h"

#include <algorithm>
#include <cstring>
#include <numeric>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr int kSilentFrames = 4096;
constexpr std::int64_t kFilterFrames = 64; // twice as long as the filter at most, at the lower of both rates

} // namespace

ConvertedSound::ConvertedSound(const SoundTrack &track, AVSampleFormat sample, SoundFormat format)
    : mTrack(track),
      mSample(sample),
      mFormat(format),
      mFrameBytes(static_cast<std::size_t>(av_get_bytes_per_sample(sample) * format.channels)),
      mFrames(MediaTime{track.frames, track.format.rate}.in(format.rate).value) {}

Result<std::unique_ptr<ConvertedSound>> ConvertedSound::open(const SoundTrack &track, AVSampleFormat sample,
                                                             SoundFormat format) {
    if (!track.isPlayable || !format.isSound())
        return failures::notSound(track.file->path(), QStringLiteral("no sound in it"));
    std::unique_ptr<ConvertedSound> sound(new ConvertedSound(track, sample, format)); // Its constructor is private.
    auto source = openSource(track);
    if (!source)
        return source.failure();
    sound->mSource = std::move(source).value();
    if (const auto made = sound->makeConverter(); !made)
        return made.failure();
    sound->begin(0, 0, 0);
    return sound;
}

Result<void> ConvertedSound::makeConverter() {
    AVChannelLayout from = {}, to = {};
    if (mTrack.parameters->ch_layout.nb_channels == mTrack.format.channels
        && mTrack.parameters->ch_layout.order == AV_CHANNEL_ORDER_NATIVE)
        av_channel_layout_copy(&from, &mTrack.parameters->ch_layout);
    else
        av_channel_layout_default(&from, mTrack.format.channels);
    if (mFormat.channels == mTrack.format.channels)
        av_channel_layout_copy(&to, &from); // Nothing changes places.
    else
        av_channel_layout_default(&to, mFormat.channels);
    SwrContext *context = nullptr;
    int error = swr_alloc_set_opts2(&context, &to, mSample, mFormat.rate, &from, mTrack.sampleFormat,
                                    mTrack.format.rate, 0, nullptr);
    mConverter.reset(context);
    if (error >= 0 && mTrack.format.channels == 1 && mFormat.channels > 1) {
        const std::vector<double> same(static_cast<std::size_t>(mFormat.channels), 1.0);
        error = swr_set_matrix(context, same.data(), 1);
    } else if (error >= 0) {
        error = av_opt_set_double(context, "rematrix_maxval", 1, 0); // Together they stay within full scale.
    }
    if (error >= 0)
        error = swr_init(context);
    if (error < 0)
        return failures::notSound(mTrack.file->path(), ffmpegError(error));
    mIsFresh = true;
    return {};
}

void ConvertedSound::begin(std::int64_t inputFrame, std::int64_t outputFrame, std::int64_t wanted) {
    mReady.clear();
    mTaken = 0;
    mFrame = nullptr;
    mIsFlushed = false;
    mInput = inputFrame;
    mOutput = wanted;
    mSkipped = wanted - outputFrame;
    mSource->seek(mTrack.start + inputFrame);
}

void ConvertedSound::seek(std::int64_t frame) {
    const std::int64_t wanted = std::clamp<std::int64_t>(frame, 0, mFrames);
    if (wanted == mOutput)
        return;
    if (!resamples()) {
        begin(wanted, wanted, wanted);
        return;
    }
    // The resampler is where it was at the beginning wherever a whole number of frames meets one; from there on it
    // comes to the same once its filter is full.
    const std::int64_t common = std::gcd(mFormat.rate, mTrack.format.rate);
    const std::int64_t in = mTrack.format.rate / common;
    const auto out = std::max<std::int64_t>(1, mFormat.rate / common);
    const std::int64_t filter = kFilterFrames * std::max<std::int64_t>(1, (in + out - 1) / out);
    const std::int64_t block = std::max<std::int64_t>(wanted / out - (filter + in - 1) / in, 0);
    begin(block * in, block * out, wanted);
    if (!mIsFresh && !makeConverter().ok())
        mFrame = nullptr; // It was made before from the same; there is no memory left, and silence follows.
}

int ConvertedSound::convert(std::uint8_t *to, int room, const std::uint8_t **from, int frames) {
    mIsFresh = false;
    return std::max(swr_convert(mConverter.get(), &to, room, from, frames), 0);
}

Result<std::size_t> ConvertedSound::convertMore(std::uint8_t *room, std::size_t frames) {
    while (!mFrame && mInput < mTrack.frames) {
        const auto next = mSource->next();
        if (!next)
            return next.failure();
        mFrame = next.value();
        if (!mFrame)
            break;
        if (mSource->first() + mFrame->nb_samples <= mTrack.start + mInput)
            mFrame = nullptr;
    }
    const std::uint8_t *planes[SoundFormat::kMostChannels] = {};
    int count = static_cast<int>(std::min<std::int64_t>(mTrack.frames - mInput, kSilentFrames));
    std::vector<std::uint8_t> silence;
    if (count > 0) {
        const bool isPlanar = av_sample_fmt_is_planar(mTrack.sampleFormat);
        const int channels = mTrack.format.channels;
        const int width = av_get_bytes_per_sample(mTrack.sampleFormat) * (isPlanar ? 1 : channels);
        if (mFrame) {
            const std::int64_t skipped = std::max<std::int64_t>(mTrack.start + mInput - mSource->first(), 0);
            count = static_cast<int>(std::min<std::int64_t>(mFrame->nb_samples - skipped, mTrack.frames - mInput));
            for (int i = 0; i < (isPlanar ? channels : 1); ++i)
                planes[i] = mFrame->extended_data[i] + skipped * width;
            mFrame = nullptr;
        } else { // It ended before it was told to.
            const bool isUnsigned = mTrack.sampleFormat == AV_SAMPLE_FMT_U8 || mTrack.sampleFormat == AV_SAMPLE_FMT_U8P;
            silence.assign(static_cast<std::size_t>(count) * static_cast<std::size_t>(width), isUnsigned ? 0x80 : 0);
            std::fill_n(planes, isPlanar ? channels : 1, silence.data());
        }
        mInput += count;
    } else {
        mIsFlushed = true;
        if (!resamples())
            return 0;
    }
    const std::uint8_t **from = count > 0 ? planes : nullptr;
    if (!resamples() && mSkipped == 0 && static_cast<std::size_t>(count) <= frames)
        return static_cast<std::size_t>(convert(room, count, from, count));
    const int most = std::max(swr_get_out_samples(mConverter.get(), count), count);
    const std::size_t before = mReady.size();
    mReady.resize(before + static_cast<std::size_t>(most) * mFrameBytes);
    const int made = convert(mReady.data() + before, most, from, count);
    mReady.resize(before + static_cast<std::size_t>(made) * mFrameBytes);
    return 0;
}

Result<std::size_t> ConvertedSound::read(void *interleaved, std::size_t frames) {
    if (mOutput < 0)
        return std::size_t(0);
    auto *to = static_cast<std::uint8_t *>(interleaved);
    std::size_t left = static_cast<std::size_t>(
        std::min<std::int64_t>(mFrames - mOutput, static_cast<std::int64_t>(std::min<std::size_t>(frames, INT32_MAX))));
    const std::size_t asked = left;
    while (left > 0) {
        std::size_t ready = (mReady.size() - mTaken) / mFrameBytes;
        if (ready > 0) {
            const auto dropped =
                static_cast<std::size_t>(std::min<std::int64_t>(mSkipped, static_cast<std::int64_t>(ready)));
            mSkipped -= static_cast<std::int64_t>(dropped);
            mTaken += dropped * mFrameBytes;
            ready = std::min(ready - dropped, left);
            std::memcpy(to, mReady.data() + mTaken, ready * mFrameBytes);
            mTaken += ready * mFrameBytes;
        } else if (!mIsFlushed) {
            mReady.clear();
            mTaken = 0;
            const auto made = convertMore(to, left);
            if (!made)
                return made.failure();
            ready = made.value();
        } else { // A resampler may round its end off.
            ready = left;
            std::memset(to, 0, ready * mFrameBytes);
        }
        to += ready * mFrameBytes;
        left -= ready;
        mOutput += static_cast<std::int64_t>(ready);
    }
    return asked;
}

} // namespace cantorel::media
