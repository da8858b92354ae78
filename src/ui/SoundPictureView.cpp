#include "ui/SoundPictureView.h"

#include "recording/control/SoundHistory.h"
#include "ui/look/Look.h"

#include <QPaintEvent>
#include <QPainter>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr std::size_t kColumnsOfBar = 3; // 0.3 s
constexpr int kMostBars = 200;           // a minute
constexpr qreal kBar = 2;
constexpr int kLeastPitch = 4;

} // namespace

SoundPictureView::SoundPictureView(const SoundHistory &history, QWidget *parent) : QWidget(parent), mHistory(history) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

int SoundPictureView::pitch() const { return qMax(kLeastPitch, (width() + kMostBars - 1) / kMostBars); }

// Bars fill the width from the left; then the oldest go.
std::size_t SoundPictureView::firstBar() const {
    const std::size_t bars = (mHistory.total() + kColumnsOfBar - 1) / kColumnsOfBar;
    const auto room = static_cast<std::size_t>(qMax(1, width() / pitch()));
    return bars > room ? bars - room : 0;
}

void SoundPictureView::setRunning(bool isRunning) {
    if (std::exchange(mIsRunning, isRunning) != isRunning)
        update();
}

void SoundPictureView::wake() {
    if (!isVisible() || window()->isMinimized())
        return;
    const std::size_t first = firstBar();
    if (first != mShownFirst || mHistory.total() < mShownTotal) {
        update();
    } else { // The last bar has grown, or the next one begins.
        const auto last = static_cast<int>((mHistory.total() + kColumnsOfBar - 1) / kColumnsOfBar - first);
        update((last - 2) * pitch(), 0, 3 * pitch(), height());
    }
    mShownFirst = first;
    mShownTotal = mHistory.total();
}

// It takes what is left, and asks for no more than it needs: where cards stand above it, it gives way.
QSize SoundPictureView::sizeHint() const { return {480, minimumSizeHint().height()}; }

QSize SoundPictureView::minimumSizeHint() const { return {200, 48}; }

void SoundPictureView::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    const Tokens &tokens = Look::tokens();
    const qreal middle = height() / 2.0, pitch = this->pitch();
    const std::size_t first = firstBar(), gone = mHistory.total() - mHistory.size();
    const auto firstPainted = first + static_cast<std::size_t>(qMax(0.0, (event->rect().left() - pitch) / pitch));
    const std::size_t end = first + static_cast<std::size_t>((event->rect().right() + pitch) / pitch) + 1;
    for (std::size_t bar = firstPainted; bar < end; ++bar) {
        const qreal x = qreal(bar - first) * pitch;
        if (x >= width())
            break;
        float level = 0;
        bool isRecorded = false;
        auto mark = SoundHistory::Mark::None;
        for (std::size_t i = qMax(gone, bar * kColumnsOfBar); i < qMin(mHistory.total(), (bar + 1) * kColumnsOfBar);
             ++i) {
            const SoundHistory::Column &column = mHistory.column(i - gone);
            level = qMax(level, column.level);
            isRecorded |= column.isRecorded;
            mark = qMax(mark, column.mark);
        }
        const qreal half = qreal(level) * level * (middle - 2);
        if (half >= 1)
            painter.fillRect(QRectF(x, middle - half, kBar, 2 * half),
                             isRecorded && mIsRunning ? tokens.wave : tokens.waveRest);
        else // nothing there, or nothing heard
            painter.fillRect(QRectF(x, middle - 1, kBar, kBar), tokens.line);
        if (mark == SoundHistory::Mark::Split || (mark == SoundHistory::Mark::Start && bar > 0)) {
            painter.setPen(QPen(tokens.text2, 1, Qt::DashLine));
            painter.drawLine(QPointF(x, 2), QPointF(x, height() - 2));
        } else if (mark > SoundHistory::Mark::Split) {
            painter.fillRect(QRectF(x, 2, kBar, height() - 4), tokens.red);
        }
    }
}

} // namespace cantorel::ui
