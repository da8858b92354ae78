#include "ui/look/LookStyle.h"

#include "ui/look/Look.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>
#include <QWidget>

namespace cantorel::ui {

namespace {

constexpr qreal kStroke = 1.75; // of what is drawn like an icon
constexpr int kSwitchWidth = 40, kSwitchHeight = 22, kRadio = 20, kBox = 18;
constexpr int kGroove = 4, kThumb = 16, kScrollBar = 12, kUnderline = 3;
constexpr int kLeastScrollHandle = 32;
constexpr int kFieldInset = 6;  // left and right of a field's text
constexpr int kButtonInset = 6; // left and right of a tool button's icon and text
constexpr int kMenuSign = 20;   // behind a button's text

// Paints antialiased, and leaves the painter as it was.
class Painting {
public:
    explicit Painting(QPainter &painter) : mPainter(painter) {
        mPainter.save();
        mPainter.setRenderHint(QPainter::Antialiasing);
    }
    ~Painting() { mPainter.restore(); }
    Painting(const Painting &) = delete;
    Painting &operator=(const Painting &) = delete;

    // An edge of an invalid colour is none.
    void box(const QRectF &place, qreal radius, const QColor &fill, const QColor &edge = {}, qreal width = 1) {
        const qreal inset = edge.isValid() ? width / 2 : 0;
        mPainter.setPen(edge.isValid() ? QPen(edge, width) : QPen(Qt::NoPen));
        mPainter.setBrush(fill.isValid() ? QBrush(fill) : QBrush(Qt::NoBrush));
        mPainter.drawRoundedRect(place.adjusted(inset, inset, -inset, -inset), radius, radius);
    }
    // An arrow head of half a width around a point; turns: quarters of a turn from one that points down.
    void chevron(const QPointF &centre, qreal half, int turns, const QColor &colour) {
        mPainter.save();
        mPainter.translate(centre);
        mPainter.rotate(90 * turns);
        mPainter.setPen(QPen(colour, kStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        mPainter.setBrush(Qt::NoBrush);
        mPainter.drawPolyline(QPolygonF({QPointF(-half, -half / 2), QPointF(0, half / 2), QPointF(half, -half / 2)}));
        mPainter.restore();
    }

private:
    QPainter &mPainter;
};

bool isEnabled(const QStyleOption &option) { return option.state & QStyle::State_Enabled; }
bool isHovered(const QStyleOption &option) { return isEnabled(option) && option.state & QStyle::State_MouseOver; }
bool isDown(const QStyleOption &option) { return option.state & QStyle::State_Sunken; }
// The ring is for those who work with the keys.
bool showsFocus(const QStyleOption &option) {
    return option.state & QStyle::State_HasFocus && option.state & QStyle::State_KeyboardFocusChange;
}
QColor ink(const QStyleOption &option) { return isEnabled(option) ? Look::tokens().text : Look::tokens().outline; }

// A switch whose words stand elsewhere in its row.
bool isSwitchAlone(const QStyleOption *option) {
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    return button && button->text.isEmpty() && button->icon.isNull();
}

bool hasTextBeside(const QStyleOptionToolButton &button) {
    return button.toolButtonStyle != Qt::ToolButtonIconOnly && !button.text.isEmpty();
}

bool isInOneLine(const QStyleOptionToolButton &button) {
    return button.toolButtonStyle == Qt::ToolButtonTextBesideIcon && !button.text.isEmpty();
}

// Such as the text of a spin box, which draws the whole field.
bool isPartOfField(const QWidget *widget) {
    return widget
           && (qobject_cast<const QAbstractSpinBox *>(widget->parentWidget())
               || qobject_cast<const QComboBox *>(widget->parentWidget()));
}

void focusRing(Painting &painting, const QRectF &place, qreal radius) {
    painting.box(place, radius, {}, Look::tokens().focus, measure::kFocus);
}

int grown(const QWidget *widget, int size) { return widget ? Look::scaled(*widget, size) : size; }
int tall(const QWidget *widget, int height) { return widget ? Look::tall(*widget, height) : height; }

// The default button of a window is filled, all others are quiet.
void drawButton(QPainter &painter, const QStyleOptionButton &option) {
    const Tokens &tokens = Look::tokens();
    Painting painting(painter);
    const bool isFilled = option.features & QStyleOptionButton::DefaultButton && isEnabled(option);
    const bool isFlat = option.features & QStyleOptionButton::Flat && !isFilled;
    QColor fill = isFilled ? tokens.accent : isHovered(option) ? tokens.hover : isFlat ? QColor() : tokens.surface;
    if (isDown(option) || option.state & QStyle::State_On)
        fill = isFilled ? tokens.accent.darker(115) : tokens.sunken;
    painting.box(option.rect, measure::kButtonRadius, fill, isFilled || isFlat ? QColor() : tokens.line);
    if (showsFocus(option))
        focusRing(painting, option.rect, measure::kButtonRadius);
}

void drawSwitch(QPainter &painter, const QStyleOption &option) {
    const Tokens &tokens = Look::tokens();
    Painting painting(painter);
    const QRectF place = option.rect;
    const bool isOn = option.state & QStyle::State_On;
    const QColor edge = isEnabled(option) ? tokens.outline : tokens.line;
    painting.box(place, place.height() / 2, isOn && isEnabled(option) ? tokens.accent : tokens.surface,
                 isOn && isEnabled(option) ? QColor() : edge, 1.5);
    const qreal gap = isOn ? 3 : 5, side = place.height() - 2 * gap;
    const QRectF thumb(isOn ? place.right() - gap - side : place.left() + gap, place.top() + gap, side, side);
    painting.box(thumb, side / 2, isOn && isEnabled(option) ? tokens.onAccent : edge);
    if (showsFocus(option))
        focusRing(painting, place.adjusted(-3, -3, 3, 3), place.height() / 2 + 3);
}

void drawMark(QPainter &painter, const QStyleOption &option, bool isRound) {
    const Tokens &tokens = Look::tokens();
    Painting painting(painter);
    const QRectF place = option.rect;
    const bool isOn = option.state & QStyle::State_On;
    painting.box(place, isRound ? place.height() / 2 : 4, isOn ? tokens.accent : tokens.surface,
                 isOn ? QColor() : tokens.outline, 1.5);
    if (isOn && isRound)
        painting.box(QRectF(0, 0, 8, 8).translated(place.center() - QPointF(4, 4)), 4, tokens.onAccent);
    else if (isOn) {
        painter.setPen(QPen(tokens.onAccent, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolyline(QPolygonF({place.topLeft() + QPointF(place.width() * 0.25, place.height() * 0.52),
                                        place.topLeft() + QPointF(place.width() * 0.43, place.height() * 0.7),
                                        place.topLeft() + QPointF(place.width() * 0.76, place.height() * 0.32)}));
    }
    if (showsFocus(option))
        focusRing(painting, place.adjusted(-3, -3, 3, 3), isRound ? place.height() : 6);
}

// Within a line of text: round, and quieter than a field.
void drawChip(QPainter &painter, const QStyleOption &option) {
    const Tokens &tokens = Look::tokens();
    Painting painting(painter);
    const QColor fill = isDown(option) ? tokens.sunken : isHovered(option) ? tokens.hover : tokens.surface;
    const qreal radius = option.rect.height() / 2.0;
    painting.box(option.rect, radius, fill, tokens.line);
    if (showsFocus(option))
        focusRing(painting, option.rect, radius);
}

void drawField(QPainter &painter, const QStyleOption &option) {
    const Tokens &tokens = Look::tokens();
    Painting painting(painter);
    const bool hasFocus = option.state & QStyle::State_HasFocus;
    painting.box(option.rect, measure::kFieldRadius, isEnabled(option) ? tokens.surface : tokens.ground,
                 hasFocus            ? tokens.focus
                 : isEnabled(option) ? tokens.outline
                                     : tokens.line,
                 hasFocus ? measure::kFocus : 1);
}

void drawSlider(QPainter &painter, const QStyleOptionSlider &option, const QStyle &style, const QWidget *widget) {
    const Tokens &tokens = Look::tokens();
    Painting painting(painter);
    const QRectF handle = style.subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, widget);
    const bool isUpright = option.orientation == Qt::Vertical;
    QRectF groove = option.rect;
    if (isUpright)
        groove.adjust((groove.width() - kGroove) / 2, 0, -(groove.width() - kGroove) / 2, 0);
    else
        groove.adjust(0, (groove.height() - kGroove) / 2, 0, -(groove.height() - kGroove) / 2);
    painting.box(groove, kGroove / 2.0, tokens.track);
    QRectF done = groove;
    if (isUpright)
        done.setTop(handle.center().y());
    else if (option.upsideDown)
        done.setLeft(handle.center().x());
    else
        done.setRight(handle.center().x());
    const QColor colour = isEnabled(option) ? tokens.accent : tokens.outline;
    painting.box(done, kGroove / 2.0, colour);
    painting.box(QRectF(0, 0, kThumb, kThumb).translated(handle.center() - QPointF(kThumb, kThumb) / 2), kThumb / 2.0,
                 colour);
    if (showsFocus(option))
        focusRing(painting, QRectF(0, 0, kThumb + 6, kThumb + 6).translated(handle.center() - QPointF(11, 11)), 11);
}

void drawScrollBar(QPainter &painter, const QStyleOptionSlider &option, const QStyle &style, const QWidget *widget) {
    const Tokens &tokens = Look::tokens();
    painter.fillRect(option.rect, tokens.ground);
    if (option.minimum == option.maximum)
        return;
    Painting painting(painter);
    const QRectF handle = style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, widget);
    const bool isGrasped = isHovered(option) || isDown(option);
    const qreal inset = isGrasped ? 2 : 3;
    const QRectF thumb = handle.adjusted(inset, inset, -inset, -inset);
    painting.box(thumb, qMin(thumb.width(), thumb.height()) / 2, isGrasped ? tokens.text2 : tokens.outline);
}

} // namespace

LookStyle::LookStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void LookStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                              const QWidget *widget) const {
    const Tokens &tokens = Look::tokens();
    switch (element) {
    case PE_PanelButtonCommand:
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option))
            return drawButton(*painter, *button);
        break;
    case PE_PanelButtonTool: {
        if (Look::isChip(widget))
            return drawChip(*painter, *option);
        Painting painting(*painter);
        const bool isRaised = option->state & State_AutoRaise;
        if (Look::isFilled(widget) && isEnabled(*option)) {
            painting.box(option->rect, measure::kButtonRadius,
                         isDown(*option) ? tokens.accent.darker(115) : tokens.accent);
            return;
        }
        const QColor fill = option->state & State_On ? tokens.soft
                            : isDown(*option)        ? tokens.sunken
                            : isHovered(*option)     ? tokens.hover
                            : isRaised               ? QColor()
                                                     : tokens.surface;
        painting.box(option->rect, measure::kButtonRadius, fill, isRaised ? QColor() : tokens.line);
        return;
    }
    case PE_FrameFocusRect:
        // Buttons and fields show theirs themselves.
        if (showsFocus(*option)) {
            Painting painting(*painter);
            focusRing(painting, option->rect, measure::kFieldRadius);
        }
        return;
    case PE_IndicatorCheckBox:
        return drawSwitch(*painter, *option);
    case PE_IndicatorRadioButton:
        return drawMark(*painter, *option, true);
    case PE_IndicatorItemViewItemCheck:
        return drawMark(*painter, *option, false);
    case PE_PanelLineEdit:
        if (const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option); frame && frame->lineWidth > 0)
            drawField(*painter, *option);
        else if (!isPartOfField(widget))
            painter->fillRect(option->rect, option->palette.base());
        return;
    case PE_FrameLineEdit:
        return; // part of its panel
    case PE_FrameTabWidget:
    case PE_FrameGroupBox: {
        Painting painting(*painter);
        painting.box(option->rect, measure::kCardRadius, tokens.surface, tokens.line);
        return;
    }
    case PE_IndicatorArrowDown:
    case PE_IndicatorArrowUp:
    case PE_IndicatorArrowLeft:
    case PE_IndicatorArrowRight: {
        Painting painting(*painter);
        const int turns = element == PE_IndicatorArrowDown   ? 0
                          : element == PE_IndicatorArrowLeft ? 1
                          : element == PE_IndicatorArrowUp   ? 2
                                                             : 3;
        painting.chevron(QRectF(option->rect).center(), 4, turns, ink(*option));
        return;
    }
    case PE_IndicatorHeaderArrow: {
        const auto *header = qstyleoption_cast<const QStyleOptionHeader *>(option);
        if (!header || header->sortIndicator == QStyleOptionHeader::None)
            return;
        Painting painting(*painter);
        // A view that shows the largest or newest first asks for an arrow up; it points to where the smaller ones are.
        painting.chevron(QRectF(option->rect).center(), 4, header->sortIndicator == QStyleOptionHeader::SortUp ? 0 : 2,
                         tokens.text);
        return;
    }
    case PE_FrameTabBarBase:
        painter->fillRect(option->rect.left(), option->rect.bottom(), option->rect.width(), 1, tokens.line);
        return;
    case PE_IndicatorToolBarSeparator:
    case PE_PanelItemViewRow: // Who draws the cells draws what is below them.
        return;
    default:
        break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void LookStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                            const QWidget *widget) const {
    const Tokens &tokens = Look::tokens();
    switch (element) {
    case CE_PushButtonBevel: // A flat one has its hover and its ring as well.
        return drawPrimitive(PE_PanelButtonCommand, option, painter, widget);
    case CE_PushButtonLabel:
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option)) {
            QStyleOptionButton label = *button;
            if (label.features & QStyleOptionButton::DefaultButton && isEnabled(label))
                label.palette.setColor(QPalette::ButtonText, tokens.onAccent);
            return QProxyStyle::drawControl(element, &label, painter, widget);
        }
        break;
    case CE_TabBarTabShape:
        if (option->state & State_Selected) {
            const QRect place = option->rect;
            painter->fillRect(place.left() + measure::kGap, place.bottom() - kUnderline + 1,
                              place.width() - 2 * measure::kGap, kUnderline, tokens.text);
        }
        if (showsFocus(*option)) {
            Painting painting(*painter);
            focusRing(painting, option->rect, measure::kFieldRadius);
        }
        return;
    case CE_TabBarTabLabel:
        if (const auto *tab = qstyleoption_cast<const QStyleOptionTab *>(option)) {
            QStyleOptionTab label = *tab;
            label.state &= ~State_HasFocus; // the ring goes around the whole tab
            const bool isChosen = option->state & State_Selected;
            label.palette.setColor(QPalette::WindowText, isChosen || isHovered(*option) ? tokens.text : tokens.text2);
            painter->save();
            QFont font = painter->font();
            font.setBold(isChosen);
            painter->setFont(font);
            QProxyStyle::drawControl(element, &label, painter, widget);
            painter->restore();
            return;
        }
        break;
    case CE_CheckBox: // which asks for the place of its sign past any proxy
        if (isSwitchAlone(option)) {
            QStyleOptionButton sign = *qstyleoption_cast<const QStyleOptionButton *>(option);
            sign.rect = subElementRect(SE_CheckBoxIndicator, option, widget);
            return drawPrimitive(PE_IndicatorCheckBox, &sign, painter, widget);
        }
        break;
    case CE_ToolButtonLabel:
        if (const auto *button = qstyleoption_cast<const QStyleOptionToolButton *>(option);
            button && isInOneLine(*button)) {
            QStyleOptionToolButton label = *button;
            label.rect.adjust(kButtonInset, 0, -kButtonInset, 0);
            if (Look::isFilled(widget) && isEnabled(*option))
                label.palette.setColor(QPalette::ButtonText, tokens.onAccent);
            return QProxyStyle::drawControl(element, &label, painter, widget);
        }
        break;
    case CE_ProgressBarGroove:
    case CE_ProgressBarContents: {
        QRectF groove = option->rect;
        groove.adjust(0, (groove.height() - kGroove) / 2, 0, -(groove.height() - kGroove) / 2);
        Painting painting(*painter);
        const auto *bar = qstyleoption_cast<const QStyleOptionProgressBar *>(option);
        if (element == CE_ProgressBarGroove || !bar)
            painting.box(groove, kGroove / 2.0, tokens.track);
        else if (bar->maximum > bar->minimum) {
            const qreal part = qreal(bar->progress - bar->minimum) / (bar->maximum - bar->minimum);
            groove.setWidth(groove.width() * qBound(0.0, part, 1.0));
            painting.box(groove, kGroove / 2.0, tokens.accent);
        }
        return;
    }
    case CE_HeaderSection:
    case CE_HeaderEmptyArea:
        painter->fillRect(option->rect, tokens.surface);
        painter->fillRect(option->rect.left(), option->rect.bottom(), option->rect.width(), 1, tokens.line);
        return;
    case CE_HeaderLabel:
        if (const auto *header = qstyleoption_cast<const QStyleOptionHeader *>(option)) {
            QStyleOptionHeader label = *header;
            const bool isSorted = label.sortIndicator != QStyleOptionHeader::None;
            label.palette.setColor(QPalette::ButtonText, isSorted ? tokens.text : tokens.text2);
            return QProxyStyle::drawControl(element, &label, painter, widget);
        }
        break;
    default:
        break;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void LookStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                   const QWidget *widget) const {
    switch (control) {
    case CC_ComboBox: {
        const auto *box = qstyleoption_cast<const QStyleOptionComboBox *>(option);
        if (!box || !box->frame)
            break;
        Look::isChip(widget) ? drawChip(*painter, *option) : drawField(*painter, *option);
        Painting painting(*painter);
        painting.chevron(QRectF(subControlRect(control, option, SC_ComboBoxArrow, widget)).center(), 4, 0,
                         ink(*option));
        return;
    }
    case CC_SpinBox: {
        drawField(*painter, *option);
        const auto *box = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
        if (!box || box->buttonSymbols == QAbstractSpinBox::NoButtons)
            return;
        Painting painting(*painter);
        const struct {
            SubControl part;
            QAbstractSpinBox::StepEnabledFlag step;
            int turns;
        } buttons[] = {{SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled, 2},
                       {SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled, 0}};
        for (const auto &button : buttons) {
            const QRectF place = subControlRect(control, option, button.part, widget);
            if (isHovered(*option) && option->activeSubControls == button.part)
                painter->fillRect(place.adjusted(0, 1, -1, -1), Look::tokens().hover);
            painting.chevron(place.center(), 3.5, button.turns,
                             box->stepEnabled & button.step ? ink(*option) : Look::tokens().line);
        }
        painter->fillRect(
            QRectF(subControlRect(control, option, SC_SpinBoxUp, widget).left(), 2, 1, option->rect.height() - 4),
            Look::tokens().line);
        return;
    }
    case CC_ToolButton:
        // A button with a menu says so beside its text; an icon alone needs no sign.
        if (const auto *button = qstyleoption_cast<const QStyleOptionToolButton *>(option);
            button && button->features & QStyleOptionToolButton::HasMenu) {
            QStyleOptionToolButton plain = *button;
            plain.features &= ~(QStyleOptionToolButton::HasMenu | QStyleOptionToolButton::Menu);
            if (hasTextBeside(*button))
                plain.rect.setWidth(plain.rect.width() - kMenuSign);
            QProxyStyle::drawComplexControl(control, &plain, painter, widget);
            if (hasTextBeside(*button) && isEnabled(*option)) {
                Painting painting(*painter);
                painting.chevron(QPointF(option->rect.right() - kMenuSign / 2.0, option->rect.center().y() + 1), 4, 0,
                                 ink(*option));
            }
            return;
        }
        break;
    case CC_Slider:
        if (const auto *slider = qstyleoption_cast<const QStyleOptionSlider *>(option))
            return drawSlider(*painter, *slider, *this, widget);
        break;
    case CC_ScrollBar:
        if (const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option))
            return drawScrollBar(*painter, *bar, *this, widget);
        break;
    default:
        break;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect LookStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                                const QWidget *widget) const {
    const QRect whole = option->rect;
    if (control == CC_ScrollBar) { // no buttons at the ends
        const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
        if (!bar)
            return QProxyStyle::subControlRect(control, option, part, widget);
        const bool isUpright = bar->orientation == Qt::Vertical;
        const int length = isUpright ? whole.height() : whole.width();
        const qint64 range = qint64(bar->maximum) - bar->minimum;
        const int handle =
            range <= 0
                ? length
                : qBound(qMin(kLeastScrollHandle, length),
                         static_cast<int>(length * qint64(bar->pageStep) / qMax<qint64>(1, range + bar->pageStep)),
                         length);
        const int start =
            sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, length - handle, bar->upsideDown);
        const auto along = [&](int from, int to) {
            return visualRect(option->direction, whole,
                              isUpright ? QRect(whole.left(), whole.top() + from, whole.width(), to - from)
                                        : QRect(whole.left() + from, whole.top(), to - from, whole.height()));
        };
        switch (part) {
        case SC_ScrollBarSlider:
            return along(start, start + handle);
        case SC_ScrollBarGroove:
            return whole;
        case SC_ScrollBarSubPage:
            return along(0, start);
        case SC_ScrollBarAddPage:
            return along(start + handle, length);
        default:
            return {};
        }
    }
    if (control == CC_SpinBox) {
        const int button = 22, inset = kFieldInset;
        const int half = whole.height() / 2;
        const QRect right(whole.right() - button + 1, whole.top(), button, whole.height());
        switch (part) {
        case SC_SpinBoxUp:
            return visualRect(option->direction, whole, QRect(right.left(), right.top(), button, half));
        case SC_SpinBoxDown:
            return visualRect(option->direction, whole,
                              QRect(right.left(), right.top() + half, button, whole.height() - half));
        case SC_SpinBoxEditField:
            return visualRect(option->direction, whole, whole.adjusted(inset, 2, -button - 2, -2));
        default:
            return whole;
        }
    }
    const QRect rect = QProxyStyle::subControlRect(control, option, part, widget);
    return control == CC_ComboBox && part == SC_ComboBoxEditField ? rect.adjusted(kFieldInset, 0, -kFieldInset, 0)
           : control == CC_ComboBox && part == SC_ComboBoxArrow   ? rect.translated(-kFieldInset, 0)
                                                                  : rect;
}

QRect LookStyle::subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const {
    if (isSwitchAlone(option)) {
        const QSize size(pixelMetric(PM_IndicatorWidth, option, widget),
                         pixelMetric(PM_IndicatorHeight, option, widget));
        if (element == SE_CheckBoxIndicator)
            return alignedRect(option->direction, Qt::AlignCenter, size, option->rect);
        if (element == SE_CheckBoxClickRect)
            return option->rect;
    }
    const QRect rect = QProxyStyle::subElementRect(element, option, widget);
    const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
    return element == SE_LineEditContents && frame && frame->lineWidth > 0
               ? rect.adjusted(kFieldInset, 0, -kFieldInset, 0)
               : rect;
}

QSize LookStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &contents,
                                  const QWidget *widget) const {
    QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
    switch (type) {
    case CT_PushButton:
        return {size.width() + 2 * measure::kGap, qMax(size.height(), tall(widget, measure::kControl))};
    case CT_CheckBox:
        return isSwitchAlone(option) ? QSize(pixelMetric(PM_IndicatorWidth, option, widget) + 2 * measure::kRing,
                                             pixelMetric(PM_IndicatorHeight, option, widget) + 2 * measure::kRing)
                                     : size;
    case CT_ComboBox:
    case CT_SpinBox:
    case CT_LineEdit:
        size.setHeight(qMax(size.height(), tall(widget, measure::kField)));
        return size + QSize(2 * kFieldInset, 0);
    case CT_ToolButton:
        if (const auto *button = qstyleoption_cast<const QStyleOptionToolButton *>(option);
            button && button->features & QStyleOptionToolButton::HasMenu && hasTextBeside(*button))
            size.setWidth(size.width() + kMenuSign);
        if (const auto *button = qstyleoption_cast<const QStyleOptionToolButton *>(option);
            button && isInOneLine(*button))
            size.setWidth(size.width() + 2 * kButtonInset);
        return size.expandedTo(QSize(1, 1) * tall(widget, measure::kTarget));
    case CT_TabBarTab:
        if (const auto *tab = qstyleoption_cast<const QStyleOptionTab *>(option); tab && widget) {
            QFont bold = widget->font(); // that of the chosen one
            bold.setBold(true);
            size.setWidth(size.width() + QFontMetrics(bold).horizontalAdvance(tab->text)
                          - widget->fontMetrics().horizontalAdvance(tab->text));
        }
        size.setHeight(qMax(size.height(), tall(widget, measure::kHeader)));
        return size;
    case CT_MenuItem:
        if (const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
            item && item->menuItemType != QStyleOptionMenuItem::Separator)
            size.setHeight(qMax(size.height(), tall(widget, measure::kTarget)));
        return size;
    default:
        return size;
    }
}

int LookStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const {
    switch (metric) {
    case PM_IndicatorWidth:
        return tall(widget, kSwitchHeight) * kSwitchWidth / kSwitchHeight;
    case PM_IndicatorHeight:
        return tall(widget, kSwitchHeight);
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
        return grown(widget, kRadio);
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return measure::kGap + 2;
    case PM_ScrollBarExtent:
        return kScrollBar;
    case PM_ScrollBarSliderMin:
        return kLeastScrollHandle;
    case PM_SliderThickness:
    case PM_SliderControlThickness:
        return kThumb + 8;
    case PM_SliderLength:
        return kThumb;
    case PM_TabBarTabHSpace:
        return 2 * measure::kGap + 4;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    case PM_SmallIconSize:
    case PM_ButtonIconSize:
        return grown(widget, measure::kIcon);
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int LookStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                         QStyleHintReturn *more) const {
    switch (hint) {
    case SH_Slider_AbsoluteSetButtons: // a click goes there
        return Qt::LeftButton;
    case SH_Widget_Animation_Duration:
        return Look::hasMotion() ? QProxyStyle::styleHint(hint, option, widget, more) : 0;
    case SH_BlinkCursorWhenTextSelected:
        return Look::hasMotion();
    case SH_FormLayoutLabelAlignment:
        return Qt::AlignLeft | Qt::AlignVCenter;
    case SH_EtchDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, more);
    }
}

} // namespace cantorel::ui
