#include "tags/Pictures.h"

#include "tags/AudioIdentify.h"

#include <QBuffer>
#include <QImage>

#include <gtest/gtest.h>

namespace cantorel {
namespace {

QByteArray picture(QSize size, const char *kind, QImage::Format format = QImage::Format_RGB32) {
    QImage image(size, format);
    image.fill(0x80FF0000);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, kind));
    return buffer.data();
}

std::optional<QSize> sizeOf(const QByteArray &bytes) { return loadPictures().value()->size(bytes); }

TEST(Pictures, AreBoundedTo300AndSmallOnesStayAsTheyAre) {
    ASSERT_TRUE(loadPictures());
    const struct {
        QSize size, bounded;
    } cases[] = {{{300, 300}, {300, 300}},
                 {{301, 200}, {300, 199}},
                 {{200, 301}, {199, 300}},
                 {{1000, 750}, {300, 225}},
                 {{2000, 3}, {300, 1}}};
    for (const auto &[size, bounded] : cases) {
        const QByteArray bytes = picture(size, "png");
        const QByteArray small = AudioIdentify::correctMusicCoverImage(bytes);
        EXPECT_EQ(sizeOf(small), bounded);
        EXPECT_EQ(small == bytes, size == bounded);
        EXPECT_EQ(qstrcmp(pictureKind(small), size == bounded ? "png" : "jpeg"), 0);
    }
    // What shows through is white.
    const QByteArray seen = AudioIdentify::correctMusicCoverImage(picture({600, 600}, "png", QImage::Format_ARGB32));
    EXPECT_NEAR(qGreen(QImage::fromData(seen).pixel(9, 9)), 127, 3);
}

TEST(Pictures, OfAllKindsAreReadAndBrokenOnesAreNone) {
    for (const char *kind : {"jpeg", "png", "tiff", "bmp", "webp"}) {
        const QByteArray bytes = picture({20, 10}, kind);
        EXPECT_STREQ(pictureKind(bytes), kind);
        EXPECT_EQ(sizeOf(bytes), QSize(20, 10)) << kind;
        const QByteArray tiff = loadPictures().value()->tiff(bytes);
        EXPECT_STREQ(pictureKind(tiff), "tiff") << kind;
        EXPECT_EQ(sizeOf(tiff), QSize(20, 10)) << kind;
        const QByteArray broken = bytes.left(30);
        EXPECT_FALSE(sizeOf(broken)) << kind;
        EXPECT_TRUE(AudioIdentify::correctMusicCoverImage(broken).isEmpty()) << kind;
    }
    // A few bytes that promise a picture of many gigabytes, and a kind that could lead anywhere.
    QByteArray huge = picture({20, 10}, "bmp");
    for (const int side : {18, 22})
        huge.replace(side, 4, QByteArray("\xF0\xF0\0\0", 4));
    EXPECT_FALSE(sizeOf(huge));
    EXPECT_FALSE(sizeOf("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"));
}

} // namespace
} // namespace cantorel
