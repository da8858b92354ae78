#include "tags/taglib/TagValues.h"

namespace cantorel {

namespace {

std::optional<TagLib::String> changedText(const QString &now, const QString &wanted) {
    return now == wanted ? std::nullopt : std::optional(AudioIdentify::NSStringToTagLibString(wanted));
}

} // namespace

TagChanges::TagChanges(const id3Tag &now, const id3Tag &wanted)
    : title(changedText(now.id3Title, wanted.id3Title)),
      artist(changedText(now.id3Artist, wanted.id3Artist)),
      album(changedText(now.id3Album, wanted.id3Album)),
      genre(changedText(now.id3Genre, wanted.id3Genre)),
      year(yearToWrite(wanted.id3Year)) {
    if (year == yearToWrite(now.id3Year).value_or(0))
        year.reset();
}

void TagChanges::applyTo(TagLib::Tag &tag) const {
    if (title)
        tag.setTitle(*title);
    if (artist)
        tag.setArtist(*artist);
    if (album)
        tag.setAlbum(*album);
    if (genre)
        tag.setGenre(*genre);
    if (year)
        tag.setYear(*year);
}

} // namespace cantorel
