#pragma once

#include "tags/Pictures.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageReader>
#include <QSize>

namespace cantorel {

// The picture, within a square of that side where one is given; null for what is none, is broken or too large. Only the
// kinds of pictureKind() are tried, by what the bytes are. Any thread.
inline QImage decodedPicture(const QByteArray &bytes, int side = 0) {
    const char *kind = pictureKind(bytes);
    if (kind == nullptr || bytes.size() > kLargestPicture)
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer, kind);
    reader.setDecideFormatFromContent(false);
    reader.setAutoTransform(true);
    const QSize whole = reader.size();
    if (whole.isEmpty() || qint64(whole.width()) * whole.height() > kMostPixels)
        return {};
    if (side > 0)
        reader.setScaledSize(whole.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1}));
    return reader.read();
}

} // namespace cantorel
