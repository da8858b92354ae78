#include "tags/Pictures.h"
#include "tags/pictures/DecodedPicture.h"

#include <QBuffer>
#include <QColor>
#include <QImage>
#include <QPainter>

#include <algorithm>

namespace cantorel {

namespace {

constexpr int kLongestSide = 300;

QByteArray encoded(const QImage &image, const char *format) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, format) ? buffer.data() : QByteArray();
}

class QtPictures : public Pictures {
public:
    std::optional<QSize> size(const QByteArray &picture) const override {
        const QImage image = decodedPicture(picture);
        return image.isNull() ? std::nullopt : std::optional(image.size());
    }

    QByteArray bounded(const QByteArray &picture) const override {
        const QImage image = decodedPicture(picture);
        const int longer = std::max(image.width(), image.height());
        if (image.isNull() || longer <= kLongestSide)
            return image.isNull() ? QByteArray() : picture;
        const float scale = static_cast<float>(longer) / kLongestSide;
        // Rounding never costs the longer side a pixel, nor a thin picture its last one.
        const auto scaled = [&](int side) {
            return side == longer ? kLongestSide : std::max(1, static_cast<int>(static_cast<float>(side) / scale));
        };
        const QImage small = image.scaled(scaled(image.width()), scaled(image.height()), Qt::IgnoreAspectRatio,
                                          Qt::SmoothTransformation);
        QImage opaque(small.size(), QImage::Format_RGB888);
        opaque.fill(QColorConstants::White);
        QPainter(&opaque).drawImage(0, 0, small);
        return encoded(opaque, "jpeg");
    }

    QByteArray tiff(const QByteArray &picture) const override {
        const QImage image = decodedPicture(picture);
        if (image.isNull())
            return {};
        return encoded(image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB888),
                       "tiff");
    }
};

} // namespace

} // namespace cantorel

extern "C" __attribute__((visibility("default"))) const cantorel::Pictures *cantorel_pictures() {
    static const cantorel::QtPictures pictures;
    return &pictures;
}
