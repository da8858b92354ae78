#include "ui/CoverPictures.h"

#include "recording/library/RecordedAudioInfo.h"
#include "ui/Icons.h"
#include "ui/look/Look.h"

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

// Without a picture of its own for it, a style mixes a selected one with the colour of the selection.
QIcon iconOf(const QPixmap &normal, const QPixmap &selected) {
    QIcon icon(normal);
    icon.addPixmap(selected, QIcon::Selected);
    return icon;
}

} // namespace

CoverPictures::CoverPictures() : mDecoded(kKept) { mDecoding.setMaxThreadCount(1); }

QIcon CoverPictures::picture(const RecordedAudioInfo &item, int size, qreal scale, const QColor &selectedText) {
    if (item.isRecording)
        return drawn(QStringLiteral("record"), Look::tokens().red, selectedText, size, scale);
    if (!item.cover.isEmpty()) {
        const Decoded *known = mDecoded.object(nameOf(item.cover));
        if (!known)
            decode(item.cover, static_cast<int>(size * scale), scale);
        else if (!known->picture.isNull())
            return known->picture;
    }
    return drawn(QStringLiteral("sound"), Look::tokens().text2, selectedText, size, scale); // seen on every ground
}

const QIcon &CoverPictures::drawn(const QString &name, const QColor &colour, const QColor &selected, int size,
                                  qreal scale) {
    QIcon &icon = mDrawn[QStringLiteral("%1 %2 %3 %4").arg(name).arg(size).arg(scale).arg(selected.rgb())];
    if (icon.isNull())
        icon = iconOf(drawing(name, colour, size, scale), drawing(name, selected, size, scale));
    return icon;
}

void CoverPictures::decode(const QByteArray &cover, int side, qreal scale) {
    mDecoded.insert(nameOf(cover), new Decoded{cover, {}}); // The cache owns it.
    mDecoding.start([this, cover, side, scale] {
        const QImage image = decoded(cover, side);
        QMetaObject::invokeMethod(this, [this, cover, image, scale] {
            Decoded *waiting = mDecoded.object(nameOf(cover));
            if (!waiting || image.isNull())
                return;
            QPixmap picture = QPixmap::fromImage(image);
            picture.setDevicePixelRatio(scale);
            waiting->picture = iconOf(picture, picture);
            Q_EMIT changed();
        });
    });
}

} // namespace cantorel::ui
