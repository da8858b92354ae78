#pragma once

#include "tags/id3Tag.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace TagLib {
class String;
}

namespace cantorel {

// Reads and writes the tags of sound files: the list of items of an M4A, and ID3 in every other kind. Stateless; any
// thread. A failure is logged and answered with false or nothing.
class AudioIdentify {
public:
    AudioIdentify() = delete;

    // Nothing for a file that isn't there or that holds no sound of MPEG; a blank record for a broken M4A, and for a
    // WAV, which has no such tags.
    static std::optional<id3Tag> getID3TagFromFile(const QString &path);

    // See writeTags(); what restores the file is forgotten.
    static bool saveID3ToFile(const id3Tag &tag, const QString &toFile);

    // The picture itself where both sides are below 301 pixels, else a JPEG whose longer side has 300; empty for what
    // is no picture.
    static QByteArray correctMusicCoverImage(const QByteArray &image);

    // For the module of TagLib, and defined there. Null for an empty text, which clears a field.
    static TagLib::String NSStringToTagLibString(const QString &text);
    static QString TagLibStringToNSString(const TagLib::String &text);
};

} // namespace cantorel
