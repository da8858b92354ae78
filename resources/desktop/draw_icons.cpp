// Draws the program's icon in the sizes of the desktop's theme; run by the build.
// usage: draw_icons DRAWING.svg FOLDER SIZE...   (writes FOLDER/SIZE.png)

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char **argv) {
    if (argc < 4) {
        std::fputs("usage: draw_icons DRAWING.svg FOLDER SIZE...\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
    if (!drawing.isValid()) {
        std::fprintf(stderr, "%s is no drawing\n", argv[1]);
        return 1;
    }
    for (int i = 3; i < argc; ++i) {
        const int size = QByteArray(argv[i]).toInt();
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        drawing.render(&painter);
        painter.end();
        if (!image.save(QStringLiteral("%1/%2.png").arg(QString::fromLocal8Bit(argv[2])).arg(size))) {
            std::fprintf(stderr, "no icon of size %s could be written to %s\n", argv[i], argv[2]);
            return 1;
        }
    }
    return 0;
}
