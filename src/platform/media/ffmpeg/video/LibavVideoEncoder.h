#pragma once

#include "platform/media/ffmpeg/video/VideoHandles.h"
#include "platform/media/movie/VideoCodecs.h"

#include <memory>

namespace cantorel::media {

// H.264 by libavcodec: one coded picture for each that is handed in, none of them waiting for a later one. Owned by a
// writer; one thread at a time.
class LibavVideoEncoder : public VideoEncoder {
public:
    static foundation::Result<std::unique_ptr<VideoEncoder>> make(const VideoSettings &settings);

    const AvcFormat &format() const override { return mFormat; }
    QString coder() const override { return QString::fromLatin1(mContext->codec->name); }
    foundation::Result<void> encode(const FittedPicture &picture, std::chrono::nanoseconds time,
                                    PictureRun &run) override;

private:
    explicit LibavVideoEncoder(CodecContextHandle context);
    static foundation::Result<CodecContextHandle> open(const VideoSettings &settings, const char *name);
    static int addFrames(AVCodecContext &context);

    CodecContextHandle mContext;
    AvcFormat mFormat;
    FrameHandle mFrame;
    PacketHandle mPacket;
    std::int64_t mLastKey = 0; // when the last picture stood that needs no other, in units of kPictureTimescale
};

} // namespace cantorel::media
