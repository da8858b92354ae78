#include "ui/CoverPictures.h"

#include "recording/library/RecordedAudioInfo.h"
#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr int kKept = 500; // pictures; a few screens full

std::pair<quintptr, int> nameOf(const QByteArray &cover, int side) {
    return {reinterpret_cast<quintptr>(cover.constData()), side};
}

QImage decoded(const QByteArray &cover, int side) {
    QBuffer buffer;
    buffer.setData(cover);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    if (const QSize whole = reader.size(); whole.isValid())
        reader.setScaledSize(whole.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1}));
    return reader.read();
}

// Without a picture of its own for it, a style mixes a selected one with the colour of the selection.
QIcon unmixed(const QPixmap &picture) {
    QIcon icon(picture);
    icon.addPixmap(picture, QIcon::Selected);
    return icon;
}

} // namespace

CoverPictures::CoverPictures() : mDecoded(kKept) { mDecoding.setMaxThreadCount(1); }

QIcon CoverPictures::picture(const RecordedAudioInfo &item, int size, qreal scale) {
    if (item.isRecording)
        return drawn(QStringLiteral("record"), Look::tokens().red, size, scale);
    if (!item.cover().isEmpty()) {
        const int side = static_cast<int>(size * scale);
        const Decoded *known = mDecoded.object(nameOf(item.cover(), side));
        if (!known)
            decode(item.cover(), side, scale);
        else if (!known->picture.isNull())
            return known->picture;
    }
    return drawn(QStringLiteral("wave"), Look::tokens().text2, size, scale);
}

const QIcon &CoverPictures::drawn(const QString &name, const QColor &colour, int size, qreal scale) {
    QIcon &icon = mDrawn[QStringLiteral("%1 %2 %3 %4").arg(name).arg(size).arg(scale).arg(colour.rgb())];
    if (!icon.isNull())
        return icon;
    QPixmap tile(QSize(size, size) * scale);
    tile.setDevicePixelRatio(scale);
    tile.fill(Qt::transparent);
    QPainter painter(&tile);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::tokens().sunken);
    painter.drawRoundedRect(QRectF(0, 0, size, size), measure::kFieldRadius, measure::kFieldRadius);
    const int side = size * 6 / 10;
    painter.drawPixmap((size - side) / 2, (size - side) / 2, drawing(name, colour, side, scale));
    icon = unmixed(tile);
    return icon;
}

void CoverPictures::decode(const QByteArray &cover, int side, qreal scale) {
    mDecoded.insert(nameOf(cover, side), new Decoded{cover, {}}); // The cache owns it.
    mDecoding.start([this, cover, side, scale] {
        const QImage image = decoded(cover, side);
        QMetaObject::invokeMethod(this, [this, cover, side, image, scale] {
            Decoded *waiting = mDecoded.object(nameOf(cover, side));
            if (!waiting || image.isNull())
                return;
            QPixmap picture = QPixmap::fromImage(image);
            picture.setDevicePixelRatio(scale);
            waiting->picture = unmixed(picture);
            Q_EMIT changed();
        });
    });
}

} // namespace cantorel::ui
