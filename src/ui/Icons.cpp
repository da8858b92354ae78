#include "ui/Icons.h"

#include "platform/foundation/SearchPaths.h"

#include <QFile>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <QWidget>

namespace cantorel::ui {

namespace {

QString drawingPath(const QString &name) { return foundation::resourcePath(QStringLiteral("icons/%1.svg").arg(name)); }

// Draws when it is shown, at the size and scale of the screen.
class DrawnIcon : public QIconEngine {
public:
    DrawnIcon(const QString &name, const QPalette &palette)
        : mName(name),
          mNormal(palette.color(QPalette::Active, QPalette::ButtonText)),
          mDisabled(palette.color(QPalette::Disabled, QPalette::ButtonText)) {}

    void paint(QPainter *painter, const QRect &place, QIcon::Mode mode, QIcon::State) override {
        const int side = qMin(place.width(), place.height());
        const QPoint corner = place.center() - QPoint(side, side) / 2;
        painter->drawPixmap(corner, drawn(mode, side, painter->device()->devicePixelRatio()));
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override {
        return drawn(mode, qMin(size.width(), size.height()), 1);
    }
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State, qreal scale) override {
        return drawn(mode, static_cast<int>(qMin(size.width(), size.height()) / scale), scale);
    }
    QIconEngine *clone() const override { return new DrawnIcon(*this); } // the caller owns it

private:
    QPixmap drawn(QIcon::Mode mode, int side, qreal scale) {
        const QString key = QStringLiteral("%1 %2 %3").arg(mode).arg(side).arg(scale);
        QPixmap &pixmap = mDrawn[key];
        if (pixmap.isNull())
            pixmap = drawing(mName, mode == QIcon::Disabled ? mDisabled : mNormal, side, scale);
        return pixmap;
    }

    const QString mName;
    const QColor mNormal, mDisabled;
    QHash<QString, QPixmap> mDrawn;
};

} // namespace

QPixmap drawing(const QString &name, const QColor &colour, int size, qreal scale) {
    QFile file(drawingPath(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QSvgRenderer renderer(file.readAll().replace("currentColor", colour.name().toLatin1()));
    QPixmap pixmap(QSize(size, size) * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(0, 0, size, size));
    return pixmap;
}

QIcon icon(const QString &name, const QPalette &palette) {
    return QIcon(new DrawnIcon(name, palette)); // which owns it
}

QSize textIconSize(const QWidget &widget, qreal lines) {
    return QSize(1, 1) * qRound(widget.fontMetrics().height() * lines);
}

QIcon applicationIcon() { return icon(QStringLiteral("com.tessolar.Cantorel"), {}); }

} // namespace cantorel::ui
