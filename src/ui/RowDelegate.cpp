#include "ui/RowDelegate.h"

#include "recording/library/RecordedAudioInfo.h"
#include "recording/library/RecordingsModel.h"
#include "ui/look/Look.h"

#include <QFileInfo>
#include <QPainter>
#include <QTableView>

namespace cantorel::ui {

namespace {

constexpr int kInset = 2;     // of a row's ground, above and below
constexpr int kVeil = 200;    // how dark a picture is behind its sign
constexpr qreal kSign = 0.36; // of the picture

QColor stateColour(const RecordedAudioInfo &item) {
    const Tokens &tokens = Look::tokens();
    return item.isRecording || item.isInterrupted ? tokens.red : item.isInUse() ? tokens.accent : tokens.text2;
}

// A triangle that plays, or two bars that pause, on a darkened picture.
void drawSign(QPainter &painter, const QRectF &place, RowDelegate::Tile tile) {
    const Tokens &tokens = Look::tokens();
    const bool isLight = tokens.ground.lightness() > tokens.text.lightness();
    QColor veil = isLight ? tokens.text : tokens.ground;
    veil.setAlpha(kVeil);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(veil);
    painter.drawRoundedRect(place, measure::kFieldRadius, measure::kFieldRadius);
    painter.setBrush(isLight ? tokens.surface : tokens.text);
    const qreal half = place.width() * kSign / 2;
    const QPointF centre = place.center();
    if (tile == RowDelegate::Tile::Play)
        painter.drawPolygon(QPolygonF(
            {centre + QPointF(-half * 0.7, -half), centre + QPointF(half, 0), centre + QPointF(-half * 0.7, half)}));
    else
        for (const qreal side : {-1.0, 1.0})
            painter.drawRoundedRect(
                QRectF(0, 0, half * 0.6, 2 * half).translated(centre + QPointF(side * half * 0.6 - half * 0.3, -half)),
                1, 1);
    painter.restore();
}

} // namespace

QString whoOrWhere(const RecordedAudioInfo &item) {
    QStringList known{item.artist(), item.album()};
    known.removeAll(QString());
    return known.isEmpty() ? QFileInfo(QFileInfo(item.getFileName()).path()).fileName()
                           : known.join(QStringLiteral(" \u2013 "));
}

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const {
    paintRowGround(*painter, option, isHovered(index.row()));
    if (index.column() == RecordingsModel::Cover)
        paintCover(*painter, option, index);
    else if (index.column() == RecordingsModel::Title)
        paintTitle(*painter, option, index);
    else
        paintFigures(*painter, option, index.data().toString());
}

void paintRowGround(QPainter &painter, const QStyleOptionViewItem &option, bool isHovered) {
    const Tokens &tokens = Look::tokens();
    const bool isSelected = option.state & QStyle::State_Selected;
    if (!isSelected && !isHovered)
        return;
    const auto *table = static_cast<const QTableView *>(option.widget);
    const QRect row(measure::kGap, option.rect.top() + kInset, table->viewport()->width() - 2 * measure::kGap,
                    option.rect.height() - 2 * kInset);
    painter.save();
    painter.setClipRect(option.rect);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isSelected ? tokens.soft : tokens.hover);
    painter.drawRoundedRect(row, measure::kButtonRadius, measure::kButtonRadius);
    painter.restore();
}

void RowDelegate::paintCover(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const {
    const QSize size = option.decorationSize;
    const QRect place(option.rect.right() - measure::kGap - size.width(), option.rect.center().y() - size.height() / 2,
                      size.width(), size.height());
    index.data(Qt::DecorationRole).value<QIcon>().paint(&painter, place);
    if (const Tile sign = tile(index.row()); sign != Tile::Plain)
        drawSign(painter, place, sign);
}

void RowDelegate::paintTitle(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) const {
    const RecordedAudioInfo *item = mModel.item(index.row());
    if (!item)
        return;
    const Tokens &tokens = Look::tokens();
    const QWidget &view = *option.widget;
    const QFont title = Look::font(view, text_size::kBody, QFont::Bold),
                second = Look::font(view, text_size::kSecondLine);
    const QFontMetrics titleMetrics(title), secondMetrics(second);
    const int height = titleMetrics.height() + secondMetrics.height();
    QRect line = option.rect.adjusted(measure::kGap / 2, (option.rect.height() - height) / 2, -measure::kGap, 0);
    line.setHeight(titleMetrics.height());
    painter.setFont(title);
    painter.setPen(tokens.text);
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                     titleMetrics.elidedText(index.data().toString(), Qt::ElideMiddle, line.width()));
    line.translate(0, titleMetrics.height());
    line.setHeight(secondMetrics.height());
    // What is going on with it comes first.
    const QString state = index.siblingAtColumn(RecordingsModel::State).data().toString();
    QString below = state.isEmpty() ? whoOrWhere(*item) : state;
    if (static_cast<const QTableView &>(view).isColumnHidden(RecordingsModel::Date))
        below.prepend(index.siblingAtColumn(RecordingsModel::Date).data().toString() + QStringLiteral(", "));
    painter.setFont(second);
    painter.setPen(stateColour(*item));
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                     secondMetrics.elidedText(below, Qt::ElideRight, line.width()));
    paintCellFocus(painter, option);
}

void paintCellFocus(QPainter &painter, const QStyleOptionViewItem &option) {
    if (!(option.state & QStyle::State_HasFocus && option.state & QStyle::State_KeyboardFocusChange))
        return;
    painter.setPen(QPen(Look::tokens().focus, measure::kFocus));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(option.rect.adjusted(1, 1, -1, -1), measure::kFieldRadius, measure::kFieldRadius);
}

void paintFigures(QPainter &painter, const QStyleOptionViewItem &option, const QString &text) {
    painter.setFont(option.font);
    painter.setPen(Look::tokens().text2);
    const QFontMetricsF metrics(option.font);
    const qreal cell = Look::digitWidth(option.font);
    qreal x = option.rect.right() - 2 * measure::kGap;
    const qreal baseline = option.rect.center().y() + (metrics.ascent() - metrics.descent()) / 2 + 0.5;
    for (auto character = text.crbegin(); character != text.crend(); ++character) {
        const qreal width = metrics.horizontalAdvance(*character);
        const qreal room = character->isDigit() ? cell : width;
        x -= room;
        if (x < option.rect.left())
            break;
        painter.drawText(QPointF(x + (room - width) / 2, baseline), QString(*character));
    }
}

void RowDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option, const QModelIndex &) const {
    const int height = qMin(option.rect.height(), editor->sizeHint().height());
    editor->setGeometry(option.rect.left(), option.rect.center().y() - height / 2, option.rect.width(), height);
}

} // namespace cantorel::ui
