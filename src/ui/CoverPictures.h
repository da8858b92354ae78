#pragma once

#include <QCache>
#include <QIcon>
#include <QThreadPool>

#include <utility>

namespace cantorel {
class RecordedAudioInfo;
}

namespace cantorel::ui {

// The small pictures that stand for recordings: a recording's own where it has one, else a drawn one. A recording's own
// is decoded beside the main thread, and only when it is asked for. Owned by the library tab; main thread.
class CoverPictures : public QObject {
    Q_OBJECT

public:
    CoverPictures();
    ~CoverPictures() override { mDecoding.waitForDone(); }

    // size: of its sides, in the pixels of a screen without scaling. It stays itself in a selected row.
    QIcon picture(const RecordedAudioInfo &item, int size, qreal scale);

Q_SIGNALS:
    // A picture has been decoded and replaces its placeholder.
    void changed();

private:
    struct Decoded {
        QByteArray cover; // held, so that its place in memory stays its own
        QIcon picture;    // null while it is decoded, or for what is no picture
    };

    const QIcon &drawn(const QString &name, const QColor &colour, int size, qreal scale);
    void decode(const QByteArray &cover, int side, qreal scale);

    QHash<QString, QIcon> mDrawn;
    QCache<std::pair<quintptr, int>, Decoded> mDecoded; // by the cover's place in memory and the side in pixels
    QThreadPool mDecoding;
};

} // namespace cantorel::ui
