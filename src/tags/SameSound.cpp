#include "tags/SameSound.h"

#include "tags/MovieFile.h"
#include "tags/MpegSound.h"
#include "tags/SplicedFile.h"

#include <algorithm>
#include <vector>

namespace cantorel {

namespace {

// The content of a track without the places of its sound, which are added to `places`.
QByteArray trackWithoutPlaces(const SplicedFile &file, const MovieFile &movie, const MovieBox &track,
                              std::vector<std::uint64_t> &places) {
    QByteArray bytes = file.read(track.at, track.size());
    for (const MovieBox &table : movie.chunkTables) {
        if (table.at < track.at || table.end > track.end)
            continue;
        const int width = table.type == "stco" ? 4 : 8;
        for (qsizetype at = table.begin - track.at + 8; at + width <= table.end - track.at; at += width) {
            places.push_back(bigNumber(bytes, at, width));
            setBigNumber(bytes, at, width, 0);
        }
    }
    return bytes;
}

} // namespace

bool haveSameMovieSound(const SplicedFile &one, const SplicedFile &other) {
    const auto first = MovieFile::read(one), second = MovieFile::read(other);
    if (!first || !second || first->sound.size() != second->sound.size()
        || first->tracks.size() != second->tracks.size())
        return false;
    for (std::size_t i = 0; i < first->sound.size(); ++i) {
        const MovieBox &box = first->sound[i], &twin = second->sound[i];
        const std::int64_t moved = second->sound[0].at - first->sound[0].at;
        // Fragments count from their own start, so their distances stay as well.
        if (box.type != twin.type || box.size() != twin.size() || (first->isFragmented && twin.at - box.at != moved)
            || !haveSameBytes(one, box.at, other, twin.at, box.size()))
            return false;
    }
    for (std::size_t i = 0; i < first->tracks.size(); ++i) {
        std::vector<std::uint64_t> places, others;
        if (trackWithoutPlaces(one, *first, first->tracks[i], places)
                != trackWithoutPlaces(other, *second, second->tracks[i], others)
            || places.size() != others.size())
            return false;
        for (std::size_t chunk = 0; chunk < places.size(); ++chunk) {
            const auto place = static_cast<std::int64_t>(places[chunk]);
            const auto data = std::find_if(first->sound.begin(), first->sound.end(), [&](const MovieBox &box) {
                return box.type == "mdat" && box.begin <= place && place <= box.end;
            });
            if (data == first->sound.end()
                || place - data->at
                       != static_cast<std::int64_t>(others[chunk])
                              - second->sound[static_cast<std::size_t>(data - first->sound.begin())].at)
                return false;
        }
    }
    return true;
}

bool haveSameMpegSound(const SplicedFile &one, const SplicedFile &other) {
    const MpegSound first = findMpegSound(one), second = findMpegSound(other);
    return first.kind == second.kind && first.end - first.begin == second.end - second.begin
           && haveSameBytes(one, first.begin, other, second.begin, first.end - first.begin);
}

} // namespace cantorel
