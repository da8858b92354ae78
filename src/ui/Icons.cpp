#include "ui/Icons.h"

#include "platform/foundation/SearchPaths.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace cantorel::ui {

namespace {

constexpr int kSizes[] = {16, 24, 32, 48};
constexpr qreal kSharpest = 2; // for screens of high density

QString drawingPath(const QString &name) { return foundation::resourcePath(QStringLiteral("icons/%1.svg").arg(name)); }

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
    QIcon icon;
    const struct {
        QIcon::Mode mode;
        QColor colour;
    } modes[] = {{QIcon::Normal, palette.color(QPalette::Active, QPalette::ButtonText)},
                 {QIcon::Disabled, palette.color(QPalette::Disabled, QPalette::ButtonText)}};
    for (const auto &[mode, colour] : modes)
        for (const int size : kSizes) {
            icon.addPixmap(drawing(name, colour, size, 1), mode);
            icon.addPixmap(drawing(name, colour, size, kSharpest), mode);
        }
    return icon;
}

QIcon applicationIcon() { return QIcon(drawingPath(QStringLiteral("com.tessolar.Cantorel"))); }

QColor recordingColour() { return {0xE5, 0x48, 0x4D}; }

QColor waitingColour(const QPalette &palette) {
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    return isDark ? QColor(0xF0, 0xB4, 0x29) : QColor(0xA8, 0x6A, 0x00);
}

} // namespace cantorel::ui
