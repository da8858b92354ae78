#include "capture/VideoPreviewLayer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cantorel {

using foundation::Failure;

namespace {

// Not larger than the picture, but as large as what fills the frame.
media::PictureSize sizeFor(media::PictureSize picture, const QSizeF &frame) {
    const double scale = std::min(1.0, std::max(frame.width() / picture.width, frame.height() / picture.height));
    const auto scaled = [scale](int length) { return std::max(2, static_cast<int>(std::lround(length * scale))); };
    return {scaled(picture.width), scaled(picture.height)};
}

} // namespace

VideoPreviewLayer::~VideoPreviewLayer() { mSource.reset(); }

void VideoPreviewLayer::setFrame(const QRectF &frame) {
    mFrame = frame;
    mState.with([&](State &state) { state.size = frame.size(); });
}

std::shared_ptr<const PreviewPicture> VideoPreviewLayer::picture() const {
    return mState.with([](const State &state) { return state.picture; });
}

std::optional<Failure> VideoPreviewLayer::failure() const {
    return mState.with([](const State &state) { return state.failure; });
}

QRectF VideoPreviewLayer::aspectFill(const QSizeF &picture, const QSizeF &frame) {
    if (picture.isEmpty() || frame.isEmpty())
        return {QPointF(), picture};
    const QSizeF part = frame.scaled(picture, Qt::KeepAspectRatio);
    return {QPointF((picture.width() - part.width()) / 2, (picture.height() - part.height()) / 2), part};
}

void VideoPreviewLayer::show(foundation::Result<std::unique_ptr<media::PictureSource>> source, int picturesPerSecond) {
    mSource.reset();
    mState.with([](State &state) { state.picture.reset(), state.failure.reset(); });
    foundation::Result<void> started;
    if (source) {
        mSource = std::move(source).value();
        started = mSource->start(*this, picturesPerSecond);
    } else {
        started = source.failure();
    }
    if (!started)
        mState.with([&](State &state) { state.failure = started.failure(); });
    tellSoon();
}

void VideoPreviewLayer::takePicture(const media::Picture &picture) {
    if (!mConverter) {
        const auto codecs = media::loadVideoCodecs();
        auto made = codecs ? codecs.value()->makeConverter() : codecs.failure();
        if (!made)
            return pictureSourceEnded(made.failure());
        mConverter = std::move(made).value();
    }
    const auto [isSeen, frame] = mState.with([](const State &state) { return std::pair(state.isTold, state.size); });
    if (!isSeen || frame.isEmpty() || picture.size.width < 1 || picture.size.height < 1)
        return; // The one before still waits to be drawn.
    auto shown = std::make_shared<PreviewPicture>();
    shown->size = sizeFor(picture.size, frame);
    shown->stride = media::PictureConverter::strideFor(shown->size.width);
    shown->pixels.resize(static_cast<std::size_t>(shown->stride) * static_cast<std::size_t>(shown->size.height));
    if (!mConverter->convert(picture, shown->size, shown->pixels.data(), shown->stride))
        return; // A damaged picture; the next one may be well.
    mState.with([&](State &state) {
        state.picture = std::move(shown);
        state.isTold = false;
    });
    tellSoon();
}

void VideoPreviewLayer::pictureSourceEnded(const Failure &why) {
    mState.with([&](State &state) {
        state.picture.reset();
        state.failure = why;
    });
    tellSoon();
}

void VideoPreviewLayer::tellSoon() {
    QMetaObject::invokeMethod(
        this,
        [this] {
            mState.with([](State &state) { state.isTold = true; });
            if (pictureDidChange)
                pictureDidChange();
        },
        Qt::QueuedConnection);
}

} // namespace cantorel
