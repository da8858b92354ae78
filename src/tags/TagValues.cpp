#include "tags/TagValues.h"

#include "util/tools/Tools.h"

namespace cantorel {

namespace {

constexpr unsigned kLastYear = 9999; // four digits are read back

std::optional<TagLib::String> changedText(const QString &now, const QString &wanted) {
    return now == wanted ? std::nullopt : std::optional(AudioIdentify::NSStringToTagLibString(wanted));
}

} // namespace

std::optional<unsigned> yearToWrite(const QString &text) {
    if (!Tools::isNumerice(text))
        return {};
    unsigned year = 0;
    for (const char32_t digit : text.toUcs4()) { // of any script
        year = 10 * year + static_cast<unsigned>(QChar::digitValue(digit));
        if (year > kLastYear)
            return {};
    }
    return year;
}

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
