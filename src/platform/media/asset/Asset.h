#pragma once

#include "platform/media/asset/FrameReader.h"
#include "platform/media/asset/MediaTime.h"
#include "platform/media/asset/SampleReader.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <memory>

namespace cantorel::media {

// One thing that a file says of itself.
struct MetadataItem {
    QString keySpace;  // "id3", "itunes", "vorbis", ...; the tag that holds it
    QString commonKey; // "title", "artist", "album", "type", "creationDate", "artwork"; empty for others
    QString text;      // of a picture: its type, such as "image/png"
    QByteArray data;   // of a picture
};

// Sound to work on: a file, or what was put together from several. Never changes; held by everybody who uses it. Any
// thread.
class Asset {
public:
    virtual ~Asset() = default;

    virtual QUrl url() const = 0; // empty where no single file holds it
    // Exact; in frames of the sound's own rate. Zero where there is no sound.
    virtual MediaTime duration() const = 0;
    virtual SoundFormat format() const = 0; // of the first track of sound
    // A frame of sound could be read.
    virtual bool isPlayable() const = 0;
    virtual bool hasProtectedContent() const = 0;
    virtual QList<MetadataItem> metadata() const = 0;
    // Of the sound alone, as it lies in the file; 0 where no single file holds it.
    virtual std::int64_t soundBytes() const { return 0; }
    // Reads the first track of sound in that format, from its beginning. Another rate keeps the length: frame i lies
    // where frame i * rate / own rate was. One channel goes to both of two; more than two are mixed down.
    virtual foundation::Result<std::unique_ptr<FrameReader>> openReader(SoundFormat format) const = 0;
    // The same in its own rate and channels, as what a converter to 16 bits without dither makes of it. Here: floats,
    // rounded.
    virtual foundation::Result<std::unique_ptr<SampleReader>> openSampleReader() const;
};

using AssetPointer = std::shared_ptr<const Asset>;

} // namespace cantorel::media
