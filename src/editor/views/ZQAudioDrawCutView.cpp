#include "editor/views/ZQAudioDrawCutView.h"

#include "editor/painting/WavePainting.h"
#include "ui/look/Look.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace cantorel::ui {

namespace {

constexpr int kNumberTop = 8, kNumberLeft = 8;

} // namespace

ZQAudioDrawCutView::ZQAudioDrawCutView(const WaveGeometry &geometry, const AudioCutRequestDelegate &delegate,
                                       QWidget *parent)
    : QWidget(parent), mGeometry(geometry), mDelegate(delegate) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ZQAudioDrawCutView::cutsDidChange() {
    const QFontMetrics number(Look::font(*this, text_size::kLabel, QFont::Bold));
    update(0, 0, width(), kNumberTop + number.height());
}

void ZQAudioDrawCutView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setFont(Look::font(*this, text_size::kLabel, QFont::Bold));
    const QSizeF handle = ZQAudioTools::dragHandleSize();
    const double top = mGeometry.waveCenterY() - handle.height() / 2;
    int number = 0;
    double beforeEnd = 0; // of the number before
    for (const ZQAudioCutEntity *entity : mDelegate.AudioCutRequestDelegate_GetExistCutEntitysRect()) {
        const double left = entity->leftPoint().x(), right = entity->rightPoint().x();
        const QColor colour = colourOf(entity->rectColor());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRoundedRect(QRectF({left - handle.width(), top}, handle), 1.5, 1.5);
        painter.drawRoundedRect(QRectF({right, top}, handle), 1.5, 1.5);
        painter.setRenderHint(QPainter::Antialiasing, false);
        const QString text = QString::number(++number);
        const double textLeft = std::max(left, 0.0) + kNumberLeft; // also of one that begins before the view
        if (textLeft < beforeEnd || right < 0)
            continue; // One number over another could not be read.
        painter.setPen(colour);
        const QRectF place(textLeft, kNumberTop, painter.fontMetrics().horizontalAdvance(text),
                           painter.fontMetrics().height());
        painter.drawText(place, Qt::AlignLeft | Qt::AlignTop, text);
        beforeEnd = place.right() + kNumberLeft;
    }
    QPainterPath corners;
    corners.addRect(rect());
    corners.addRoundedRect(rect(), measure::kButtonRadius, measure::kButtonRadius);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.fillPath(corners, Look::tokens().ground);
}

} // namespace cantorel::ui
