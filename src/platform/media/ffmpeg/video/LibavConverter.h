#pragma once

#include "platform/media/ffmpeg/video/LibavReader.h"
#include "platform/media/movie/VideoCodecs.h"

namespace cantorel::media {

// By libswscale. Owned by a preview; one thread at a time.
class LibavConverter : public PictureConverter {
public:
    foundation::Result<void> convert(const Picture &picture, PictureSize size, std::uint8_t *bgrx, int stride) override;

private:
    LibavReader mReader;
    ScalerContext mScaler; // kept by the library as long as it fits
};

} // namespace cantorel::media
