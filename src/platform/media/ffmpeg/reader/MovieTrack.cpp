#include "platform/media/ffmpeg/reader/MovieTrack.h"

#include "platform/media/BoxReader.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

namespace cantorel::media {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint64_t kLargestMovie = 256 * 1024 * 1024;
constexpr std::uint64_t kEmptyEdit = UINT64_MAX;
constexpr std::int64_t kLargestTime = std::int64_t(1) << 48; // units of a media; hostile ones are cut off here

std::vector<std::uint8_t> readMovie(const SourceFile &file) {
    std::int64_t position = 0;
    while (position + 8 <= file.size()) {
        std::uint8_t header[16] = {};
        if (!file.read(position, header))
            return {};
        const BoxReader box(header);
        std::uint64_t size = box.number(0, 4);
        std::uint64_t headerSize = 8;
        if (size == 1) {
            size = box.number(8, 8);
            headerSize = 16;
        }
        const auto left = static_cast<std::uint64_t>(file.size() - position);
        if (size == 0 || size > left)
            size = left;
        if (size < headerSize)
            return {};
        if (box.text(4, 4) == "moov") {
            std::vector<std::uint8_t> movie(std::min(size - headerSize, kLargestMovie));
            return file.read(position + static_cast<std::int64_t>(headerSize), movie) ? movie
                                                                                      : std::vector<std::uint8_t>();
        }
        position += static_cast<std::int64_t>(size);
    }
    return {};
}

// The next box of the type behind what `after` holds.
std::optional<Bytes> next(Bytes within, std::string_view type, std::optional<Bytes> after) {
    const std::size_t position =
        after ? static_cast<std::size_t>(after->data() - within.data()) + after->size() : std::size_t(0);
    return BoxReader(within).find(type, position);
}

std::int64_t bounded(std::uint64_t time) {
    return static_cast<std::int64_t>(std::min<std::uint64_t>(time, kLargestTime));
}

std::int64_t timescaleOf(std::optional<Bytes> header) {
    if (!header)
        return 1;
    const BoxReader reader(*header);
    return std::max<std::int64_t>(static_cast<std::int64_t>(reader.number(reader.number(0, 1) == 1 ? 20 : 12, 4)), 1);
}

void readEdits(Bytes list, std::int64_t movieUnits, std::int64_t mediaUnits, MovieTrack &track) {
    const BoxReader reader(list);
    const bool isLong = reader.number(0, 1) == 1;
    const std::size_t width = isLong ? 8 : 4;
    const std::uint64_t count = std::min<std::uint64_t>(reader.number(4, 4), list.size() / (2 * width + 4));
    int heard = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::size_t at = 8 + i * (2 * width + 4);
        const std::uint64_t length = reader.number(at, width);
        std::uint64_t start = reader.number(at + width, width);
        if (!isLong && start == UINT32_MAX)
            start = kEmptyEdit;
        if (start == kEmptyEdit)
            continue;
        ++heard;
        track.start = bounded(start);
        track.lengthUnit = mediaUnits / movieUnits + 1;
        if (length > 0)
            track.length = static_cast<std::int64_t>(static_cast<__int128>(bounded(length)) * mediaUnits / movieUnits);
    }
    track.hasSeveralEdits = heard > 1;
}

// How the program that sells music says the same, to the frame.
void readPlayedPart(Bytes movie, MovieTrack &track) {
    const auto meta = descend(movie, {"udta", "meta"});
    if (!meta || meta->size() < 4)
        return;
    const auto list = BoxReader(*meta).find("ilst", 4);
    for (auto item = list ? next(*list, "----", {}) : list; item; item = next(*list, "----", item)) {
        const auto name = BoxReader(*item).find("name");
        const auto data = BoxReader(*item).find("data");
        if (!name || !data || name->size() < 4 || data->size() < 8
            || BoxReader(*name).text(4, name->size() - 4) != "iTunSMPB")
            continue;
        const std::string text(BoxReader(*data).text(8, data->size() - 8));
        unsigned priming = 0, padding = 0;
        std::uint64_t frames = 0;
        if (std::sscanf(text.c_str(), "%*x %x %x %" SCNx64, &priming, &padding, &frames) == 3 && frames > 0) {
            track.start = priming;
            track.length = bounded(frames);
            track.lengthUnit = 0;
        }
    }
}

} // namespace

std::optional<MovieTrack> readMovieTrack(const SourceFile &file, std::uint32_t trackId) {
    const std::vector<std::uint8_t> movie = readMovie(file);
    for (auto trak = next(movie, "trak", {}); trak; trak = next(movie, "trak", trak)) {
        const auto header = BoxReader(*trak).find("tkhd");
        if (!header)
            continue;
        const BoxReader tkhd(*header);
        if (tkhd.number(tkhd.number(0, 1) == 1 ? 20 : 12, 4) != trackId)
            continue;
        MovieTrack track;
        track.isFragmented = BoxReader(movie).find("mvex").has_value();
        if (const auto stsd = descend(*trak, {"mdia", "minf", "stbl", "stsd"})) {
            const std::string_view entry = BoxReader(*stsd).text(12, 4);
            track.isProtected = entry == "enca" || entry == "drms" || entry == "aavd";
        }
        if (const auto list = descend(*trak, {"edts", "elst"}))
            readEdits(*list, timescaleOf(BoxReader(movie).find("mvhd")), timescaleOf(descend(*trak, {"mdia", "mdhd"})),
                      track);
        if (!track.hasSeveralEdits)
            readPlayedPart(movie, track);
        return track;
    }
    return {};
}

} // namespace cantorel::media
