#include "tags/AudioIdentify.h"
#include "tags/TagFormats.h"
#include "tags/taglib/CoverTags.h"
#include "tags/taglib/MovieTags.h"
#include "tags/taglib/MpegTags.h"
#include "tags/taglib/TagValues.h"

#include <QFile>

#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1genres.h>
#include <taglib/xiphcomment.h>

namespace cantorel {

TagLib::String AudioIdentify::NSStringToTagLibString(const QString &text) {
    return text.isEmpty() ? TagLib::String() : TagLib::String(text.toStdString(), TagLib::String::UTF8);
}

QString AudioIdentify::TagLibStringToNSString(const TagLib::String &text) {
    return QString::fromStdString(text.to8Bit(true));
}

namespace {

QByteArray frontOf(const TagLib::List<TagLib::FLAC::Picture *> &pictures) {
    const TagLib::FLAC::Picture *best = nullptr;
    for (const TagLib::FLAC::Picture *picture : pictures)
        if (!best || picture->type() == TagLib::FLAC::Picture::FrontCover)
            best = picture;
    return best ? QByteArray(best->data().data(), static_cast<qsizetype>(best->data().size())) : QByteArray();
}

class TagLibFormats : public TagFormats {
public:
    std::optional<id3Tag> read(SplicedFile &file, bool isMovie) const override {
        return isMovie ? std::optional(readMovieTags(file)) : readMpegTags(file);
    }

    foundation::Result<std::optional<id3Tag>> edit(SplicedFile &file, bool isMovie, const id3TagEdit &edit,
                                                   const QString &path) const override {
        return isMovie ? editMovieTags(file, edit, path) : editMpegTags(file, edit, path);
    }

    QString kept(const QString &text) const override {
        return AudioIdentify::TagLibStringToNSString(AudioIdentify::NSStringToTagLibString(text));
    }

    QStringList genres() const override {
        QStringList genres;
        for (const TagLib::String &genre : TagLib::ID3v1::genreList())
            genres << AudioIdentify::TagLibStringToNSString(genre);
        return genres;
    }

    id3Tag ofSong(const QString &path) const override {
        const TagLib::FileRef file(QFile::encodeName(path).constData(), false);
        if (file.isNull() || !file.tag())
            return {};
        id3Tag tags = recordOf(*file.tag());
        if (auto *flac = dynamic_cast<TagLib::FLAC::File *>(file.file()))
            tags.id3Image = frontOf(flac->pictureList());
        else if (auto *comment = dynamic_cast<TagLib::Ogg::XiphComment *>(file.tag()))
            tags.id3Image = frontOf(comment->pictureList());
        return tags;
    }

    QByteArray cover(const QString &path) const override { return readCover(path); }
    bool giveCover(const QString &path, const QByteArray &cover) const override { return writeCover(path, cover); }
};

} // namespace

} // namespace cantorel

extern "C" __attribute__((visibility("default"))) const cantorel::TagFormats *cantorel_tag_formats() {
    static const cantorel::TagLibFormats formats;
    return &formats;
}
