#include "ui/AreaPicker.h"

#include "lang/Lang.h"
#include "ui/look/Look.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kLeast = 16, kStep = 10; // points
constexpr float kVeil = 0.5F;          // over what is not recorded

} // namespace

AreaPicker::AreaPicker(QScreen &screen, const QRect &frame, const QRect &area, std::function<void(const QRect &)> taken)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      mPicture(screen.grabWindow(0)),
      mFrame(frame),
      mTaken(std::move(taken)) {
    setObjectName(QStringLiteral("areaPicker"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAccessibleName(Lang::windowAreaHint());
    setCursor(Qt::CrossCursor);
    setGeometry(screen.geometry());
    const QRect own(QPoint(0, 0), size());
    const QRect begin(((area.topLeft() - frame.topLeft()) / scale()), area.size() / scale());
    setArea(area.isNull() || !own.intersects(begin)
                ? QRect(own.width() / 4, own.height() / 4, own.width() / 2, own.height() / 2)
                : begin);
    showFullScreen();
    activateWindow();
    setFocus();
}

double AreaPicker::scale() const { return double(std::max(mFrame.width(), 1)) / std::max(width(), 1); }

void AreaPicker::setArea(const QRect &area) {
    const QSize room = size(), size(std::clamp(area.width(), kLeast, std::max(kLeast, room.width())),
                                    std::clamp(area.height(), kLeast, std::max(kLeast, room.height())));
    mArea = QRect(QPoint(std::clamp(area.x(), 0, std::max(0, room.width() - size.width())),
                         std::clamp(area.y(), 0, std::max(0, room.height() - size.height()))),
                  size);
    update();
}

void AreaPicker::take() {
    const QRect area(mFrame.topLeft() + QPoint(qRound(mArea.x() * scale()), qRound(mArea.y() * scale())),
                     QSize(qRound(mArea.width() * scale()), qRound(mArea.height() * scale())));
    mTaken(area & mFrame);
    close();
}

void AreaPicker::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.drawPixmap(rect(), mPicture);
    QPainterPath veil;
    veil.addRect(rect());
    veil.addRect(mArea);
    QColor dark = Tokens::dark().ground;
    dark.setAlphaF(kVeil);
    painter.fillPath(veil, dark);
    painter.setPen(QPen(Tokens::dark().focus, measure::kFocus));
    painter.drawRect(mArea);
    const QString text = QStringLiteral("%1 \u00d7 %2\n%3")
                             .arg(qRound(mArea.width() * scale()))
                             .arg(qRound(mArea.height() * scale()))
                             .arg(Lang::windowAreaHint());
    painter.setFont(Look::font(*this, text_size::kBody));
    QRect place = painter.fontMetrics().boundingRect(rect().adjusted(measure::kMargin, 0, -measure::kMargin, 0),
                                                     Qt::AlignHCenter | Qt::TextWordWrap, text);
    place.adjust(-measure::kGap, -measure::kGap, measure::kGap, measure::kGap);
    place.moveCenter({width() / 2, mArea.center().y()});
    painter.setPen(Qt::NoPen);
    const QColor ground = Tokens::dark().surface;
    painter.setBrush(ground);
    painter.drawRoundedRect(place, measure::kButtonRadius, measure::kButtonRadius);
    painter.setPen(Tokens::dark().text);
    painter.drawText(place, Qt::AlignCenter | Qt::TextWordWrap, text);
}

void AreaPicker::mousePressEvent(QMouseEvent *event) {
    mPressed = event->position().toPoint();
    mMoved = mArea.contains(mPressed) ? mArea : QRect();
}

void AreaPicker::mouseMoveEvent(QMouseEvent *event) {
    if (!(event->buttons() & Qt::LeftButton))
        return;
    const QPoint now = event->position().toPoint();
    setArea(mMoved.isNull() ? QRect(mPressed, now).normalized() : mMoved.translated(now - mPressed));
}

// What was drawn is taken at once; what was moved waits for Enter or a double click.
void AreaPicker::mouseReleaseEvent(QMouseEvent *event) {
    const QPoint way = event->position().toPoint() - mPressed;
    if (mMoved.isNull() && way.manhattanLength() >= kLeast)
        take();
}

void AreaPicker::mouseDoubleClickEvent(QMouseEvent *) { take(); }

void AreaPicker::keyPressEvent(QKeyEvent *event) {
    const int step = event->modifiers() & Qt::ControlModifier ? 1 : kStep;
    const int along = event->key() == Qt::Key_Left ? -step : event->key() == Qt::Key_Right ? step : 0;
    const int down = event->key() == Qt::Key_Up ? -step : event->key() == Qt::Key_Down ? step : 0;
    if (event->key() == Qt::Key_Escape)
        close();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        take();
    else if (along == 0 && down == 0)
        QWidget::keyPressEvent(event);
    else if (event->modifiers() & Qt::ShiftModifier)
        setArea(mArea.adjusted(0, 0, along, down));
    else
        setArea(mArea.translated(along, down));
}

} // namespace cantorel::ui
