#include "ui/ConvertDelegates.h"

#include "convert/queue/ConvertModel.h"
#include "ui/Icons.h"
#include "ui/RowDelegate.h"
#include "ui/look/Look.h"

#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr int kPicture = 22, kFrames = 6;
constexpr int kBar = 3, kBarWidth = 240;

ConvertStatus statusOf(const QModelIndex &index) {
    return static_cast<ConvertStatus>(index.data(ConvertModel::StatusRole).toInt());
}

} // namespace

ConvertStatusDelegate::ConvertStatusDelegate(QObject *parent) : QStyledItemDelegate(parent) {
    setObjectName(QStringLiteral("Convert Status")); // as fixed
}

void ConvertStatusDelegate::step() { mFrame = (mFrame + 1) % kFrames; }

void ConvertStatusDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const {
    paintRowGround(*painter, option, isHovered(index.row()));
    const ConvertStatus status = statusOf(index);
    const QString picture = statusPicture(status, mFrame);
    if (picture.isEmpty())
        return;
    const Tokens &tokens = Look::tokens();
    const QColor ink = status == ConvertStatus::Failed    ? tokens.red
                       : status == ConvertStatus::Waiting ? tokens.text2
                                                          : tokens.accent;
    const int side = Look::scaled(*option.widget, kPicture);
    const QRect place(option.rect.right() - measure::kGap - side, option.rect.center().y() - side / 2, side, side);
    painter->drawPixmap(QStyle::visualRect(option.direction, option.rect, place),
                        drawing(picture, ink, side, painter->device()->devicePixelRatioF()));
}

void ConvertRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const {
    paintRowGround(*painter, option, isHovered(index.row()));
    const QString text = index.data().toString();
    if (index.column() == ConvertModel::Name)
        return paintName(*painter, option, index);
    if (index.column() != ConvertModel::Action)
        return paintFigures(*painter, option, text);
    painter->setFont(Look::font(*option.widget, text_size::kBody, QFont::Bold));
    painter->setPen(Look::tokens().accent);
    painter->drawText(option.rect, Qt::AlignCenter, text);
}

void ConvertRowDelegate::paintName(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) {
    const Tokens &tokens = Look::tokens();
    const QWidget &view = *option.widget;
    const QFont title = Look::font(view, text_size::kBody, QFont::Bold),
                second = Look::font(view, text_size::kSecondLine);
    const QFontMetrics titleMetrics(title), secondMetrics(second);
    QRect line = option.rect.adjusted(
        measure::kGap, (option.rect.height() - titleMetrics.height() - secondMetrics.height()) / 2, -measure::kGap, 0);
    line.setHeight(titleMetrics.height());
    painter.setFont(title);
    painter.setPen(tokens.text);
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                     titleMetrics.elidedText(index.data().toString(), Qt::ElideMiddle, line.width()));
    line.translate(0, titleMetrics.height());
    line.setHeight(secondMetrics.height());
    const bool isUnderWay = statusOf(index) == ConvertStatus::Converting;
    // In the middle: a reason begins with the name that stands above it.
    const QString below =
        secondMetrics.elidedText(index.data(ConvertModel::LineRole).toString(), Qt::ElideMiddle, line.width());
    painter.setFont(second);
    painter.setPen(index.data(ConvertModel::TroubleRole).toBool() ? tokens.red
                   : isUnderWay                                   ? tokens.text
                                                                  : tokens.text2);
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft, below);
    const int left = line.left() + secondMetrics.horizontalAdvance(below) + 3 * measure::kGap;
    const int room = qMin(line.right() - left, Look::scaled(view, kBarWidth));
    if (isUnderWay && room >= measure::kControl) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        const double done = room * index.data(ConvertModel::ProgressRole).toDouble() / 100;
        for (const auto &[width, colour] : {std::pair<double, QColor>(room, tokens.track), {done, tokens.accent}}) {
            const double begin = option.direction == Qt::RightToLeft ? line.left() + line.right() - left - width : left;
            painter.setBrush(colour);
            painter.drawRoundedRect(QRectF(begin, line.center().y() - kBar / 2.0 + 0.5, width, kBar), kBar / 2.0,
                                    kBar / 2.0);
        }
    }
    paintCellFocus(painter, option);
}

} // namespace cantorel::ui
