#include "ui/CameraPreview.h"

#include "capture/VideoPreviewLayer.h"
#include "lang/Lang.h"
#include "ui/look/Look.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

namespace cantorel::ui {

namespace {

constexpr QSize kSize(160, 90);

} // namespace

CameraPreview::CameraPreview(MovieSession &movies, QWidget *parent) : QWidget(parent), mMovies(movies) {
    setObjectName(QStringLiteral("cameraPreview"));
    setFixedSize(Look::scaled(*this, kSize.width()), Look::scaled(*this, kSize.height()));
    connect(&mMovies, &MovieSession::wishChanged, this, [this] { showWish(); });
    showWish();
}

CameraPreview::~CameraPreview() {
    if (mLayer)
        mLayer->pictureDidChange = {};
}

void CameraPreview::showWish() {
    setAccessibleName(Lang::windowCameraPreview());
    setVisible(mMovies.wish().picture == MovieWish::Picture::Camera);
    if (isVisible())
        look();
}

void CameraPreview::look() {
    mLayer = mMovies.preview(QRectF(QPointF(), QSizeF(size()) * devicePixelRatioF()));
    if (mLayer)
        mLayer->pictureDidChange = [this] { update(); };
    update();
}

void CameraPreview::showEvent(QShowEvent *event) {
    look();
    QWidget::showEvent(event);
}

void CameraPreview::hideEvent(QHideEvent *event) {
    if (mLayer)
        mLayer->pictureDidChange = {};
    mLayer.reset();
    QWidget::hideEvent(event);
}

void CameraPreview::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QPainterPath shape;
    shape.addRoundedRect(rect(), measure::kButtonRadius, measure::kButtonRadius);
    painter.setClipPath(shape);
    painter.fillRect(rect(), Tokens::dark().ground);
    const auto picture = mLayer ? mLayer->picture() : nullptr;
    if (picture) {
        const QImage image(picture->pixels.data(), picture->size.width, picture->size.height, picture->stride,
                           QImage::Format_RGB32);
        // What lies beside the colours is not set.
        painter.drawImage(QRectF(rect()), image.convertToFormat(QImage::Format_RGB888),
                          VideoPreviewLayer::aspectFill(image.size(), size()));
    } else if (mLayer && mLayer->failure()) {
        painter.setPen(Tokens::dark().text);
        painter.setFont(Look::font(*this, text_size::kLabel));
        painter.drawText(rect().adjusted(measure::kGap, 0, -measure::kGap, 0), Qt::AlignCenter | Qt::TextWordWrap,
                         Lang::sentence(mLayer->failure()->sentence));
    }
}

} // namespace cantorel::ui
