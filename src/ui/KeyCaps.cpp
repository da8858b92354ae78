#include "ui/KeyCaps.h"

#include "ui/look/Look.h"

#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr int kBeside = 6, kAbove = 2, kBetween = 4;

} // namespace

QFont KeyCaps::capFont() const { return Look::font(*this, text_size::kLabel); }

void KeyCaps::setKeys(const QString &keys) {
    mKeys = keys.split(QLatin1Char('+'), Qt::SkipEmptyParts);
    setAccessibleName(keys);
    setVisible(!mKeys.isEmpty());
    updateGeometry();
    update();
}

QSize KeyCaps::sizeHint() const {
    const QFontMetrics metrics(capFont());
    int width = -kBetween;
    for (const QString &key : mKeys)
        width += metrics.horizontalAdvance(key) + 2 * kBeside + kBetween;
    return {qMax(0, width), metrics.height() + 2 * kAbove + 2};
}

void KeyCaps::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(capFont());
    const QFontMetrics metrics(capFont());
    const Tokens &tokens = Look::tokens();
    qreal left = 0;
    for (const QString &key : mKeys) {
        const QRectF cap(left + 0.5, 0.5, metrics.horizontalAdvance(key) + 2 * kBeside - 1, height() - 1);
        painter.setPen(tokens.line);
        painter.setBrush(tokens.surface);
        painter.drawRoundedRect(cap, kBetween, kBetween);
        painter.setPen(tokens.text2);
        painter.drawText(cap, Qt::AlignCenter, key);
        left += cap.width() + 1 + kBetween;
    }
}

} // namespace cantorel::ui
