#pragma once

#include "platform/foundation/Guarded.h"
#include "platform/foundation/Result.h"
#include "platform/media/movie/PictureSource.h"
#include "platform/media/movie/VideoCodecs.h"

#include <QObject>
#include <QRectF>
#include <QSizeF>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

// A picture of a preview: four bytes a pixel, which are blue, green, red and nothing.
struct PreviewPicture {
    media::PictureSize size;
    int stride = 0; // bytes from one line to the next
    std::vector<std::uint8_t> pixels;
};

// What a camera sees now, for a window to draw. The camera runs while the layer lives. Main thread.
class VideoPreviewLayer : public QObject, private media::PictureSink {
public:
    // Where it is drawn, in pixels.
    explicit VideoPreviewLayer(const QRectF &frame) { setFrame(frame); }
    ~VideoPreviewLayer() override;

    QRectF frame() const { return mFrame; }
    void setFrame(const QRectF &frame);

    // There is a newer picture, or none any more with a failure().
    std::function<void()> pictureDidChange;
    // The newest, no larger than what fills the frame; null before the first and after a failure.
    std::shared_ptr<const PreviewPicture> picture() const;
    std::optional<foundation::Failure> failure() const;

    // The part of a picture, in its pixels, that fills the frame without being distorted: the middle of it.
    static QRectF aspectFill(const QSizeF &picture, const QSizeF &frame);

    // What it shows from now on, or why it shows nothing. By its recorder.
    void show(foundation::Result<std::unique_ptr<media::PictureSource>> source, int picturesPerSecond);

private:
    struct State {
        std::shared_ptr<const PreviewPicture> picture;
        std::optional<foundation::Failure> failure;
        bool isTold = true;
        QSizeF size; // of the frame
    };

    void takePicture(const media::Picture &picture) override;
    void pictureSourceEnded(const foundation::Failure &why) override;
    void tellSoon();

    QRectF mFrame;
    foundation::Guarded<State> mState;
    std::unique_ptr<media::PictureConverter> mConverter; // used by the source's thread
    std::unique_ptr<media::PictureSource> mSource;
};

} // namespace cantorel
