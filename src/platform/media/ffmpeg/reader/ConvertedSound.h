#pragma once

#include "platform/media/ffmpeg/reader/FrameSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace cantorel::media {

// What is heard of a track, in another sample format, rate and number of channels. One thread at a time.
class ConvertedSound {
public:
    // The track is that of who owns this.
    static foundation::Result<std::unique_ptr<ConvertedSound>> open(const SoundTrack &track, AVSampleFormat sample,
                                                                    SoundFormat format);

    SoundFormat format() const { return mFormat; }
    std::int64_t frames() const { return mFrames; }
    // Interleaved. As many as were asked for but at the end.
    foundation::Result<std::size_t> read(void *interleaved, std::size_t frames);
    void seek(std::int64_t frame);
    // See FrameSource.
    void setExact(bool isExact) { mSource->setExact(isExact); }
    // See SampleReader. Reading goes on only after a seek.
    bool needsAllBefore() {
        mOutput = -1;
        return mSource->needsAllBefore();
    }

private:
    ConvertedSound(const SoundTrack &track, AVSampleFormat sample, SoundFormat format);
    bool resamples() const { return mFormat.rate != mTrack.format.rate; }
    foundation::Result<void> makeConverter();
    void begin(std::int64_t inputFrame, std::int64_t outputFrame, std::int64_t wanted);
    // Converts the next frames of the track to there, or to what is ready where they don't fit; answers how many are
    // there.
    foundation::Result<std::size_t> convertMore(std::uint8_t *room, std::size_t frames);
    int convert(std::uint8_t *to, int room, const std::uint8_t **from, int frames);

    const SoundTrack &mTrack;
    const AVSampleFormat mSample;
    const SoundFormat mFormat;
    const std::size_t mFrameBytes; // of what is given
    std::int64_t mFrames = 0;
    std::unique_ptr<FrameSource> mSource;
    ResamplerHandle mConverter;
    bool mIsFresh = false; // the converter has met no sound

    const AVFrame *mFrame = nullptr; // the source's, of which a part is still to be converted
    std::int64_t mInput = 0;         // the next frame of what is heard to be converted
    bool mIsFlushed = false;
    std::int64_t mSkipped = 0; // frames that come out and are not wanted
    std::int64_t mOutput = 0;  // the next frame to be given; -1: none but after a seek
    std::vector<std::uint8_t> mReady;
    std::size_t mTaken = 0; // bytes of it
};

} // namespace cantorel::media
