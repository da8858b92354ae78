#include "ui/RecordButton.h"

#include "ui/Icons.h"

#include <QPainter>

#include <cstdio>
#include <utility>

namespace cantorel::ui {

namespace {

constexpr qreal kRing = 4; // width of the ring around the disc

} // namespace

RecordButton::RecordButton(QWidget *parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void RecordButton::setRecording(bool recording) {
    mIsRecording = recording;
    update();
}

QSize RecordButton::sizeHint() const {
    const int side = qMax(72, fontMetrics().height() * 4);
    return {side, side};
}

QRectF RecordButton::disc() const {
    const qreal side = qMin(width(), height()) - 2 * kRing;
    return {(width() - side) / 2, (height() - side) / 2, side, side};
}

bool RecordButton::hitButton(const QPoint &position) const {
    const QPointF away = QPointF(position) - disc().center();
    return QPointF::dotProduct(away, away) <= disc().width() * disc().width() / 4;
}

void RecordButton::paintEvent(QPaintEvent *) {
    if (std::exchange(mTellsFrame, false))
        std::fputs("first frame\n", stderr);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF disc = this->disc();
    QColor red = recordingColour();
    if (!isEnabled())
        red = palette().color(QPalette::Disabled, QPalette::ButtonText);
    else if (isDown())
        red = red.darker(125);
    else if (underMouse())
        red = red.lighter(110);

    QColor ring = palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid);
    painter.setPen(QPen(ring, hasFocus() ? kRing : kRing / 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(disc.adjusted(-kRing / 2, -kRing / 2, kRing / 2, kRing / 2));
    painter.setPen(Qt::NoPen);
    painter.setBrush(red);
    const qreal gap = disc.width() * 0.07;
    painter.drawEllipse(disc.adjusted(gap, gap, -gap, -gap));
    painter.setBrush(Qt::white);
    const qreal sign = disc.width() * 0.26;
    if (mIsRecording)
        painter.drawRoundedRect(QRectF(disc.center() - QPointF(sign, sign) / 2, QSizeF(sign, sign)), sign / 8,
                                sign / 8);
    else
        painter.drawEllipse(disc.center(), sign / 2, sign / 2);
}

} // namespace cantorel::ui
