#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/FragmentedFile.h"
#include "platform/media/movie/Picture.h"

#include <QString>

#include <chrono>
#include <memory>

namespace cantorel::media {

// How pictures are coded.
struct VideoSettings {
    PictureSize size;           // of the movie, even
    int picturesPerSecond = 30; // at most
    int bitRate = 8'000'000;    // bits a second, on average
    QString coder;              // "libx264" or "h264_vaapi"; empty: libx264
    bool isFromCamera = false;  // cameras tell colours in another way than displays
};

// The size that a movie gets of one that was asked for: even, for the coder halves the colours.
inline constexpr PictureSize evenSize(PictureSize size) { return {size.width & ~1, size.height & ~1}; }

// Whether H.264 has a level for a movie of that size, and players like it.
bool isMovieSize(PictureSize size);

// A picture as it goes to the coder. Any thread may hold one.
class FittedPicture {
public:
    virtual ~FittedPicture() = default;

    virtual PictureSize size() const = 0;
};

// Fits pictures of any size and layout into a movie: all of it is seen, with black beside it where the shapes differ; a
// single line or column too many is left out. One thread at a time.
class PictureFitter {
public:
    virtual ~PictureFitter() = default;

    // Fails for a picture that cannot be read, such as a damaged JPEG; the next one may be well.
    virtual foundation::Result<std::shared_ptr<const FittedPicture>> fit(const Picture &picture) = 0;
};

// Turns pictures of any size and layout into BGRx of the size that is wanted. One thread at a time.
class PictureConverter {
public:
    virtual ~PictureConverter() = default;

    // How many bytes from one line to the next there have to be: wide instructions write beyond the last pixel.
    static constexpr int strideFor(int width) { return (width + 15) / 16 * 64; }
    // bgrx: room for all lines. Fails for a picture that cannot be read.
    virtual foundation::Result<void> convert(const Picture &picture, PictureSize size, std::uint8_t *bgrx,
                                             int stride) = 0;
};

// Codes the pictures of one movie. One thread at a time.
class VideoEncoder {
public:
    virtual ~VideoEncoder() = default;

    virtual const AvcFormat &format() const = 0;
    // The coder's name, which is another one where the one that was asked for does not start.
    virtual QString coder() const = 0;

    // Adds the coded picture, with no length yet, to the run; one at each call. Times grow.
    virtual foundation::Result<void> encode(const FittedPicture &picture, std::chrono::nanoseconds time,
                                            PictureRun &run) = 0;
};

// Makes them. One implementation, in a shared object that is loaded when it is first needed.
class VideoCodecs {
public:
    virtual ~VideoCodecs() = default;

    virtual foundation::Result<std::unique_ptr<PictureFitter>> makeFitter(const VideoSettings &settings) const = 0;
    virtual foundation::Result<std::unique_ptr<PictureConverter>> makeConverter() const = 0;
    // Fails for a size that H.264 has no level for.
    virtual foundation::Result<std::unique_ptr<VideoEncoder>> makeEncoder(const VideoSettings &settings) const = 0;
};

// The one function that the shared object exports, by this name and type.
inline constexpr const char *kVideoCodecsEntryPoint = "cantorel_media_video_codecs";
using VideoCodecsEntryPoint = const VideoCodecs *(*)();

// The codecs, loaded at the first call; see loadCodecs().
foundation::Result<const VideoCodecs *> loadVideoCodecs();

} // namespace cantorel::media
