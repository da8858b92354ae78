#pragma once

#include "platform/media/Codecs.h"
#include "platform/media/ffmpeg/FFmpegHandles.h"
#include "platform/media/ffmpeg/Resampler.h"

#include <optional>

namespace cantorel::media {

// AAC-LC by libavcodec. Owned by a writer; one thread at a time.
class LibavAacEncoder : public AacEncoder {
public:
    static foundation::Result<std::unique_ptr<AacEncoder>> make(int inputRate, const AacSettings &settings);

    const AacFormat &format() const override { return mFormat; }
    foundation::Result<void> encode(std::span<const float> interleaved, PacketRun &packets) override;
    foundation::Result<void> flush(PacketRun &packets) override;
    std::int64_t frames() const override { return mFrames; }

private:
    LibavAacEncoder(CodecContextHandle context, std::optional<Resampler> resampler, AacFormat format);
    foundation::Result<void> take(std::span<const float> interleaved, PacketRun &packets);
    foundation::Result<void> sendFrame(PacketRun &packets);
    foundation::Result<void> receive(PacketRun &packets);

    CodecContextHandle mContext;
    std::optional<Resampler> mResampler;
    const AacFormat mFormat;
    FrameHandle mFrame; // being filled
    PacketHandle mPacket;
    int mFilled = 0;          // frames in mFrame
    std::int64_t mFrames = 0; // handed to the coder or waiting in mFrame
};

} // namespace cantorel::media
