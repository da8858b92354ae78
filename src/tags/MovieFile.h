#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cantorel {

class SplicedFile;

// A box of an MPEG-4 file: where it stands and what it holds.
struct MovieBox {
    std::string type;                        // four signs
    std::int64_t at = 0, begin = 0, end = 0; // the box, its content, what is behind it

    std::int64_t size() const { return end - at; }
};

// The boxes of a file that the writing of tags has to do with. Broken files are none: their boxes reach beyond each
// other, are nested deeper than any real ones, or there is no movie.
struct MovieFile {
    std::vector<MovieBox> sound; // "mdat" and "moof" of the top, in their order
    MovieBox movie;
    std::vector<MovieBox> tracks, chunkTables, randomAccess; // "trak", "stco" and "co64", "tfra"
    std::optional<MovieBox> userData, meta, items;           // "udta", "meta", "ilst"
    bool isFragmented = false;
    bool canMove = true; // what refers to places in the file is known to us

    static std::optional<MovieFile> read(const SplicedFile &file);
    // Those of a list of items.
    static std::vector<MovieBox> childrenOf(const SplicedFile &file, const MovieBox &box);
};

// Big-endian numbers, four or eight bytes long; 0 behind the end.
std::uint64_t bigNumber(const QByteArray &bytes, qsizetype at, int length);
void setBigNumber(QByteArray &bytes, qsizetype at, int length, std::uint64_t number);

} // namespace cantorel
