#include "ui/RecordButton.h"

#include "ui/look/Look.h"

#include <QPainter>

#include <cstdio>
#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kSide = 64, kLowSide = 56;
// In parts of the side.
constexpr qreal kRing = 2.5 / 64, kDisc = 52.0 / 64, kSquare = 24.0 / 64, kSquareRadius = 4.0 / 64;
constexpr int kTurn = 160; // milliseconds from the disc to the square

} // namespace

RecordButton::RecordButton(QWidget *parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    mTurn.setEasingCurve(QEasingCurve::OutCubic);
    connect(&mTurn, &QVariantAnimation::valueChanged, this, [this] { update(); });
}

void RecordButton::setRecording(bool recording) {
    if (std::exchange(mIsRecording, recording) == recording)
        return;
    mTurn.stop();
    mTurn.setDuration(Look::hasMotion() && isVisible() ? kTurn : 0);
    mTurn.setStartValue(recording ? 0.0 : 1.0);
    mTurn.setEndValue(recording ? 1.0 : 0.0);
    mTurn.start();
}

void RecordButton::setLow(bool isLow) {
    if (std::exchange(mIsLow, isLow) != isLow)
        updateGeometry();
}

QSize RecordButton::sizeHint() const { return QSize(1, 1) * Look::scaled(*this, mIsLow ? kLowSide : kSide); }

QRectF RecordButton::ring() const {
    const qreal side = qMin(width(), height());
    return {(width() - side) / 2, (height() - side) / 2, side, side};
}

bool RecordButton::hitButton(const QPoint &position) const {
    const QPointF away = QPointF(position) - ring().center();
    return QPointF::dotProduct(away, away) <= ring().width() * ring().width() / 4;
}

void RecordButton::paintEvent(QPaintEvent *) {
    if (std::exchange(mTellsFrame, false))
        std::fputs("first frame\n", stderr);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Tokens &tokens = Look::tokens();
    const QRectF ring = this->ring();
    const qreal side = ring.width(), width = qMax(2.0, side * kRing);
    const bool showsFocus = hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange); // once a key was used
    painter.setPen(QPen(showsFocus ? tokens.focus : tokens.outline, showsFocus ? 1.5 * width : width));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(ring.adjusted(width, width, -width, -width));

    QColor red = tokens.redFill;
    if (!isEnabled())
        red = tokens.outline;
    else if (isDown())
        red = red.darker(120);
    else if (underMouse())
        red = red.lighter(108);
    // From the disc to the square.
    const qreal turned = mTurn.currentValue().isValid() ? mTurn.currentValue().toReal() : mIsRecording ? 1 : 0;
    const qreal sign = side * (kDisc + (kSquare - kDisc) * turned);
    const qreal radius = sign / 2 + (side * kSquareRadius - sign / 2) * turned;
    painter.setPen(Qt::NoPen);
    painter.setBrush(red);
    painter.drawRoundedRect(QRectF(ring.center() - QPointF(sign, sign) / 2, QSizeF(sign, sign)), radius, radius);
}

} // namespace cantorel::ui
