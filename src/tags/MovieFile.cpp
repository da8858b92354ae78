#include "tags/MovieFile.h"

#include "tags/SplicedFile.h"

#include <QtEndian>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace cantorel {

namespace {

constexpr int kDeepest = 10, kMostBoxes = 1'000'000;

// Nothing when there is none that is whole.
std::optional<MovieBox> boxAt(const SplicedFile &file, std::int64_t at, std::int64_t end) {
    char head[16] = {};
    if (at < 0 || at > end - 8 || file.readTo(head, at, std::min<std::int64_t>(end - at, sizeof head)) < 8)
        return {};
    MovieBox box{std::string(head + 4, 4), at, at + 8, at + qFromBigEndian<quint32>(head)};
    if (box.end == at + 1) {
        box.begin = at + 16;
        box.end = at + static_cast<std::int64_t>(qFromBigEndian<quint64>(head + 8) & 0x7FFF'FFFF'FFFF);
    } else if (box.end == at)
        box.end = end; // it reaches up to the end
    if (box.end < box.begin || box.end > end)
        return {};
    return box;
}

// Walks through the boxes that hold others and notes those that are looked for.
class Walk {
public:
    Walk(const SplicedFile &file, MovieFile &found) : mFile(file), mFound(found) {}

    bool through(std::int64_t begin, std::int64_t end, const std::string &above, int depth) {
        for (std::int64_t at = begin; at < end;) {
            const auto box = boxAt(mFile, at, end);
            if (!box)
                // Some programs end user data with a number of 0, and files with a few bytes more.
                return end - at < 8;
            if (++mBoxes > kMostBoxes || !note(*box, above, depth))
                return false;
            at = box->end;
        }
        return true;
    }

private:
    bool note(const MovieBox &box, const std::string &above, int depth) {
        const std::string &type = box.type;
        if (depth == 0 && (type == "mdat" || type == "moof"))
            mFound.sound.push_back(box);
        if (depth == 0 && type == "moov") {
            if (mFound.movie.size() > 0)
                return false;
            mFound.movie = box;
            mFound.canMove = mFound.canMove && box.begin - box.at == 8;
        }
        const auto only = [&](std::optional<MovieBox> &place, const char *wanted, const char *parent) {
            if (type == wanted && above == parent && !place)
                place = box;
        };
        only(mFound.userData, "udta", "moov");
        if (mFound.userData && mFound.userData->end >= box.end)
            only(mFound.meta, "meta", "udta");
        if (mFound.meta && mFound.meta->end >= box.end)
            only(mFound.items, "ilst", "meta");
        if (type == "trak" && above == "moov")
            mFound.tracks.push_back(box);
        if (type == "stco" || type == "co64")
            mFound.chunkTables.push_back(box);
        if (type == "tfra")
            mFound.randomAccess.push_back(box);
        if (type == "moof")
            mFound.isFragmented = true;
        if (type == "tfhd") { // must count from its own fragment
            const auto flags = bigNumber(mFile.read(box.begin, 4), 0, 4);
            mFound.canMove = mFound.canMove && (flags & 0x020000) && !(flags & 1);
        }
        if (type == "saio" && above == "stbl")
            mFound.canMove = false;

        static constexpr std::string_view kHolders[] = {"moov", "udta", "mdia", "meta", "ilst", "stbl",
                                                        "minf", "moof", "traf", "trak", "stsd", "mfra"};
        if (std::find(std::begin(kHolders), std::end(kHolders), type) == std::end(kHolders))
            return true;
        std::int64_t begin = box.begin;
        if (type == "meta" && mFile.read(begin + 4, 4) != "hdlr")
            begin += 4;
        else if (type == "stsd")
            begin += 8;
        return depth < kDeepest && begin <= box.end && through(begin, box.end, type, depth + 1);
    }

    const SplicedFile &mFile;
    MovieFile &mFound;
    int mBoxes = 0;
};

} // namespace

std::uint64_t bigNumber(const QByteArray &bytes, qsizetype at, int length) {
    std::uint64_t number = 0;
    for (qsizetype i = at; i < at + length; ++i)
        number = number << 8 | (i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : 0U);
    return number;
}

void setBigNumber(QByteArray &bytes, qsizetype at, int length, std::uint64_t number) {
    for (int i = 0; i < length && at + i < bytes.size(); ++i)
        bytes[at + i] = static_cast<char>(number >> 8 * (length - 1 - i));
}

std::optional<MovieFile> MovieFile::read(const SplicedFile &file) {
    MovieFile movie;
    if (file.read(4, 4) != "ftyp" || !Walk(file, movie).through(0, file.size(), {}, 0) || movie.movie.size() == 0)
        return {};
    return movie;
}

std::vector<MovieBox> MovieFile::childrenOf(const SplicedFile &file, const MovieBox &box) {
    std::vector<MovieBox> children;
    for (auto child = boxAt(file, box.begin, box.end); child; child = boxAt(file, child->end, box.end))
        children.push_back(*child);
    return children;
}

} // namespace cantorel
