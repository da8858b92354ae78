#include "tags/taglib/MovieTags.h"

#include "tags/MovieFile.h"
#include "tags/SplicedFile.h"
#include "tags/TagFailures.h"
#include "tags/taglib/SplicedStream.h"
#include "tags/taglib/TagValues.h"

#include <taglib/mp4coverart.h>
#include <taglib/mp4file.h>
#include <taglib/mp4tag.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace cantorel {

namespace {

QByteArray box(const char *type, const QByteArray &content) {
    QByteArray bytes(4, '\0');
    setBigNumber(bytes, 0, 4, static_cast<std::uint64_t>(content.size()) + 8);
    return bytes + type + content;
}

QByteArray textItem(const char *type, const TagLib::String &text) {
    constexpr char kUtf8[] = {0, 0, 0, 1, 0, 0, 0, 0}; // and no country
    const std::string bytes = text.to8Bit(true);
    return box(type, box("data", QByteArray(kUtf8, 8) + QByteArray::fromStdString(bytes)));
}

// The list as it is to become: what isn't touched as it stands, then what is new.
QByteArray itemsAfter(const SplicedFile &file, const MovieFile &movie, const TagChanges &changes) {
    std::vector<std::string> gone;
    QByteArray added;
    const auto change = [&](const auto &value, const std::vector<std::string> &types, const QByteArray &item) {
        if (!value)
            return;
        gone.insert(gone.end(), types.begin(), types.end());
        added += item;
    };
    const auto text = [](const char *type, const std::optional<TagLib::String> &value) {
        return value && !value->isEmpty() ? textItem(type, *value) : QByteArray();
    };
    change(changes.title, {"\251nam"}, text("\251nam", changes.title));
    change(changes.artist, {"\251ART"}, text("\251ART", changes.artist));
    change(changes.album, {"\251alb"}, text("\251alb", changes.album));
    change(changes.genre, {"\251gen", "gnre"}, text("\251gen", changes.genre));
    change(changes.year, {"\251day"},
           changes.year.value_or(0) == 0 ? QByteArray()
                                         : textItem("\251day", TagLib::String::number(int(*changes.year))));
    QByteArray items;
    if (movie.items)
        for (const MovieBox &item : MovieFile::childrenOf(file, *movie.items))
            if (std::find(gone.begin(), gone.end(), item.type) == gone.end())
                items += file.read(item.at, item.size());
    return items + added;
}

// Every number of the tables that leads behind `from` leads that much farther. False where one can't.
bool moveTable(SplicedFile &file, const MovieBox &table, qsizetype first, qsizetype step, int width, std::int64_t from,
               std::int64_t farther) {
    QByteArray bytes = file.read(table.begin, table.end - table.begin);
    const auto count = static_cast<qsizetype>(bigNumber(bytes, first - 4, 4));
    if (count > (bytes.size() - first) / step)
        return false;
    const qsizetype offset = step == width ? 0 : width; // a time stands in front of those of random access
    for (qsizetype at = first; at < first + count * step; at += step) {
        const std::uint64_t place = bigNumber(bytes, at + offset, width);
        if (place < static_cast<std::uint64_t>(from))
            continue;
        const std::uint64_t moved = place + static_cast<std::uint64_t>(farther);
        if (width == 4 && moved > std::numeric_limits<std::uint32_t>::max())
            return false;
        setBigNumber(bytes, at + offset, width, moved);
    }
    file.splice(table.begin, bytes.size(), bytes);
    return true;
}

bool moveAll(SplicedFile &file, const MovieFile &movie, std::int64_t from, std::int64_t farther) {
    for (const MovieBox &table : movie.chunkTables) {
        const int width = table.type == "stco" ? 4 : 8;
        if (!moveTable(file, table, 8, width, width, from, farther))
            return false;
    }
    for (const MovieBox &table : movie.randomAccess) {
        const QByteArray head = file.read(table.begin, 12);
        const int width = bigNumber(head, 0, 1) == 1 ? 8 : 4;
        const auto sizes = bigNumber(head, 8, 4);
        const auto step = static_cast<qsizetype>(2 * width + 3 + (sizes >> 4 & 3) + (sizes >> 2 & 3) + (sizes & 3));
        if (!moveTable(file, table, 16, step, width, from, farther))
            return false;
    }
    return true;
}

bool grow(SplicedFile &file, const MovieBox &box, std::int64_t by) {
    QByteArray head = file.read(box.at, 4);
    const std::uint64_t size = static_cast<std::uint64_t>(box.size() + by);
    if (box.begin - box.at != 8 || bigNumber(head, 0, 4) == 0 || size > std::numeric_limits<std::uint32_t>::max())
        return false;
    setBigNumber(head, 0, 4, size);
    file.splice(box.at, 4, head);
    return true;
}

// A list of items for people begins like this.
QByteArray newMeta(const QByteArray &list) {
    return box("meta",
               QByteArray(4, '\0') + box("hdlr", QByteArray(8, '\0') + "mdirappl" + QByteArray(9, '\0')) + list);
}

bool putItems(SplicedFile &file, const MovieFile &movie, const QByteArray &items) {
    QByteArray list = box("ilst", items);
    std::int64_t at = movie.movie.end, replaced = 0;
    std::vector<const MovieBox *> around{&movie.movie};
    if (movie.userData) {
        around.push_back(&*movie.userData);
        at = movie.userData->begin;
    }
    if (movie.meta) {
        around.push_back(&*movie.meta);
        at = movie.items ? movie.items->at : movie.meta->end;
        replaced = movie.items ? movie.items->size() : 0;
    } else
        list = movie.userData ? newMeta(list) : box("udta", newMeta(list));
    const std::int64_t by = list.size() - replaced;
    // What stands in front keeps its size, so all places stay true until the list itself is put in.
    const bool canGrow =
        std::all_of(around.begin(), around.end(), [&](const MovieBox *outer) { return grow(file, *outer, by); });
    if (!canGrow || !moveAll(file, movie, at, by))
        return false;
    file.splice(at, replaced, list);
    return true;
}

// Of one whose boxes are known to be whole; nothing where TagLib takes it for none.
std::optional<id3Tag> recordOfMovie(SplicedFile &file) {
    SplicedStream stream(file);
    TagLib::MP4::File movie(&stream, false);
    if (!movie.isValid() || movie.tag() == nullptr)
        return {};
    if (movie.tag()->isEmpty())
        return id3Tag();
    id3Tag record = recordOf(*movie.tag());
    if (movie.tag()->contains("covr")) {
        const TagLib::MP4::CoverArtList covers = movie.tag()->item("covr").toCoverArtList();
        if (!covers.isEmpty())
            record.id3Image = pictureOf(covers.front().data());
    }
    return record;
}

} // namespace

id3Tag readMovieTags(SplicedFile &file) {
    return MovieFile::read(file) ? recordOfMovie(file).value_or(id3Tag()) : id3Tag();
}

foundation::Result<std::optional<id3Tag>> editMovieTags(SplicedFile &file, const id3TagEdit &edit,
                                                        const QString &path) {
    const auto movie = MovieFile::read(file);
    if (!movie || !movie->canMove || movie->tracks.empty())
        return tag_failures::noMovie(path);
    const auto now = recordOfMovie(file);
    if (!now)
        return tag_failures::noMovie(path);
    // The cover stays as it is: Tools::canEditM4ACover() is deliberately false.
    const id3Tag wanted = edit.applied(*now);
    const TagChanges changes(*now, wanted);
    if (changes.isEmpty())
        return std::optional<id3Tag>();
    if (!putItems(file, *movie, itemsAfter(file, *movie, changes)))
        return tag_failures::noMovie(path);
    return std::optional(wanted);
}

} // namespace cantorel
