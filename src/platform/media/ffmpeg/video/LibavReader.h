#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/ffmpeg/video/VideoHandles.h"
#include "platform/media/movie/Picture.h"

#include <cstdint>

namespace cantorel::media {

// What a picture is, as the libraries say it. Its pixels belong to the picture, or to who has read it until the next.
struct LibavSource {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    PictureSize size;
    const std::uint8_t *planes[4] = {};
    int strides[4] = {};
    bool isFullRange = false;
};

// Reads pictures of any layout, JPEG by libavcodec. One thread at a time.
class LibavReader {
public:
    foundation::Result<LibavSource> read(const Picture &picture);

private:
    foundation::Result<LibavSource> decoded(const Picture &picture);

    CodecContextHandle mJpeg;
    FrameHandle mJpegFrame;
    PacketHandle mJpegPacket;
};

} // namespace cantorel::media
