#include "platform/media/MovieBoxes.h"

#include "platform/media/BoxReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <initializer_list>
#include <limits>
#include <string_view>

namespace cantorel::media {

namespace {

constexpr std::string_view kMark = "cntrlrec";
constexpr std::size_t kPieceBytes = 64 * 1024;
constexpr std::uint32_t kLongBox = 1; // as the 32-bit size: a 64-bit size follows
constexpr std::uint32_t kTrackId = 1;
constexpr std::uint32_t kSyncSample = 0x02000000;

void unityMatrix(BoxBuffer &out) {
    for (const std::uint32_t value : {0x10000u, 0u, 0u, 0u, 0x10000u, 0u, 0u, 0u, 0x40000000u})
        out.u32(value);
}

void descriptor(BoxBuffer &out, std::uint8_t tag, std::size_t length) {
    out.u8(tag);
    for (const int shift : {21, 14, 7}) // the long form, as most writers use it
        out.u8((length >> shift & 0x7F) | 0x80);
    out.u8(length & 0x7F);
}

void sampleEntry(BoxBuffer &out, const AacFormat &format) {
    const std::size_t stsd = out.openFull("stsd", 0, 0);
    out.u32(1);
    const std::size_t mp4a = out.open("mp4a");
    out.zeros(6);
    out.u16(1); // data reference
    out.zeros(8);
    out.u16(format.channels);
    out.u16(16); // bits, by convention
    out.zeros(4);
    out.u32(format.sampleRate <= 0xFFFF ? static_cast<std::uint32_t>(format.sampleRate) << 16 : 0);
    const std::size_t esds = out.openFull("esds", 0, 0);
    const std::size_t specific = format.config.size();
    const std::size_t decoder = 13 + 5 + specific;
    descriptor(out, 3, 3 + 5 + decoder + 5 + 1);
    out.u16(kTrackId);
    out.u8(0);
    descriptor(out, 4, decoder);
    out.u8(0x40); // MPEG-4 audio
    out.u8(0x15); // audio stream
    out.u8(0);    // decoder buffer, 24 bits
    out.u16(6144 / 8 * 2 * format.channels);
    out.u32(format.bitRate);
    out.u32(format.bitRate);
    descriptor(out, 5, specific);
    out.bytes(format.config);
    descriptor(out, 6, 1);
    out.u8(2);
    out.close(esds);
    out.close(mp4a);
    out.close(stsd);
}

// Bare samples, as QuickTime describes them in its second version; players and FFmpeg read it in an M4A too.
void sampleEntry(BoxBuffer &out, const PcmFormat &format) {
    constexpr std::uint32_t kFloat = 1, kSigned = 4, kPacked = 8; // little endian
    const std::size_t stsd = out.openFull("stsd", 0, 0);
    out.u32(1);
    const std::size_t lpcm = out.open("lpcm");
    out.zeros(6);
    out.u16(1); // data reference
    out.u16(2); // version
    out.zeros(6);
    for (const std::uint32_t fixed : {3u, 16u, 0xFFFEu, 0u})
        out.u16(fixed);
    out.u32(0x10000);
    out.u32(72); // bytes of this description
    out.u64(std::bit_cast<std::uint64_t>(static_cast<double>(format.rate)));
    out.u32(static_cast<std::uint32_t>(format.channels));
    out.u32(0x7F000000);
    out.u32(static_cast<std::uint32_t>(format.bytesPerSample()) * 8);
    out.u32((format.isFloat ? kFloat : kSigned) | kPacked);
    out.u32(static_cast<std::uint32_t>(format.bytesPerFrame()));
    out.u32(1);
    out.close(lpcm);
    out.close(stsd);
}

// A track header box in its 64-bit form; a duration of 0 in a file without samples.
void movieHeader(BoxBuffer &out, int timescale, std::uint64_t duration) {
    const std::size_t mvhd = out.openFull("mvhd", 1, 0);
    out.u64(0);
    out.u64(0);
    out.u32(timescale);
    out.u64(duration);
    out.u32(0x10000);
    out.u16(0x100);
    out.zeros(10);
    unityMatrix(out);
    out.zeros(24);
    out.u32(kTrackId + 1);
    out.close(mvhd);
}

void trackHeader(BoxBuffer &out, std::uint64_t duration) {
    const std::size_t tkhd = out.openFull("tkhd", 1, 7); // enabled, in the movie, in the preview
    out.u64(0);
    out.u64(0);
    out.u32(kTrackId);
    out.u32(0);
    out.u64(duration);
    out.zeros(8);
    out.u16(0);
    out.u16(0);
    out.u16(0x100);
    out.u16(0);
    unityMatrix(out);
    out.zeros(8);
    out.close(tkhd);
}

// What is to be heard: the media without the coder's priming. A length of 0 means "to the end" in a growing file.
void editList(BoxBuffer &out, std::uint64_t length, int primingFrames) {
    const std::size_t edts = out.open("edts");
    const std::size_t elst = out.openFull("elst", 1, 0);
    out.u32(1);
    out.u64(length);
    out.u64(primingFrames);
    out.u32(0x10000);
    out.close(elst);
    out.close(edts);
}

void mediaHeader(BoxBuffer &out, int timescale, std::uint64_t duration) {
    const std::size_t mdhd = out.openFull("mdhd", 1, 0);
    out.u64(0);
    out.u64(0);
    out.u32(timescale);
    out.u64(duration);
    out.u16(0x55C4); // "und"
    out.u16(0);
    out.close(mdhd);
    const std::size_t hdlr = out.openFull("hdlr", 0, 0);
    out.zeros(4);
    out.text("soun");
    out.zeros(13);
    out.close(hdlr);
}

void soundAndDataReference(BoxBuffer &out) {
    const std::size_t smhd = out.openFull("smhd", 0, 0);
    out.zeros(4);
    out.close(smhd);
    const std::size_t dinf = out.open("dinf");
    const std::size_t dref = out.openFull("dref", 0, 0);
    out.u32(1);
    out.close(out.openFull("url ", 0, 1)); // in this file
    out.close(dref);
    out.close(dinf);
}

// What of its frames a track has before those to be heard, how many are heard, and how many there are.
struct TrackTimes {
    int rate = 0;
    int priming = 0;
    std::uint64_t heard = 0;
    std::uint64_t decoded = 0;
};

// The boxes of moov up to and with the sample description; the caller adds the tables and closes the marks from the
// back.
template <class Format>
std::array<std::size_t, 5> openMovie(BoxBuffer &out, const Format &format, const TrackTimes &times,
                                     std::span<const std::uint8_t> userData = {}) {
    const std::size_t moov = out.open("moov");
    movieHeader(out, times.rate, times.heard);
    out.bytes(userData);
    const std::size_t trak = out.open("trak");
    trackHeader(out, times.heard);
    editList(out, times.heard, times.priming);
    const std::size_t mdia = out.open("mdia");
    mediaHeader(out, times.rate, times.decoded);
    const std::size_t minf = out.open("minf");
    soundAndDataReference(out);
    const std::size_t stbl = out.open("stbl");
    sampleEntry(out, format);
    return {moov, trak, mdia, minf, stbl};
}

BoxBuffer fileType() {
    BoxBuffer out;
    const std::size_t ftyp = out.open("ftyp");
    out.text("M4A ");
    out.u32(0);
    out.text("M4A isomiso5");
    out.close(ftyp);
    return out;
}

void durations(BoxBuffer &out, std::uint64_t packets, std::uint64_t lastPacketFrames) {
    const std::size_t stts = out.openFull("stts", 0, 0);
    if (packets == 0 || lastPacketFrames == kFramesPerPacket) {
        out.u32(packets ? 1 : 0);
        if (packets) {
            out.u32(packets);
            out.u32(kFramesPerPacket);
        }
    } else {
        out.u32(packets > 1 ? 2 : 1);
        if (packets > 1) {
            out.u32(packets - 1);
            out.u32(kFramesPerPacket);
        }
        out.u32(1);
        out.u32(lastPacketFrames);
    }
    out.close(stts);
}

void packetsPerChunk(BoxBuffer &out, const SampleTable &table) {
    const std::size_t stsc = out.openFull("stsc", 0, 0);
    const std::size_t count = out.size();
    out.u32(0);
    std::uint32_t runs = 0;
    std::uint32_t last = 0;
    for (std::size_t i = 0; i < table.chunks(); ++i) {
        if (table.chunk(i).packets == last)
            continue;
        last = table.chunk(i).packets;
        ++runs;
        out.u32(i + 1);
        out.u32(last);
        out.u32(1);
    }
    out.patch32(count, runs);
    out.close(stsc);
}

} // namespace

BoxBuffer movieStart(const AacFormat &format) {
    BoxBuffer out = fileType();
    const std::size_t placeholder = out.open("free");
    out.text(kMark);
    out.close(placeholder);

    const auto marks = openMovie(out, format, {format.sampleRate, format.primingFrames, 0, 0});
    durations(out, 0, 0);
    for (const char *empty : {"stsc", "stco"}) {
        const std::size_t box = out.openFull(empty, 0, 0);
        out.u32(0);
        out.close(box);
    }
    const std::size_t stsz = out.openFull("stsz", 0, 0);
    out.zeros(8);
    out.close(stsz);
    for (std::size_t i = marks.size() - 1; i > 0; --i)
        out.close(marks[i]);
    const std::size_t mvex = out.open("mvex");
    const std::size_t trex = out.openFull("trex", 0, 0);
    for (const std::uint32_t value : {kTrackId, 1u, static_cast<std::uint32_t>(kFramesPerPacket), 0u, kSyncSample})
        out.u32(value);
    out.close(trex);
    out.close(mvex);
    out.close(marks[0]);
    return out;
}

BoxBuffer fragmentStart(std::uint32_t sequence, std::uint64_t firstFrame, const PacketRun &packets) {
    BoxBuffer out;
    const std::size_t moof = out.open("moof");
    const std::size_t mfhd = out.openFull("mfhd", 0, 0);
    out.u32(sequence);
    out.close(mfhd);
    const std::size_t traf = out.open("traf");
    const std::size_t tfhd = out.openFull("tfhd", 0, 0x020000); // offsets count from this moof
    out.u32(kTrackId);
    out.close(tfhd);
    const std::size_t tfdt = out.openFull("tfdt", 1, 0);
    out.u64(firstFrame);
    out.close(tfdt);
    const std::size_t trun = out.openFull("trun", 0, 0x000201); // data offset, a size for each packet
    out.u32(packets.sizes.size());
    const std::size_t offset = out.size();
    out.u32(0);
    for (const std::uint32_t size : packets.sizes)
        out.u32(size);
    out.close(trun);
    out.close(traf);
    out.close(moof);
    out.patch32(offset, out.size() + 8);
    out.u32(8 + packets.bytes.size());
    out.text("mdat");
    return out;
}

BoxBuffer swallowingHeader(std::uint64_t moovPosition) {
    BoxBuffer out;
    out.u32(kLongBox);
    out.text("mdat");
    out.u64(moovPosition - kPlaceholderPosition);
    return out;
}

bool writeMovie(const AacFormat &format, const SampleTable &table, std::int64_t validFrames,
                const std::function<bool(std::span<const std::uint8_t>)> &write,
                std::span<const std::uint8_t> userData) {
    const std::uint64_t packets = table.packets();
    const std::uint64_t allFrames = packets * kFramesPerPacket;
    const std::uint64_t heard = std::max<std::int64_t>(validFrames, 0);
    const std::uint64_t decoded =
        std::clamp(heard + format.primingFrames, packets ? allFrames - kFramesPerPacket + 1 : 0, allFrames);
    const bool longOffsets =
        table.chunks() && table.chunk(table.chunks() - 1).offset > std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t sizesBytes = 20 + 4 * packets;
    const std::uint64_t offsetsBytes = 16 + (longOffsets ? 8 : 4) * table.chunks();

    // The two tables that grow with the recording come last, so that the rest is small and they can be streamed.
    BoxBuffer out;
    const auto marks = openMovie(out, format, {format.sampleRate, format.primingFrames, heard, decoded}, userData);
    durations(out, packets, packets ? decoded - (allFrames - kFramesPerPacket) : 0);
    packetsPerChunk(out, table);
    for (std::size_t i = marks.size(); i-- > 0;)
        out.close(marks[i], sizesBytes + offsetsBytes);

    const auto flushAt = [&](std::size_t limit) {
        if (out.size() < limit)
            return true;
        const bool taken = write(out.data());
        out.clear();
        return taken;
    };
    const std::size_t stsz = out.openFull("stsz", 0, 0);
    out.patch32(stsz, sizesBytes);
    out.u32(0);
    out.u32(packets);
    for (std::size_t i = 0; i < packets; ++i) {
        out.u32(table.packetSize(i));
        if (!flushAt(kPieceBytes))
            return false;
    }
    const std::size_t offsets = out.openFull(longOffsets ? "co64" : "stco", 0, 0);
    out.patch32(offsets, offsetsBytes);
    out.u32(table.chunks());
    for (std::size_t i = 0; i < table.chunks(); ++i) {
        if (longOffsets)
            out.u64(table.chunk(i).offset);
        else
            out.u32(table.chunk(i).offset);
        if (!flushAt(kPieceBytes))
            return false;
    }
    return flushAt(1);
}

BoxBuffer pcmMovie(const PcmFormat &format, std::uint64_t position, std::uint64_t frames) {
    // A file counts its samples in 32 bits; where they do not suffice, many frames stand for one.
    const std::uint64_t framesPerSample = frames <= std::numeric_limits<std::uint32_t>::max() ? 1 : 1 << 20;
    const std::uint64_t samples = (frames + framesPerSample - 1) / framesPerSample;
    BoxBuffer out;
    const auto marks = openMovie(out, format, {format.rate, 0, frames, samples * framesPerSample});
    const auto table = [&](const char *type, std::initializer_list<std::uint64_t> values) {
        const std::size_t box = out.openFull(type, 0, 0);
        for (const std::uint64_t value : values)
            out.u32(value);
        out.close(box);
    };
    table("stts", {1, samples, framesPerSample});
    table("stsc", {1, 1, samples, 1});
    table("stsz", {framesPerSample * static_cast<std::uint64_t>(format.bytesPerFrame()), samples});
    table("co64", {1, position >> 32, position});
    for (std::size_t i = marks.size(); i-- > 0;)
        out.close(marks[i]);
    return out;
}

BoxBuffer plainMovieStart() {
    BoxBuffer out = fileType();
    out.u32(kLongBox);
    out.text("mdat");
    out.u64(0);
    return out;
}

std::optional<UnfinishedStart> readMovieStart(std::span<const std::uint8_t> fileStart) {
    const BoxReader file(fileStart);
    if (file.text(4, 8) != "ftypM4A " || file.number(0, 4) != kPlaceholderPosition
        || file.text(kPlaceholderPosition + 4, 4) != "free" || file.text(kPlaceholderPosition + 8, 8) != kMark)
        return {};
    const std::size_t moovPosition = kPlaceholderPosition + kPlaceholderSize;
    if (file.text(moovPosition + 4, 4) != "moov")
        return {};
    const auto moov = file.find("moov", moovPosition);
    if (!moov)
        return {};
    const auto trak = descend(*moov, {"trak"});
    const auto mdhd = trak ? descend(*trak, {"mdia", "mdhd"}) : trak;
    const auto elst = trak ? descend(*trak, {"edts", "elst"}) : trak;
    const auto stsd = trak ? descend(*trak, {"mdia", "minf", "stbl", "stsd"}) : trak;
    if (!mdhd || !elst || !stsd || stsd->size() < 16 + 28)
        return {};
    const auto esds = BoxReader(*stsd).find("esds", 8 + 8 + 28);
    if (!esds)
        return {};

    UnfinishedStart start;
    start.size = moovPosition + 8 + moov->size();
    start.format.sampleRate = static_cast<int>(BoxReader(*mdhd).number(20, 4));
    start.format.channels = static_cast<int>(BoxReader(*stsd).number(8 + 8 + 16, 2));
    start.format.primingFrames = static_cast<int>(BoxReader(*elst).number(16, 8));
    const BoxReader descriptors(*esds);
    start.format.bitRate = static_cast<int>(descriptors.number(26, 4));
    const std::size_t configSize = descriptors.number(34, 1) & 0x7F;
    const std::string_view config = descriptors.text(35, configSize);
    start.format.config.assign(config.begin(), config.end());
    const bool sane = start.format.sampleRate > 0 && start.format.sampleRate <= 96000 && start.format.channels >= 1
                      && start.format.channels <= 2 && start.format.primingFrames >= 0
                      && start.format.primingFrames <= 16 * kFramesPerPacket && !config.empty();
    return sane ? std::optional(start) : std::nullopt;
}

std::optional<std::vector<std::uint32_t>> readFragmentSizes(std::span<const std::uint8_t> moof) {
    const auto trun = descend(moof, {"moof", "traf", "trun"});
    if (!trun)
        return {};
    const BoxReader reader(*trun);
    const std::uint64_t count = reader.number(4, 4);
    if (reader.number(0, 4) != 0x000201 || count == 0 || trun->size() != 12 + 4 * count)
        return {};
    std::vector<std::uint32_t> sizes(count);
    for (std::size_t i = 0; i < count; ++i) {
        sizes[i] = static_cast<std::uint32_t>(reader.number(12 + 4 * i, 4));
        if (sizes[i] > SampleTable::kLargestPacket)
            return {};
    }
    return sizes;
}

} // namespace cantorel::media
