#pragma once

#include "platform/media/ffmpeg/video/LibavFitter.h"
#include "platform/media/ffmpeg/video/VideoHandles.h"
#include "platform/media/movie/VideoCodecs.h"

#include <optional>

namespace cantorel::media {

// What a fitter makes of a picture, as a window draws it. Owned by a preview; one thread at a time.
class LibavConverter : public PictureConverter {
public:
    foundation::Result<void> convert(const Picture &picture, PictureSize size, std::uint8_t *bgrx) override;

private:
    PictureSize mSize;
    std::optional<LibavFitter> mFitter; // for that size
    ScalerContext mColours;             // the same
};

} // namespace cantorel::media
