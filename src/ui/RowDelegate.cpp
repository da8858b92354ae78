#include "ui/RowDelegate.h"

#include "recording/library/RecordedAudioInfo.h"
#include "recording/library/RecordingsModel.h"
#include "ui/look/Look.h"

#include <QFileInfo>
#include <QPainter>

namespace cantorel::ui {

namespace {

// What is going on with it, else who plays it, else where it lies.
QString secondLine(const RecordedAudioInfo &item, const QString &state) {
    if (!state.isEmpty())
        return state;
    QStringList known{item.artist(), item.album()};
    known.removeAll(QString());
    return known.isEmpty() ? QFileInfo(QFileInfo(item.getFileName()).path()).fileName()
                           : known.join(QStringLiteral(" \u2013 "));
}

QColor stateColour(const RecordedAudioInfo &item) {
    const Tokens &tokens = Look::tokens();
    return item.isRecording || item.isInterrupted ? tokens.red : item.isInUse() ? tokens.accent : tokens.text2;
}

} // namespace

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const {
    if (option.state & QStyle::State_Selected)
        painter->fillRect(option.rect, Look::tokens().soft);
    if (index.column() == RecordingsModel::Cover) {
        const QSize size = option.decorationSize;
        const QRect place(option.rect.right() - measure::kGap - size.width(),
                          option.rect.center().y() - size.height() / 2, size.width(), size.height());
        index.data(Qt::DecorationRole).value<QIcon>().paint(painter, place);
    } else if (index.column() == RecordingsModel::Title)
        paintTitle(*painter, option, index);
    else
        paintFigures(*painter, option, index.data().toString());
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
    const QString below = secondLine(*item, index.siblingAtColumn(RecordingsModel::State).data().toString());
    painter.setFont(second);
    painter.setPen(stateColour(*item));
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                     secondMetrics.elidedText(below, Qt::ElideRight, line.width()));
    if (option.state & QStyle::State_HasFocus && option.state & QStyle::State_KeyboardFocusChange) {
        painter.setPen(QPen(tokens.focus, measure::kFocus));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(option.rect.adjusted(1, 1, -1, -1), measure::kFieldRadius, measure::kFieldRadius);
    }
}

void RowDelegate::paintFigures(QPainter &painter, const QStyleOptionViewItem &option, const QString &text) {
    painter.setFont(option.font);
    painter.setPen(Look::tokens().text2);
    const QFontMetricsF metrics(option.font);
    const qreal cell = Look::digitWidth(metrics);
    qreal x = option.rect.right() - measure::kGap;
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
