#include "editor/views/ZQAudioPlayingPointView.h"

#include "editor/painting/WavePainting.h"
#include "ui/look/Look.h"

#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kWidth = 2;
constexpr double kNotch = 120, kNotchZoom = 1.25, kNotchPoints = 60, kDragShare = 4;

} // namespace

ZQAudioPlayingPointView::ZQAudioPlayingPointView(ZQAudioWave &wave, AudioPlayingPointDelegate &delegate,
                                                 QWidget *parent)
    : QWidget(parent), mWave(wave), mDelegate(delegate) {
    setMouseTracking(true);
    connect(&mWave, &ZQAudioWave::cursorWanted, this, [this](Qt::CursorShape shape) {
        if (cursor().shape() != shape)
            setCursor(shape);
    });
}

QRect ZQAudioPlayingPointView::place() const {
    return {qRound(mPoint.x()) - kWidth / 2, 0, mPoint.x() < 0 ? 0 : kWidth, height()};
}

void ZQAudioPlayingPointView::updatePlayingPoint(QPointF point) {
    const QRect before = place();
    mPoint = point;
    if (place() == before)
        return;
    update(before);
    update(place());
}

void ZQAudioPlayingPointView::drawPlayingPoint_(QPainter &painter) const {
    painter.fillRect(place(), colourOf(ZQAudioTools::playingPointColor()));
}

void ZQAudioPlayingPointView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    drawPlayingPoint_(painter);
    if (!hasFocus())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Look::tokens().focus, measure::kFocus));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), measure::kButtonRadius, measure::kButtonRadius);
}

void ZQAudioPlayingPointView::focusInEvent(QFocusEvent *event) {
    update();
    QWidget::focusInEvent(event);
}

void ZQAudioPlayingPointView::focusOutEvent(QFocusEvent *event) {
    update();
    QWidget::focusOutEvent(event);
}

void ZQAudioPlayingPointView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    mWave.press(event->position());
    if (!mWave.isDragging())
        mDelegate.AudioPlayingPointDelegate_updateThePlayingPoint(event->position());
}

void ZQAudioPlayingPointView::mouseMoveEvent(QMouseEvent *event) {
    Q_EMIT pointed(event->position());
    if (!(event->buttons() & Qt::LeftButton))
        return mWave.hover(event->position());
    if (mWave.isDragging()) {
        // Beyond the edge of the view it goes on there.
        const double beyond = event->position().x() - std::clamp(event->position().x(), 0.0, double(width()));
        if (beyond != 0)
            Q_EMIT scrollWanted(beyond / kDragShare);
        return mWave.drag(event->position());
    }
    double x = event->position().x();
    if (const ZQAudioCutEntity *focused = mDelegate.AudioPlayingPointDelegate_GetFocusOnCutEntity())
        x = std::clamp(x, focused->leftPoint().x(), focused->rightPoint().x());
    const double last = std::max(WaveGeometry::kInset, width() - WaveGeometry::kInset);
    mDelegate.AudioPlayingPointDelegate_updateThePlayingPoint({std::clamp(x, WaveGeometry::kInset, last), 0});
}

void ZQAudioPlayingPointView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        mWave.release();
}

void ZQAudioPlayingPointView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        Q_EMIT doubleClicked(event->position());
}

// With Ctrl it zooms; else it scrolls what is not all seen, which its owner knows.
void ZQAudioPlayingPointView::wheelEvent(QWheelEvent *event) {
    const QPoint angle = event->angleDelta(), pixels = event->pixelDelta();
    if (event->modifiers() & Qt::ControlModifier) {
        Q_EMIT zoomWanted(std::pow(kNotchZoom, angle.y() / kNotch), event->position().x());
        return event->accept();
    }
    if (mWave.isWholeSeen())
        return event->ignore();
    const auto along = [](QPoint delta) { return std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y(); };
    Q_EMIT scrollWanted(-(pixels.isNull() ? along(angle) / kNotch * kNotchPoints : along(pixels)));
    event->accept();
}

bool ZQAudioPlayingPointView::event(QEvent *event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto &gesture = static_cast<const QNativeGestureEvent &>(*event);
        if (gesture.gestureType() == Qt::ZoomNativeGesture) {
            Q_EMIT zoomWanted(1 + gesture.value(), gesture.position().x());
            return true;
        }
    }
    return QWidget::event(event);
}

void ZQAudioPlayingPointView::leaveEvent(QEvent *event) {
    Q_EMIT left();
    QWidget::leaveEvent(event);
}

} // namespace cantorel::ui
