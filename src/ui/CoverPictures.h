#pragma once

#include "platform/foundation/SerialWorker.h"

#include <QCache>
#include <QIcon>
#include <QObject>
#include <QString>

#include <cstddef>

namespace cantorel {
class RecordedAudioInfo;
}

namespace cantorel::ui {

// The small pictures that stand for recordings: a recording's own where it has one, else a drawn one. A recording's own
// is read from its file, where the list doesn't hold it, and decoded beside the main thread, only when it is asked for.
// Owned by the library tab; main thread.
class CoverPictures : public QObject {
    Q_OBJECT

public:
    CoverPictures();
    ~CoverPictures() override { mDecoding.finish(); }

    // size: of its sides, in the pixels of a screen without scaling. It stays itself in a selected row.
    QIcon picture(const RecordedAudioInfo &item, int size, qreal scale);
    // The same of a cover itself; a drawn one for none.
    QIcon picture(const QByteArray &cover, int size, qreal scale);

Q_SIGNALS:
    // A picture has been decoded and replaces its placeholder.
    void changed();

private:
    // What a picture is made of: a cover that the list holds, or that of a file, in the state that its size tells.
    struct Source {
        QByteArray cover;
        QString file, size;
        int side = 0; // pixels

        bool operator==(const Source &) const = default;
        friend std::size_t qHash(const Source &source, std::size_t seed = 0) {
            return qHashMulti(seed, reinterpret_cast<quintptr>(source.cover.constData()), source.file, source.size,
                              source.side);
        }
    };

    const QIcon &drawn(const QString &name, const QColor &colour, int size, qreal scale);
    QIcon picture(const Source &source, int size, qreal scale);
    void decode(const Source &source, qreal scale);

    QHash<QString, QIcon> mDrawn;
    QCache<Source, QIcon> mDecoded; // null while it is decoded, or for what is no picture
    foundation::SerialWorker mDecoding;
};

} // namespace cantorel::ui
