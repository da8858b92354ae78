#include "ui/SoundPictureView.h"

#include "recording/control/SoundHistory.h"
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

    // One line for each point of the screen, as high as the loudest column that it stands for.
    painter.setRenderHint(QPainter::Antialiasing, false);
    const qreal first = width() - pitch * qreal(mHistory.size());
    for (int x = qMax(0, static_cast<int>(first)); x < width(); ++x) {
        const auto begin = static_cast<std::size_t>(qMax<qreal>(0, (x - first) / pitch));
        const auto end = qMin(mHistory.size(), qMax(begin + 1, static_cast<std::size_t>((x + 1 - first) / pitch)));
        float level = 0;
        bool isRecorded = false;
        for (std::size_t i = begin; i < end; ++i) {
            level = qMax(level, mHistory.column(i).level);
            isRecorded |= mHistory.column(i).isRecorded;
        }
        const qreal half = qreal(level) * (middle - 4);
        painter.setPen(palette().color(isRecorded ? QPalette::Highlight : QPalette::Mid));
        if (half >= 0.5)
            painter.drawLine(QLineF(x, middle - half, x, middle + half));
    }
    painter.setRenderHint(QPainter::Antialiasing);
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
