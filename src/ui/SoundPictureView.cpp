#include "ui/SoundPictureView.h"

#include "recording/SoundHistory.h"
#include "ui/Icons.h"

#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr qreal kRadius = 6;
constexpr int kSeconds = 60;

} // namespace

SoundPictureView::SoundPictureView(const SoundHistory &history, QWidget *parent) : QWidget(parent), mHistory(history) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void SoundPictureView::wake() {
    if (isVisible() && !window()->isMinimized())
        update();
}

QSize SoundPictureView::sizeHint() const { return {480, 120}; }

QSize SoundPictureView::minimumSizeHint() const { return {200, 48}; }

void SoundPictureView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(rect(), kRadius, kRadius);

    const qreal middle = height() / 2.0, pitch = qreal(width()) / SoundHistory::kColumns;
    QColor line = palette().color(QPalette::Mid);
    painter.setPen(QPen(line, 1));
    painter.drawLine(QPointF(kRadius, middle), QPointF(width() - kRadius, middle));
    line.setAlpha(90);
    painter.setPen(QPen(line, 1));
    for (int second = 10; second < kSeconds; second += 10) {
        const qreal x = width() * (1 - qreal(second) / kSeconds);
        painter.drawLine(QPointF(x, height() - 6), QPointF(x, height()));
    }

    QColor sound = palette().color(QPalette::Highlight), idle = palette().color(QPalette::Mid);
    const qreal first = width() - pitch * qreal(mHistory.size());
    painter.setPen(Qt::NoPen);
    for (std::size_t i = 0; i < mHistory.size(); ++i) {
        const auto &column = mHistory.column(i);
        const qreal half = qMax<qreal>(0.5, qreal(column.level) * (middle - 4));
        painter.setBrush(column.isRecorded ? sound : idle);
        painter.drawRect(QRectF(first + pitch * qreal(i), middle - half, qMax<qreal>(pitch, 1), 2 * half));
    }
    for (std::size_t i = 0; i < mHistory.size(); ++i) {
        const auto mark = mHistory.column(i).mark;
        if (mark == SoundHistory::Mark::None)
            continue;
        const QColor colour = mark == SoundHistory::Mark::Split || mark == SoundHistory::Mark::Start
                                  ? palette().color(QPalette::WindowText)
                                  : recordingColour();
        const qreal x = first + pitch * qreal(i);
        painter.setPen(QPen(colour, 1.5, mark == SoundHistory::Mark::Split ? Qt::DashLine : Qt::SolidLine));
        painter.drawLine(QPointF(x, 4), QPointF(x, height() - 4));
    }
}

} // namespace cantorel::ui
