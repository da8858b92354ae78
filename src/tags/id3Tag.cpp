#include "tags/id3Tag.h"

#include "tags/TagFormats.h"
#include "util/tools/Tools.h"

namespace cantorel {

namespace {

constexpr unsigned kLastYear = 9999; // four digits are read back

} // namespace

QString id3Tag::description() const {
    return QStringLiteral("id3 tag: \n title: %1 \n artist: %2 \n album: %3 \n genre: %4 \n year: %5 \n image path: %6")
        .arg(id3Title, id3Artist, id3Album, id3Genre, id3Year, id3ImagePath);
}

QStringList id3Tag::getAllGenreList() {
    const TagFormats *formats = tagFormats();
    return formats ? formats->genres() : QStringList();
}

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
