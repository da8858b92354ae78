#include "tags/identify/SongTags.h"

#include "tags/AudioIdentify.h"
#include "tags/TagReading.h"

#include <QFile>

#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/tag.h>
#include <taglib/xiphcomment.h>

namespace cantorel {

namespace {

QByteArray frontOf(const TagLib::List<TagLib::FLAC::Picture *> &pictures) {
    const TagLib::FLAC::Picture *best = nullptr;
    for (const TagLib::FLAC::Picture *picture : pictures)
        if (!best || picture->type() == TagLib::FLAC::Picture::FrontCover)
            best = picture;
    return best ? QByteArray(best->data().data(), static_cast<qsizetype>(best->data().size())) : QByteArray();
}

} // namespace

id3Tag songTags(const QString &path) {
    if (auto tags = readTags(path); tags && !tags->id3Title.isEmpty())
        return *tags;
    // Kinds whose tags we don't write.
    const TagLib::FileRef file(QFile::encodeName(path).constData(), false);
    if (file.isNull() || !file.tag())
        return {};
    const auto text = [](const TagLib::String &from) { return AudioIdentify::TagLibStringToNSString(from); };
    const TagLib::Tag &tag = *file.tag();
    id3Tag tags;
    tags.id3Title = text(tag.title());
    tags.id3Artist = text(tag.artist());
    tags.id3Album = text(tag.album());
    tags.id3Genre = text(tag.genre());
    if (tag.year() > 0)
        tags.id3Year = QString::number(tag.year());
    if (auto *flac = dynamic_cast<TagLib::FLAC::File *>(file.file()))
        tags.id3Image = frontOf(flac->pictureList());
    else if (auto *comment = dynamic_cast<TagLib::Ogg::XiphComment *>(file.tag()))
        tags.id3Image = frontOf(comment->pictureList());
    return tags;
}

} // namespace cantorel
