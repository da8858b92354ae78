#include "ui/MeterView.h"

#include "recording/control/LevelDisplay.h"
#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QPainter>

#include <chrono>

namespace cantorel::ui {

namespace {

constexpr std::chrono::milliseconds kFrame(33);
constexpr int kHeight = 8;
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
    if (mLevel.litSteps() != mShownLit || mLevel.peakStep() != mShownPeak)
        update();
    if (mLevel.isAtRest() && mLevel.average() <= 0)
        mTimer.stop();
}

void MeterView::hideEvent(QHideEvent *) { mTimer.stop(); }

QSize MeterView::sizeHint() const { return {LevelDisplay::kSteps * 10, kHeight}; }

void MeterView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int lit = mShownLit = mLevel.litSteps(), peak = mShownPeak = mLevel.peakStep();
    const qreal pitch = qreal(width()) / LevelDisplay::kSteps, gap = qMin<qreal>(3, pitch / 4);
    const Tokens &tokens = Look::tokens();
    painter.setPen(Qt::NoPen);
    for (int step = 1; step <= LevelDisplay::kSteps; ++step) {
        const bool isLit = step <= lit || step == peak;
        painter.setBrush(!isLit              ? tokens.track
                         : step >= kHotStep  ? tokens.redFill
                         : step >= kWarmStep ? tokens.amberFill
                                             : tokens.wave);
        painter.drawRoundedRect(QRectF((step - 1) * pitch, 0, pitch - gap, height()), 2, 2);
    }
}

} // namespace cantorel::ui
