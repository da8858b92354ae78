#include "ui/DigitLabel.h"

#include "ui/look/Look.h"

#include <QPainter>

#include <cmath>

namespace cantorel::ui {

// Each character is drawn for itself, so there is nothing to shape, and the tables for it are not read.
QFont DigitLabel::unshaped() const {
    QFont own = font();
    own.setStyleStrategy(QFont::PreferNoShaping);
    return own;
}

QVector<qreal> DigitLabel::positions() const {
    const QFontMetricsF metrics(unshaped());
    const qreal cell = Look::digitWidth(unshaped());
    QVector<qreal> places{0};
    for (const QChar character : text())
        places.append(places.last() + (character.isDigit() ? cell : metrics.horizontalAdvance(character)));
    return places;
}

QSize DigitLabel::sizeHint() const {
    return {static_cast<int>(std::ceil(positions().last())), QFontMetrics(unshaped()).height()};
}

void DigitLabel::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setFont(unshaped());
    painter.setPen(palette().color(foregroundRole()));
    const QVector<qreal> places = positions();
    const QFontMetricsF metrics(unshaped());
    const qreal baseline = (height() - metrics.height()) / 2 + metrics.ascent();
    const QString shown = text();
    for (qsizetype i = 0; i < shown.size(); ++i) {
        const qreal slack = places[i + 1] - places[i] - metrics.horizontalAdvance(shown[i]);
        painter.drawText(QPointF(places[i] + slack / 2, baseline), QString(shown[i]));
    }
}

} // namespace cantorel::ui
