#include "editor/views/WaveOverview.h"

#include "editor/painting/WavePainting.h"
#include "ui/look/Look.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

namespace cantorel::ui {

namespace {

constexpr int kHeight = 32, kMilliseconds = 1000, kLeastFrame = 6;
constexpr float kVeil = 0.55F; // over what is not looked at

int milliseconds(double seconds) { return static_cast<int>(std::lround(seconds * kMilliseconds)); }

} // namespace

WaveOverview::WaveOverview(const WaveGeometry &geometry, const CutList &cuts, QWidget *parent)
    : QAbstractSlider(parent), mGeometry(geometry), mCuts(cuts) {
    setOrientation(Qt::Horizontal);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::OpenHandCursor);
    connect(this, &QAbstractSlider::valueChanged, this,
            [this](int value) { Q_EMIT scrollWanted(value / double(kMilliseconds)); });
    hide();
}

QSize WaveOverview::sizeHint() const { return {2 * kHeight, Look::scaled(*this, kHeight)}; }

// The levels are those of the wave, which may be gone with the next sound; none are held while this is not seen.
void WaveOverview::showView() {
    const bool isSeen = mGeometry.zoom() > 1;
    const QByteArray levels = isSeen ? mGeometry.levels() : QByteArray();
    if (levels.constData() != mWhole.levels().constData() || levels.size() != mWhole.levels().size()) {
        mWhole.addAudioDuration(mGeometry.audioDuration());
        mWhole.addAudioWaveData(levels);
        mPicture = {};
    }
    if (isSeen) {
        const QSignalBlocker untold(this); // What is shown is not what a person does.
        setPageStep(milliseconds(mGeometry.viewSeconds()));
        setSingleStep(std::max(1, pageStep() / 10));
        setRange(0, milliseconds(mGeometry.audioDuration() - mGeometry.viewSeconds()));
        setValue(milliseconds(mGeometry.viewStart()));
        update();
    }
    setVisible(isSeen);
}

double WaveOverview::secondsAt(double x) const {
    return std::min<double>(mWhole.transformTimeWithPoint({x, 0}), mWhole.audioDuration());
}

QRectF WaveOverview::frame() const {
    const double left = mWhole.getPointWithTime(mGeometry.viewStart()).x();
    const double right = mWhole.getPointWithTime(mGeometry.viewStart() + mGeometry.viewSeconds()).x();
    const double slack = std::max(0.0, kLeastFrame - (right - left)) / 2;
    return QRectF(left - slack, 0, right - left + 2 * slack, height()).adjusted(0.5, 0.5, -0.5, -0.5);
}

void WaveOverview::resizeEvent(QResizeEvent *event) {
    // The wave leaves room below it for a scale, which is not shown here.
    mWhole.setSize({double(width()), height() + WaveGeometry::kScaleHeight});
    mPicture = {};
    QAbstractSlider::resizeEvent(event);
}

void WaveOverview::paintEvent(QPaintEvent *) {
    const QSize pixels = (QSizeF(size()) * devicePixelRatioF()).toSize();
    if (mPicture.size() != pixels || mPicture.devicePixelRatio() != devicePixelRatioF()) {
        mPicture = QImage(pixels, QImage::Format_RGB32);
        mPicture.setDevicePixelRatio(devicePixelRatioF());
        paintWave(mPicture, mWhole, {}, 0, pixels.width());
    }
    const Tokens &tokens = Look::tokens();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(rect(), measure::kFieldRadius, measure::kFieldRadius);
    painter.setClipPath(shape);
    painter.drawImage(0, 0, mPicture);
    for (const auto &entity : mCuts.all()) {
        const double left = mWhole.getPointWithTime(entity->startTime()).x();
        QColor colour = colourOf(entity->rectColor());
        colour.setAlphaF(kVeil);
        painter.fillRect(
            QRectF(left, 0, std::max(1.0, mWhole.getPointWithTime(entity->endTime()).x() - left), height()), colour);
    }
    QPainterPath veil;
    veil.addRect(rect());
    veil.addRect(frame());
    QColor dark = Tokens::dark().ground;
    dark.setAlphaF(kVeil);
    painter.fillPath(veil, dark);
    painter.setPen(QPen(hasFocus() ? tokens.focus : Tokens::dark().text2, hasFocus() ? measure::kFocus : 1));
    painter.drawRoundedRect(frame(), 2, 2);
}

// Within the frame it is taken where it is; elsewhere it comes there.
void WaveOverview::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    const double seconds = secondsAt(event->position().x());
    const bool isWithin = frame().contains(QPointF(event->position().x(), height() / 2.0));
    mGrip = isWithin ? seconds - mGeometry.viewStart() : mGeometry.viewSeconds() / 2;
    if (!isWithin)
        Q_EMIT scrollWanted(seconds - mGrip);
}

void WaveOverview::mouseMoveEvent(QMouseEvent *event) {
    if (event->buttons() & Qt::LeftButton)
        Q_EMIT scrollWanted(secondsAt(event->position().x()) - mGrip);
}

} // namespace cantorel::ui
