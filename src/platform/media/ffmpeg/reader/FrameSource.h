#pragma once

#include "platform/media/ffmpeg/reader/NoiseProbe.h"
#include "platform/media/ffmpeg/reader/SoundTrack.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace cantorel::media {

// The decoded frames of a track, what its coder has put in front included, from any of them on. One thread at a time.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    // The next ones, null at the end. Valid until the next call.
    virtual foundation::Result<const AVFrame *> next() = 0;
    // Where what next() gave begins.
    std::int64_t first() const { return mFirst; }
    // next() goes on with, or before, that frame.
    virtual void seek(std::int64_t frame) = 0;
    // See SampleReader. next() goes on only after a seek.
    virtual bool needsAllBefore() = 0;
    // What is read behind a seek is what it would be, had all before been read; that may be slow.
    virtual void setExact(bool /*isExact*/) {}

protected:
    std::int64_t mFirst = 0;
};

foundation::Result<std::unique_ptr<FrameSource>> openSource(const SoundTrack &track);

// By the table of packets: what is damaged is silent and keeps its length, so that all behind it keeps its place.
class TableSource : public FrameSource {
public:
    explicit TableSource(const SoundTrack &track) : mTrack(track) {}
    foundation::Result<void> open();

    foundation::Result<const AVFrame *> next() override;
    void seek(std::int64_t frame) override;
    bool needsAllBefore() override;
    void setExact(bool isExact) override;
    // How many frames the decoder made of the packet that next() gave.
    int decodedFrames() const { return mDecodedFrames; }

private:
    // Whether the decoder has met all before; if it has not, it is as good as long as it meets no noise.
    enum class Past { Met, Unmet };
    struct Checked {
        FrameHandle frame;
        std::int64_t first = 0;
    };

    foundation::Result<const AVFrame *> decodeNext();
    foundation::Result<const AVFrame *> nextChecked();
    void begin(std::size_t packet);
    foundation::Result<std::span<const std::uint8_t>> bytes(const PacketTable::Packet &packet);
    int decode(std::span<const std::uint8_t> bytes);
    const AVFrame *silence(int frames);

    const SoundTrack &mTrack;
    CodecContextHandle mDecoder;
    PacketHandle mPacket{av_packet_alloc()};
    FrameHandle mFrame{av_frame_alloc()};
    FrameHandle mSilence{av_frame_alloc()};
    std::vector<std::uint8_t> mWindow; // a part of the file
    std::int64_t mWindowBegin = 0;
    std::size_t mWindowBytes = 0;
    std::size_t mNext = 0;   // packet
    std::size_t mWanted = 0; // packet; those before it are only decoded
    int mDecodedFrames = 0;
    std::unique_ptr<NoiseProbe> mProbe;       // once it is asked for
    bool mIsExact = false, mHasNoise = false; // the latter once it is known
    Past mPast = Past::Met;
    std::deque<Checked> mChecked; // decoded ahead
};

// By libavformat, from the beginning.
class StreamSource : public FrameSource {
public:
    explicit StreamSource(const SoundTrack &track) : mTrack(track) {}
    foundation::Result<void> open();

    foundation::Result<const AVFrame *> next() override;
    void seek(std::int64_t frame) override;
    bool needsAllBefore() override { return true; }

private:
    const SoundTrack &mTrack;
    std::unique_ptr<Demuxer> mDemuxer; // none: to be opened
    CodecContextHandle mDecoder;
    PacketHandle mPacket{av_packet_alloc()};
    FrameHandle mFrame{av_frame_alloc()};
    int mStream = -1;
    std::int64_t mDecoded = 0; // frames
};

} // namespace cantorel::media
