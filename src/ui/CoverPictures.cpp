#include "ui/CoverPictures.h"

#include "log/GuardedAction.h"
#include "recording/library/RecordedAudioInfo.h"
#include "tags/AudioIdentify.h"
#include "tags/pictures/DecodedPicture.h"
#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QImage>
#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr int kKept = 500; // pictures; a few screens full

QByteArray coverIn(const QString &file) {
    const auto tag = AudioIdentify::getID3TagFromFile(file);
    return tag ? tag->id3Image : QByteArray();
}

// Without a picture of its own for it, a style mixes a selected one with the colour of the selection.
QIcon unmixed(const QPixmap &picture) {
    QIcon icon(picture);
    icon.addPixmap(picture, QIcon::Selected);
    return icon;
}

} // namespace

CoverPictures::CoverPictures() : mDecoded(kKept) {}

QIcon CoverPictures::picture(const RecordedAudioInfo &item, int size, qreal scale) {
    if (item.isRecording)
        return drawn(QStringLiteral("record"), Look::tokens().red, size, scale);
    if (item.cover().isEmpty() && isMovieFile(item.getFileName()))
        return drawn(QStringLiteral("screen"), Look::tokens().text2, size, scale);
    const Source source{item.cover(), item.cover().isEmpty() ? item.getFileName() : QString(),
                        item.cover().isEmpty() ? item.size() : QString(), static_cast<int>(size * scale)};
    return picture(source, size, scale);
}

QIcon CoverPictures::picture(const QByteArray &cover, int size, qreal scale) {
    return picture(Source{cover, {}, {}, static_cast<int>(size * scale)}, size, scale);
}

QIcon CoverPictures::picture(const Source &source, int size, qreal scale) {
    const QIcon *known = mDecoded.object(source);
    if (!known)
        decode(source, scale);
    else if (!known->isNull())
        return *known;
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

void CoverPictures::decode(const Source &source, qreal scale) {
    mDecoded.insert(source, new QIcon); // The cache owns it.
    mDecoding.start([this, source, scale] {
        QImage image;
        (void)guarded("decodeCover", [&] { // logged there
            image = decodedPicture(source.file.isEmpty() ? source.cover : coverIn(source.file), source.side);
        });
        if (image.isNull())
            return;
        QMetaObject::invokeMethod(this, [this, source, image, scale] {
            QIcon *waiting = mDecoded.object(source);
            if (!waiting)
                return;
            QPixmap picture = QPixmap::fromImage(image);
            picture.setDevicePixelRatio(scale);
            *waiting = unmixed(picture);
            Q_EMIT changed();
        });
    });
}

} // namespace cantorel::ui
