#include "platform/media/MovieReading.h"

#include "platform/media/BoxReader.h"
#include "platform/media/MovieBoxKinds.h"
#include "platform/media/MovieBoxes.h"

#include <numeric>
#include <string_view>
#include <utility>

namespace cantorel::media {

namespace {

std::optional<AacFormat> readSound(std::span<const std::uint8_t> trak) {
    const auto mdhd = descend(trak, {"mdia", "mdhd"});
    const auto elst = descend(trak, {"edts", "elst"});
    const auto stsd = descend(trak, {"mdia", "minf", "stbl", "stsd"});
    if (!mdhd || !elst || !stsd || stsd->size() < 16 + 28)
        return {};
    const auto esds = BoxReader(*stsd).find("esds", 8 + 8 + 28);
    if (!esds)
        return {};
    AacFormat format;
    format.sampleRate = static_cast<int>(BoxReader(*mdhd).number(20, 4));
    format.channels = static_cast<int>(BoxReader(*stsd).number(8 + 8 + 16, 2));
    format.primingFrames = static_cast<int>(BoxReader(*elst).number(16, 8));
    const BoxReader descriptors(*esds);
    format.bitRate = static_cast<int>(descriptors.number(26, 4));
    const std::size_t configSize = descriptors.number(34, 1) & 0x7F;
    const std::string_view config = descriptors.text(35, configSize);
    format.config.assign(config.begin(), config.end());
    const bool sane = format.sampleRate > 0 && format.sampleRate <= 96000 && format.channels >= 1
                      && format.channels <= kMostChannels && format.primingFrames >= 0
                      && format.primingFrames <= 16 * kFramesPerPacket && !config.empty();
    return sane ? std::optional(format) : std::nullopt;
}

std::optional<AvcFormat> readPictures(std::span<const std::uint8_t> trak) {
    constexpr std::size_t kEntry = 8 + 8 + 78; // where the boxes of the entry begin
    const auto mdhd = descend(trak, {"mdia", "mdhd"});
    const auto stsd = descend(trak, {"mdia", "minf", "stbl", "stsd"});
    if (!mdhd || BoxReader(*mdhd).number(20, 4) != kPictureTimescale || !stsd || stsd->size() < kEntry)
        return {};
    const BoxReader entry(*stsd);
    const auto config = entry.find("avcC", kEntry);
    const auto rates = entry.find("btrt", kEntry);
    AvcFormat format;
    format.width = static_cast<int>(entry.number(8 + 8 + 24, 2));
    format.height = static_cast<int>(entry.number(8 + 8 + 26, 2));
    if (!config || config->empty() || !rates || format.width < 1 || format.height < 1)
        return {};
    format.config.assign(config->begin(), config->end());
    format.bitRate = static_cast<int>(BoxReader(*rates).number(8, 4));
    return format;
}

} // namespace

std::optional<UnfinishedStart> readMovieStart(std::span<const std::uint8_t> fileStart) {
    const BoxReader file(fileStart);
    const bool hasPictures = file.text(8, 4) == kMovieBrand;
    if (file.text(4, 4) != "ftyp" || (!hasPictures && file.text(8, 4) != kSoundBrand)
        || file.number(0, 4) != kPlaceholderPosition || file.text(kPlaceholderPosition + 4, 4) != "free"
        || file.text(kPlaceholderPosition + 8, 8) != kMark)
        return {};
    const std::size_t moovPosition = kPlaceholderPosition + kPlaceholderSize;
    if (file.text(moovPosition + 4, 4) != "moov")
        return {};
    const auto moov = file.find("moov", moovPosition);
    if (!moov)
        return {};
    UnfinishedStart start;
    start.size = moovPosition + 8 + moov->size();
    BoxReader tracks(*moov);
    auto trak = tracks.find("trak");
    if (hasPictures) {
        start.format.pictures = trak ? readPictures(*trak) : std::nullopt;
        if (!start.format.pictures)
            return {};
        trak = tracks.find("trak", static_cast<std::size_t>(trak->data() - moov->data()) + trak->size());
        if (!trak) // a movie without sound
            return start;
    }
    start.format.sound = trak ? readSound(*trak) : std::nullopt;
    return start.format.sound ? std::optional(start) : std::nullopt;
}

std::uint64_t FragmentRuns::pictureBytes() const {
    return std::accumulate(pictures.begin(), pictures.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const PictureRun::Entry &entry) { return sum + entry.bytes; });
}

std::uint64_t FragmentRuns::packetBytes() const {
    return std::accumulate(packetSizes.begin(), packetSizes.end(), std::uint64_t{0});
}

std::optional<FragmentRuns> readFragment(std::span<const std::uint8_t> moof) {
    const auto contents = descend(moof, {"moof"});
    if (!contents)
        return {};
    FragmentRuns runs;
    std::size_t position = 0;
    while (const auto traf = BoxReader(*contents).find("traf", position)) {
        position = static_cast<std::size_t>(traf->data() - contents->data()) + traf->size();
        const auto tfhd = descend(*traf, {"tfhd"});
        const auto tfdt = descend(*traf, {"tfdt"});
        const auto trun = descend(*traf, {"trun"});
        if (!tfhd || !tfdt || !trun)
            return {};
        const bool hasPictures = BoxReader(*tfhd).number(4, 4) == kPictureTrackId;
        const std::size_t width = hasPictures ? 12 : 4;
        const BoxReader reader(*trun);
        const std::uint64_t count = reader.number(4, 4);
        if (reader.number(0, 4) != (hasPictures ? kPictureRun : kSoundRun) || count == 0
            || trun->size() != 12 + width * count)
            return {};
        (hasPictures ? runs.firstPicture : runs.firstFrame) = BoxReader(*tfdt).number(4, 8);
        for (std::size_t i = 0; i < count; ++i) {
            const auto value = [&](std::size_t field) {
                return static_cast<std::uint32_t>(reader.number(12 + width * i + 4 * field, 4));
            };
            if (hasPictures)
                runs.pictures.push_back({value(1), value(0), value(2) == kSyncSample});
            else if (value(0) <= SampleTable::kLargestPacket)
                runs.packetSizes.push_back(value(0));
            else
                return {};
        }
    }
    return runs.pictures.empty() && runs.packetSizes.empty() ? std::nullopt : std::optional(std::move(runs));
}

std::optional<double>
finishedMovieSeconds(const std::function<std::vector<std::uint8_t>(std::uint64_t, std::uint64_t)> &read) {
    const auto bytes = read(0, kPlaceholderPosition + kPlaceholderSize);
    const BoxReader start(bytes);
    if (start.text(4, 4) != "ftyp" || start.text(8, 4) != kMovieBrand || start.number(0, 4) != kPlaceholderPosition
        || start.number(kPlaceholderPosition, 4) != kLongBox || start.text(kPlaceholderPosition + 4, 4) != "mdat")
        return {};
    constexpr std::uint64_t kHeaders = 8 + 8 + 32; // of moov and mvhd, with its length
    const auto index = read(kPlaceholderPosition + start.number(kPlaceholderPosition + 8, 8), kHeaders);
    const BoxReader moov(index);
    const std::uint64_t timescale = moov.number(8 + 8 + 20, 4);
    if (moov.text(4, 4) != "moov" || moov.text(8 + 4, 4) != "mvhd" || timescale == 0)
        return {};
    return static_cast<double>(moov.number(8 + 8 + 24, 8)) / static_cast<double>(timescale);
}

} // namespace cantorel::media
