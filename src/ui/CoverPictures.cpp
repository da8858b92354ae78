#include "ui/CoverPictures.h"

#include "recording/RecordedAudioInfo.h"
#include "ui/Icons.h"

#include <QBuffer>
#include <QImageReader>

namespace cantorel::ui {

namespace {

constexpr int kKept = 500; // pictures; a few screens full

quintptr nameOf(const QByteArray &cover) { return reinterpret_cast<quintptr>(cover.constData()); }

QImage decoded(const QByteArray &cover, int side) {
    QBuffer buffer;
    buffer.setData(cover);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    if (const QSize whole = reader.size(); whole.isValid())
        reader.setScaledSize(whole.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1}));
    return reader.read();
}

} // namespace

CoverPictures::CoverPictures() : mDecoded(kKept) { mDecoding.setMaxThreadCount(1); }

QPixmap CoverPictures::picture(const RecordedAudioInfo &item, int size, qreal scale) {
    if (item.isRecording)
        return drawn(QStringLiteral("record"), recordingColour(), size, scale);
    if (!item.cover.isEmpty()) {
        const Decoded *known = mDecoded.object(nameOf(item.cover));
        if (!known)
            decode(item.cover, static_cast<int>(size * scale), scale);
        else if (!known->picture.isNull())
            return known->picture;
    }
    return drawn(QStringLiteral("sound"), Qt::darkGray, size, scale); // seen on every ground
}

const QPixmap &CoverPictures::drawn(const QString &name, const QColor &colour, int size, qreal scale) {
    QPixmap &pixmap = mDrawn[QStringLiteral("%1 %2 %3").arg(name).arg(size).arg(scale)];
    if (pixmap.isNull())
        pixmap = drawing(name, colour, size, scale);
    return pixmap;
}

void CoverPictures::decode(const QByteArray &cover, int side, qreal scale) {
    mDecoded.insert(nameOf(cover), new Decoded{cover, {}}); // The cache owns it.
    mDecoding.start([this, cover, side, scale] {
        const QImage image = decoded(cover, side);
        QMetaObject::invokeMethod(this, [this, cover, image, scale] {
            Decoded *waiting = mDecoded.object(nameOf(cover));
            if (!waiting || image.isNull())
                return;
            waiting->picture = QPixmap::fromImage(image);
            waiting->picture.setDevicePixelRatio(scale);
            if (changed)
                changed();
        });
    });
}

} // namespace cantorel::ui
