#include "editor/views/ZQAudioWave.h"

#include "editor/painting/WavePainting.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace cantorel::ui {

namespace {

constexpr float kLine = 0.55F; // how much of its colour an edge shows

} // namespace

ZQAudioWave::ZQAudioWave(const WaveGeometry &geometry, AudioCutRequestDelegate &delegate, QWidget *parent)
    : QWidget(parent), mGeometry(geometry), mDelegate(delegate) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ZQAudioWave::waveDidChange() {
    mIsPainted = false;
    update();
}

void ZQAudioWave::cutsDidChange() {
    std::vector<Shown> now;
    bool isThere = false;
    for (const auto *entity : mDelegate.AudioCutRequestDelegate_GetExistCutEntitysRect()) {
        now.push_back({entity->leftPoint().x(), entity->rightPoint().x(), entity->isFocusOn()});
        isThere |= entity == mEntity;
    }
    if (!isThere) { // It was deleted while it was dragged.
        mHit = CutHit::None;
        mEntity = nullptr;
    }
    const std::vector<Shown> before = std::exchange(mShown, now);
    const auto include = [this](double one, double other) {
        if (one != other)
            paint(std::min(one, other), std::max(one, other));
    };
    if (before.size() == now.size()) {
        for (std::size_t i = 0; i < now.size(); ++i)
            if (before[i].isFocusOn != now[i].isFocusOn || now[i].left >= before[i].right
                || now[i].right <= before[i].left)
                include(std::min(before[i].left, now[i].left), std::max(before[i].right, now[i].right));
            else {
                include(before[i].left, now[i].left);
                include(before[i].right, now[i].right);
            }
    } else
        for (const auto &list : {before, now})
            for (const Shown &each : list)
                include(each.left, each.right);
}

void ZQAudioWave::paint(double from, double to) {
    if (!mIsPainted)
        return; // all of it is about to be
    const int left = static_cast<int>(std::floor(from)) - 1, right = static_cast<int>(std::ceil(to)) + 1;
    const double scale = mPicture.devicePixelRatio();
    paintColumns(static_cast<int>(std::floor(left * scale)), static_cast<int>(std::ceil(right * scale)));
    const int handle = static_cast<int>(std::ceil(ZQAudioTools::dragHandleSize().width())); // beside its edge
    update(left - handle, 0, right - left + 2 * handle, height());
}

// The edges are part of the picture: over a large one that was just copied, upright lines take as long as the copy.
void ZQAudioWave::paintColumns(int first, int end) {
    const auto entities = mDelegate.AudioCutRequestDelegate_GetExistCutEntitysRect();
    paintWave(mPicture, mGeometry, entities, first, end);
    QPainter painter(&mPicture);
    const double scale = mPicture.devicePixelRatio();
    painter.setClipRect(QRectF(first / scale, 0, (end - first) / scale, height()));
    for (const ZQAudioCutEntity *entity : entities) {
        QColor edge = colourOf(entity->rectColor());
        edge.setAlphaF(kLine);
        for (const double x : {entity->leftPoint().x(), entity->rightPoint().x() - 1})
            painter.fillRect(QRectF(qRound(x), 0, 1, height()), edge);
    }
}

void ZQAudioWave::paintEvent(QPaintEvent *event) {
    const QSize pixels = (QSizeF(size()) * devicePixelRatioF()).toSize();
    if (mPicture.size() != pixels || mPicture.devicePixelRatio() != devicePixelRatioF()) {
        mPicture = QImage(pixels, QImage::Format_RGB32);
        mPicture.setDevicePixelRatio(devicePixelRatioF());
        mIsPainted = false;
    }
    if (!std::exchange(mIsPainted, true))
        paintColumns(0, pixels.width());
    QPainter painter(this);
    painter.setClipRegion(event->region());
    painter.drawImage(0, 0, mPicture);
}

void ZQAudioWave::resizeEvent(QResizeEvent *event) {
    mIsPainted = false;
    mDelegate.waveSizeDidChange(size());
    QWidget::resizeEvent(event);
}

CutHit ZQAudioWave::press(QPointF point) {
    mHit = mDelegate.AudioCutRequestDelegate_MouseDown(point, mEntity);
    if (isDragging())
        mBeside = point.x() - (mHit == CutHit::LeftEdge ? mEntity->leftPoint() : mEntity->rightPoint()).x();
    Q_EMIT cursorWanted(isDragging() ? Qt::SizeHorCursor : mHit == CutHit::Body ? Qt::CrossCursor : Qt::ArrowCursor);
    return mHit;
}

// The edge goes as far as the pointer, and it is the edge that is held back.
void ZQAudioWave::drag(QPointF point) {
    if (isDragging())
        mDelegate.dragEdge(*mEntity, mHit, point.x() - mBeside);
}

void ZQAudioWave::release() {
    if (mHit == CutHit::Body)
        Q_EMIT cursorWanted(Qt::OpenHandCursor);
    const bool wasDragging = isDragging();
    mHit = CutHit::None;
    mEntity = nullptr;
    if (wasDragging)
        mDelegate.dragDidEnd();
}

void ZQAudioWave::hover(QPointF point) {
    const CutHit hit = mDelegate.AudioCutRequestDelegate_MouseMove(point);
    Q_EMIT cursorWanted(hit == CutHit::LeftEdge || hit == CutHit::RightEdge ? Qt::SizeHorCursor : Qt::CrossCursor);
}

} // namespace cantorel::ui
