#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/movie/Picture.h"

namespace cantorel::media {

// Takes pictures from a source, on the source's own thread.
class PictureSink {
public:
    virtual ~PictureSink() = default;

    // Not necessarily at an even pace: a source whose picture stands still need not repeat it. The size may differ from
    // that of the picture before.
    virtual void takePicture(const Picture &picture) = 0;
    // There will be no more: unplugged, or ended by the desktop. Not called for a stop().
    virtual void pictureSourceEnded(const foundation::Failure &why) = 0;
};

// A display, a part of one, or a camera. Made, started, stopped and destroyed on one thread.
class PictureSource {
public:
    // Stops it.
    virtual ~PictureSource() = default;

    // The size of the pictures to come, as far as it is known before them.
    virtual PictureSize size() const = 0;

    // Begins with the picture of the moment, then at most so many a second. The sink outlives the source or its stop().
    virtual foundation::Result<void> start(PictureSink &sink, int picturesPerSecond) = 0;
    // The sink is not called any more when this returns.
    virtual void stop() = 0;
};

} // namespace cantorel::media
