#pragma once

#include "platform/media/ffmpeg/video/LibavReader.h"
#include "platform/media/ffmpeg/video/VideoHandles.h"
#include "platform/media/movie/VideoCodecs.h"

#include <memory>

namespace cantorel::media {

// A picture in three planes, of the movie's size.
struct LibavPicture : FittedPicture {
    FrameHandle frame;

    PictureSize size() const override { return {frame->width, frame->height}; }
};

// Fits by libswscale. Owned by a capture; one thread at a time, and the pictures may
// outlive it.
class LibavFitter : public PictureFitter {
public:
    explicit LibavFitter(const VideoSettings &settings);

    foundation::Result<std::shared_ptr<const FittedPicture>> fit(const Picture &picture) override;

private:
    // Where it goes.
    struct Place {
        int x = 0, y = 0;
        PictureSize size;
    };

    Place placeOf(PictureSize size) const;
    FrameHandle blank();

    const PictureSize mSize;
    const bool mIsFromCamera;
    VideoPool mPool; // of the planes
    LibavReader mReader;
    ScalerContext mScaler;
    LibavSource mScaled; // what the scaler was made for
};

} // namespace cantorel::media
