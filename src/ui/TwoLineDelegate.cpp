#include "ui/TwoLineDelegate.h"

#include "ui/look/Look.h"

#include <QAbstractItemView>
#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr int kWraps = Qt::TextWordWrap | Qt::TextWrapAnywhere;

struct Lines {
    QFont title, second;
    QString titleText, secondText;
    int titleHeight, secondHeight;

    Lines(const QWidget &view, const QModelIndex &index, int width)
        : title(Look::font(view, text_size::kBody, QFont::Bold)),
          second(Look::font(view, text_size::kSecondLine)),
          titleText(index.data(TwoLineDelegate::Title).toString()),
          secondText(index.data(TwoLineDelegate::Second).toString()),
          titleHeight(heightOf(title, titleText, width)),
          secondHeight(heightOf(second, secondText, width)) {}

    static int heightOf(const QFont &font, const QString &text, int width) {
        return QFontMetrics(font).boundingRect(QRect(0, 0, width, QWIDGETSIZE_MAX), kWraps, text).height();
    }
};

} // namespace

QSize TwoLineDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const {
    const auto *view = static_cast<const QAbstractItemView *>(option.widget);
    const int width = view->viewport()->width();
    const Lines lines(*view, index, width - 2 * measure::kMargin);
    return {width, qMax(Look::tall(*view, measure::kRow), lines.titleHeight + lines.secondHeight + 2 * measure::kGap)};
}

void TwoLineDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const {
    const Tokens &tokens = Look::tokens();
    const QWidget &view = *option.widget;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF place = QRectF(option.rect).adjusted(measure::kGap, 2, -measure::kGap, -2);
    const bool showsFocus = option.state & QStyle::State_HasFocus && option.state & QStyle::State_KeyboardFocusChange;
    painter->setPen(showsFocus ? QPen(tokens.focus, measure::kFocus) : QPen(Qt::NoPen));
    painter->setBrush(option.state & QStyle::State_Selected ? tokens.soft : tokens.surface);
    if (showsFocus || option.state & QStyle::State_Selected)
        painter->drawRoundedRect(place, measure::kButtonRadius, measure::kButtonRadius);
    QRect text = option.rect.adjusted(measure::kMargin, 0, -measure::kMargin, 0);
    const Lines lines(view, index, text.width());
    text.setTop(text.center().y() - (lines.titleHeight + lines.secondHeight) / 2);
    text.setHeight(lines.titleHeight);
    painter->setFont(lines.title);
    painter->setPen(tokens.text);
    painter->drawText(text, kWraps, lines.titleText);
    text.translate(0, lines.titleHeight);
    text.setHeight(lines.secondHeight);
    painter->setFont(lines.second);
    painter->setPen(index.data(IsTrouble).toBool() ? tokens.red : tokens.text2);
    painter->drawText(text, kWraps, lines.secondText);
    painter->restore();
}

} // namespace cantorel::ui
