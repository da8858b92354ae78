#pragma once

#include "platform/media/ffmpeg/video/VideoHandles.h"
#include "platform/media/movie/VideoCodecs.h"

#include <memory>

namespace cantorel::media {

// A picture in three planes, of the movie's size.
struct LibavPicture : FittedPicture {
    VideoFrame frame;

    PictureSize size() const override { return {frame->width, frame->height}; }
};

// Fits by libswscale, and reads JPEG by libavcodec. Owned by a capture; one thread at a time, and the pictures may
// outlive it.
class LibavFitter : public PictureFitter {
public:
    explicit LibavFitter(const VideoSettings &settings);

    foundation::Result<std::shared_ptr<const FittedPicture>> fit(const Picture &picture) override;

private:
    // What a picture is, as the libraries say it.
    struct Source {
        AVPixelFormat format = AV_PIX_FMT_NONE;
        PictureSize size;
        const std::uint8_t *planes[4] = {};
        int strides[4] = {};
        bool isFullRange = false;
    };
    // Where it goes.
    struct Place {
        int x = 0, y = 0;
        PictureSize size;
    };

    foundation::Result<Source> sourceOf(const Picture &picture);
    foundation::Result<Source> decoded(const Picture &picture);
    Place placeOf(PictureSize size) const;
    VideoFrame blank();

    const PictureSize mSize;
    const bool mIsFromCamera;
    VideoPool mPool; // of the planes
    VideoContext mJpeg;
    VideoFrame mJpegFrame;
    VideoPacket mJpegPacket;
    ScalerContext mScaler;
    Source mScaled; // what the scaler was made for
};

} // namespace cantorel::media
