#include "tags/id3Tag.h"

#include "tags/AudioIdentify.h"

#include <taglib/id3v1genres.h>

namespace cantorel {

QString id3Tag::description() const {
    return QStringLiteral("id3 tag: \n title: %1 \n artist: %2 \n album: %3 \n genre: %4 \n year: %5 \n image path: %6")
        .arg(id3Title, id3Artist, id3Album, id3Genre, id3Year, id3ImagePath);
}

QStringList id3Tag::getAllGenreList() {
    QStringList genres;
    for (const TagLib::String &genre : TagLib::ID3v1::genreList())
        genres << AudioIdentify::TagLibStringToNSString(genre);
    return genres;
}

id3Tag id3TagEdit::applied(id3Tag tag) const {
    tag.id3Title = title.value_or(tag.id3Title);
    tag.id3Artist = artist.value_or(tag.id3Artist);
    tag.id3Album = album.value_or(tag.id3Album);
    tag.id3Genre = genre.value_or(tag.id3Genre);
    tag.id3Year = year.value_or(tag.id3Year);
    tag.id3Image = image.value_or(tag.id3Image);
    return tag;
}

} // namespace cantorel
