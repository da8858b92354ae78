#include "ui/TwoLineDelegate.h"

#include "ui/look/Look.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QTextLayout>
#include <QtMath>

namespace cantorel::ui {

namespace {

// Breaks between words, and within one only where it alone is too wide. Shows it where a painter is given; answers its
// height.
int wrapped(const QFont &font, const QString &text, QRect place, QPainter *painter = nullptr) {
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    qreal height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(place.width());
        line.setPosition(QPointF(0, height));
        height += line.height();
    }
    layout.endLayout();
    if (painter)
        layout.draw(painter, place.topLeft());
    return qCeil(height);
}

struct Lines {
    QFont title, second;
    QString titleText, secondText;
    int titleHeight, secondHeight;

    Lines(const QWidget &view, const QModelIndex &index, int width)
        : title(Look::font(view, text_size::kBody, QFont::Bold)),
          second(Look::font(view, text_size::kSecondLine)),
          titleText(index.data(TwoLineDelegate::Title).toString()),
          secondText(index.data(TwoLineDelegate::Second).toString()),
          titleHeight(wrapped(title, titleText, {0, 0, width, 0})),
          secondHeight(wrapped(second, secondText, {0, 0, width, 0})) {}
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
    painter->setPen(tokens.text);
    wrapped(lines.title, lines.titleText, text, painter);
    text.translate(0, lines.titleHeight);
    painter->setPen(index.data(IsTrouble).toBool() ? tokens.red : tokens.text2);
    wrapped(lines.second, lines.secondText, text, painter);
    painter->restore();
}

} // namespace cantorel::ui
