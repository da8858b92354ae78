#include "ui/TwoLineDelegate.h"

#include "ui/look/Look.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QTextLayout>
#include <QtMath>

namespace cantorel::ui {

namespace {

// A text in lines of a width, broken between words where it can be.
class Paragraph {
public:
    Paragraph(const QFont &font, const QString &text, int width) : mLayout(text, font) {
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        mLayout.setTextOption(option);
        mLayout.beginLayout();
        for (QTextLine line = mLayout.createLine(); line.isValid(); line = mLayout.createLine()) {
            line.setLineWidth(width);
            line.setPosition(QPointF(0, mHeight));
            mHeight += qCeil(line.height());
        }
        mLayout.endLayout();
    }
    int height() const { return mHeight; }
    void draw(QPainter &painter, const QPoint &corner, const QColor &ink) const {
        painter.setPen(ink);
        mLayout.draw(&painter, corner);
    }

private:
    QTextLayout mLayout;
    int mHeight = 0;
};

struct Lines {
    Lines(const QWidget &view, const QModelIndex &index, int width)
        : title(Look::font(view, text_size::kBody, QFont::Bold), index.data(TwoLineDelegate::Title).toString(), width),
          second(Look::font(view, text_size::kSecondLine), index.data(TwoLineDelegate::Second).toString(), width) {}
    int height() const { return title.height() + second.height(); }

    Paragraph title, second;
};

} // namespace

QSize TwoLineDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const {
    const auto *view = static_cast<const QAbstractItemView *>(option.widget);
    const int width = view->viewport()->width();
    const Lines lines(*view, index, width - 2 * measure::kMargin);
    return {width, qMax(Look::tall(*view, measure::kRow), lines.height() + 2 * measure::kGap)};
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
    const Lines lines(view, index, option.rect.width() - 2 * measure::kMargin);
    const QPoint corner(option.rect.left() + measure::kMargin, option.rect.center().y() - lines.height() / 2);
    lines.title.draw(*painter, corner, tokens.text);
    lines.second.draw(*painter, corner + QPoint(0, lines.title.height()),
                      index.data(IsTrouble).toBool() ? tokens.red : tokens.text2);
    painter->restore();
}

} // namespace cantorel::ui
