#include "ui/MeterView.h"

#include "recording/control/LevelDisplay.h"
#include "ui/Icons.h"

#include <QPainter>

#include <chrono>

namespace cantorel::ui {

namespace {

constexpr std::chrono::milliseconds kFrame(33);
constexpr int kWarmStep = 15, kHotStep = 19; // from these on the steps change colour

} // namespace

MeterView::MeterView(LevelDisplay &level, QWidget *parent) : QWidget(parent), mLevel(level) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&mTimer, &QTimer::timeout, this, [this] { step(); });
}

void MeterView::wake() {
    if (isVisible() && !window()->isMinimized() && !mTimer.isActive())
        mTimer.start(kFrame);
}

void MeterView::step() {
    mLevel.advance(std::chrono::duration<float>(kFrame).count());
    update();
    if (mLevel.isAtRest() && mLevel.average() <= 0)
        mTimer.stop();
}

void MeterView::hideEvent(QHideEvent *) { mTimer.stop(); }

QSize MeterView::sizeHint() const { return {LevelDisplay::kSteps * 10, qMax(12, fontMetrics().height() * 3 / 4)}; }

void MeterView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int lit = mLevel.litSteps(), peak = mLevel.peakStep();
    const qreal pitch = qreal(width()) / LevelDisplay::kSteps, gap = qMin<qreal>(3, pitch / 4);
    const QColor quiet = palette().color(QPalette::Mid);
    painter.setPen(Qt::NoPen);
    for (int step = 1; step <= LevelDisplay::kSteps; ++step) {
        QColor colour = step >= kHotStep    ? recordingColour()
                        : step >= kWarmStep ? QColor(0xE0, 0xA0, 0x20)
                                            : QColor(0x2F, 0xA8, 0x6E);
        if (step > lit && step != peak)
            colour = quiet;
        painter.setBrush(colour);
        painter.setOpacity(step > lit && step != peak ? 0.45 : 1);
        painter.drawRoundedRect(QRectF((step - 1) * pitch, 0, pitch - gap, height()), 2, 2);
    }
}

} // namespace cantorel::ui
