#include "editor/views/ZQAudioTimeView.h"

#include "ui/look/Look.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

namespace cantorel::ui {

namespace {

constexpr QSizeF kSize(144, 24);
constexpr double kLine = 19; // the height of a line of text for which the places below are meant
constexpr QRectF kParts[] = {{8, 2, 20, 17}, {31, 2, 20, 17}, {54, 2, 20, 17}, {81, 2, 28, 17}};
constexpr QRectF kStepper(123, 1, 13, 22);

} // namespace

ZQAudioTimeView::ZQAudioTimeView(QWidget *parent) : QWidget(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

double ZQAudioTimeView::scale() const { return std::max(1.0, fontMetrics().height() / kLine); }

QSize ZQAudioTimeView::sizeHint() const { return (kSize * scale()).toSize(); }

QRectF ZQAudioTimeView::rectOf(TimeField::Part part) const {
    const QRectF rect = part == TimeField::None ? QRectF() : kParts[part];
    return {rect.topLeft() * scale(), rect.size() * scale()};
}

QRectF ZQAudioTimeView::strppetRect() const { return {kStepper.topLeft() * scale(), kStepper.size() * scale()}; }

void ZQAudioTimeView::setTime(double seconds) {
    if (mField.time() == seconds)
        return;
    mField.setTime(seconds);
    update();
    QAccessibleValueChangeEvent changed(this, TimeField::wholeText(seconds));
    QAccessible::updateAccessibility(&changed);
}

void ZQAudioTimeView::setTime(double seconds, double MinValue, double MaxValue) {
    mField.setMinTime(MinValue);
    mField.setMaxTime(MaxValue);
    setTime(seconds);
}

void ZQAudioTimeView::change(double seconds) {
    if (seconds == time())
        return;
    setTime(seconds);
    tell();
}

void ZQAudioTimeView::tell() {
    update();
    if (delegate)
        delegate->AudioTime_UpdateTime(*this, mField.time());
}

void ZQAudioTimeView::controlTimeValueStrpper(int direction) {
    controlTextDidEndEditing_();
    if (mField.step(direction))
        tell();
    update();
}

void ZQAudioTimeView::focusPart(TimeField::Part part) {
    controlTextDidEndEditing_();
    mField.focus(part);
    update();
}

void ZQAudioTimeView::clearTextField() { focusPart(TimeField::None); }

// What was typed takes the place of the part.
void ZQAudioTimeView::controlTextDidEndEditing_() {
    const QString typed = std::exchange(mTyped, {});
    const TimeField::Part part = mField.focusOnIndex();
    if (!typed.isEmpty() && part != TimeField::None
        && mField.type(part, std::min(typed.toInt(), TimeField::largest(part))))
        tell();
    update();
}

bool ZQAudioTimeView::keyDown_(int key) {
    if (!isEnabled() || mField.focusOnIndex() == TimeField::None || (key != Qt::Key_Up && key != Qt::Key_Down))
        return false;
    controlTextDidEndEditing_();
    if (mField.press(key == Qt::Key_Up ? 1 : -1))
        tell();
    return true;
}

// Keys of the page wait while a part is edited.
bool ZQAudioTimeView::event(QEvent *event) {
    if (event->type() == QEvent::ShortcutOverride && mField.focusOnIndex() != TimeField::None) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const bool isEdit = key->key() == Qt::Key_Escape
                                ? !mTyped.isEmpty()
                                : !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
        if (isEdit)
            event->accept();
    }
    return QWidget::event(event);
}

void ZQAudioTimeView::keyPressEvent(QKeyEvent *event) {
    const TimeField::Part part = mField.focusOnIndex();
    const bool isPlain = !(event->modifiers() & ~Qt::KeypadModifier);
    if (!isPlain || part == TimeField::None)
        return QWidget::keyPressEvent(event);
    if (keyDown_(event->key()))
        return;
    const QString text = event->text();
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        return focusPart(static_cast<TimeField::Part>(
            std::clamp(part + (event->key() == Qt::Key_Left ? -1 : 1), 0, TimeField::PartCount - 1)));
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return controlTextDidEndEditing_();
    case Qt::Key_Escape:
        if (mTyped.isEmpty())
            return QWidget::keyPressEvent(event);
        mTyped.clear();
        return update();
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        mTyped.chop(1);
        return update();
    default:
        break;
    }
    if (text.size() != 1 || !text[0].isDigit())
        return QWidget::keyPressEvent(event);
    if (mTyped.size() < TimeField::digits(part))
        mTyped += QString::number(text[0].digitValue());
    update();
}

void ZQAudioTimeView::mousePressEvent(QMouseEvent *event) {
    const QPointF at = event->position();
    if (strppetRect().contains(at))
        return controlTimeValueStrpper(at.y() < strppetRect().center().y() ? 1 : -1);
    TimeField::Part part = TimeField::None;
    for (int i = 0; i < TimeField::PartCount; ++i)
        if (rectOf(static_cast<TimeField::Part>(i)).contains(at))
            part = static_cast<TimeField::Part>(i);
    focusPart(part);
}

void ZQAudioTimeView::focusInEvent(QFocusEvent *event) {
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason
        || event->reason() == Qt::ShortcutFocusReason)
        focusPart(event->reason() == Qt::BacktabFocusReason ? TimeField::Millisecond : TimeField::Hour);
    QWidget::focusInEvent(event);
}

void ZQAudioTimeView::focusOutEvent(QFocusEvent *event) {
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        clearTextField();
    QWidget::focusOutEvent(event);
}

void ZQAudioTimeView::drawTime_(QPainter &painter) const {
    const Tokens &tokens = Look::tokens();
    const QFontMetricsF metrics(font());
    const double cell = Look::digitWidth(font());
    const auto centred = [&](const QString &text, const QRectF &place) {
        double x = place.center().x() - cell * static_cast<double>(text.size()) / 2;
        for (const QChar digit : text) {
            painter.drawText(QRectF(x, place.top(), cell, place.height()), Qt::AlignCenter, QString(digit));
            x += cell;
        }
    };
    for (int i = 0; i < TimeField::PartCount; ++i) {
        const auto part = static_cast<TimeField::Part>(i);
        const QRectF place = rectOf(part).translated(0, 1.5 * scale());
        if (part == mField.focusOnIndex()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(tokens.soft);
            painter.drawRoundedRect(rectOf(part).adjusted(0, 0, 0, 3 * scale()), 3, 3);
        }
        painter.setPen(isEnabled() ? tokens.text : tokens.text2);
        centred(part == mField.focusOnIndex() && !mTyped.isEmpty() ? mTyped : mField.text(part), place);
        if (i + 1 < TimeField::PartCount) {
            const QRectF next = rectOf(static_cast<TimeField::Part>(i + 1)).translated(0, 1.5 * scale());
            painter.drawText(QRectF(place.topRight(), next.bottomLeft()), Qt::AlignCenter,
                             i == TimeField::Second ? QStringLiteral(".") : QStringLiteral(":"));
        }
    }
}

void ZQAudioTimeView::drawStepper(QPainter &painter) const {
    const QRectF place = strppetRect();
    const Tokens &tokens = Look::tokens();
    const double s = scale();
    painter.fillRect(QRectF(place.left() - 4 * s, 1, 1, height() - 2), tokens.line);
    painter.setPen(QPen(isEnabled() ? tokens.text2 : tokens.line, 1.5 * s, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const int direction : {1, -1}) {
        const QPointF tip(place.center().x(), place.center().y() - direction * 7 * s);
        QPainterPath arrow(tip + QPointF(-3, 3 * direction) * s);
        arrow.lineTo(tip);
        arrow.lineTo(tip + QPointF(3, 3 * direction) * s);
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(arrow);
    }
}

void ZQAudioTimeView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Tokens &tokens = Look::tokens();
    const bool isEdited = hasFocus() && isEnabled();
    const double pen = isEdited ? measure::kFocus : 1;
    painter.setPen(QPen(isEdited ? tokens.focus : isEnabled() ? tokens.outline : tokens.line, pen));
    painter.setBrush(tokens.surface);
    painter.drawRoundedRect(QRectF(rect()).adjusted(pen / 2, pen / 2, -pen / 2, -pen / 2), measure::kFieldRadius,
                            measure::kFieldRadius);
    drawTime_(painter);
    drawStepper(painter);
}

} // namespace cantorel::ui
