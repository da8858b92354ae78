#pragma once

#include "tags/AudioIdentify.h"
#include "tags/Pictures.h"
#include "tags/id3Tag.h"

#include <QByteArray>
#include <QString>

#include <taglib/tag.h>

#include <optional>

namespace cantorel {

// The texts of a tag as a record; a year of 0 is none.
inline id3Tag recordOf(const TagLib::Tag &tag) {
    id3Tag record;
    record.id3Title = AudioIdentify::TagLibStringToNSString(tag.title());
    record.id3Artist = AudioIdentify::TagLibStringToNSString(tag.artist());
    record.id3Album = AudioIdentify::TagLibStringToNSString(tag.album());
    record.id3Genre = AudioIdentify::TagLibStringToNSString(tag.genre());
    if (tag.year() != 0)
        record.id3Year = QString::number(tag.year());
    return record;
}

inline QByteArray pictureOf(const TagLib::ByteVector &data) {
    const QByteArray bytes(data.data(), data.size());
    return pictureKind(bytes) != nullptr && bytes.size() <= kLargestPicture ? bytes : QByteArray();
}

// What of a file's tag becomes another value; no value clears.
struct TagChanges {
    std::optional<TagLib::String> title, artist, album, genre;
    std::optional<unsigned> year;

    TagChanges(const id3Tag &now, const id3Tag &wanted);
    bool isEmpty() const { return !title && !artist && !album && !genre && !year; }
    void applyTo(TagLib::Tag &tag) const;
};

} // namespace cantorel
