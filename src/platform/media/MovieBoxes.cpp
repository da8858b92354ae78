#include "platform/media/MovieBoxes.h"

#include "platform/media/MovieBoxKinds.h"

#include <algorithm>
#include <array>
#include <bit>
#include <initializer_list>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

namespace cantorel::media {

namespace {

constexpr std::size_t kPieceBytes = 64 * 1024;
constexpr std::uint32_t kTrackId = 1;
constexpr std::uint32_t kDependentSample = 0x01010000;

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

void sampleEntry(BoxBuffer &out, const AvcFormat &format) {
    const std::size_t stsd = out.openFull("stsd", 0, 0);
    out.u32(1);
    const std::size_t avc1 = out.open("avc1");
    out.zeros(6);
    out.u16(1); // data reference
    out.zeros(16);
    out.u16(static_cast<std::uint32_t>(format.width));
    out.u16(static_cast<std::uint32_t>(format.height));
    out.u32(0x480000); // 72 dots an inch, by convention
    out.u32(0x480000);
    out.u32(0);
    out.u16(1); // pictures of a sample
    out.zeros(32);
    out.u16(24); // depth
    out.u16(0xFFFF);
    const std::size_t avcC = out.open("avcC");
    out.bytes(format.config);
    out.close(avcC);
    const std::size_t btrt = out.open("btrt");
    out.u32(0);
    out.u32(static_cast<std::uint32_t>(format.bitRate));
    out.u32(static_cast<std::uint32_t>(format.bitRate));
    out.close(btrt);
    out.close(avc1);
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
    out.u32(kPictureTrackId + 1);
    out.close(mvhd);
}

// Without a size for sound.
void trackHeader(BoxBuffer &out, std::uint32_t id, std::uint64_t duration, int width = 0, int height = 0) {
    const std::size_t tkhd = out.openFull("tkhd", 1, 7); // enabled, in the movie, in the preview
    out.u64(0);
    out.u64(0);
    out.u32(id);
    out.u32(0);
    out.u64(duration);
    out.zeros(8);
    out.u16(0);
    out.u16(0);
    out.u16(0x100);
    out.u16(0);
    unityMatrix(out);
    out.u32(static_cast<std::uint64_t>(width) << 16);
    out.u32(static_cast<std::uint64_t>(height) << 16);
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

void mediaHeader(BoxBuffer &out, std::string_view handler, int timescale, std::uint64_t duration) {
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
    out.text(handler);
    out.zeros(13);
    out.close(hdlr);
}

void kindAndDataReference(BoxBuffer &out, bool isSound) {
    const std::size_t kind = isSound ? out.openFull("smhd", 0, 0) : out.openFull("vmhd", 0, 1);
    out.zeros(isSound ? 4 : 8);
    out.close(kind);
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
    std::uint64_t shown = 0; // what is heard, in units of the movie
};

using TrackMarks = std::array<std::size_t, 4>;

// The boxes of a track up to and with the sample description; the caller adds the tables and closes the marks from the
// back.
template <class Format> TrackMarks openTrack(BoxBuffer &out, const Format &format, const TrackTimes &times) {
    constexpr bool isSound = !std::is_same_v<Format, AvcFormat>;
    const std::size_t trak = out.open("trak");
    if constexpr (isSound)
        trackHeader(out, kTrackId, times.shown);
    else
        trackHeader(out, kPictureTrackId, times.shown, format.width, format.height);
    editList(out, times.shown, times.priming);
    const std::size_t mdia = out.open("mdia");
    mediaHeader(out, isSound ? "soun" : "vide", times.rate, times.decoded);
    const std::size_t minf = out.open("minf");
    kindAndDataReference(out, isSound);
    const std::size_t stbl = out.open("stbl");
    sampleEntry(out, format);
    return {trak, mdia, minf, stbl};
}

void closeTrack(BoxBuffer &out, const TrackMarks &marks, std::uint64_t following = 0) {
    for (std::size_t i = marks.size(); i-- > 0;)
        out.close(marks[i], following);
}

// The units of the movie: those of the sound, where there is any.
int movieTimescale(const MovieFormat &format) { return format.sound ? format.sound->sampleRate : kPictureTimescale; }

BoxBuffer fileType(bool hasPictures = false) {
    BoxBuffer out;
    const std::size_t ftyp = out.open("ftyp");
    out.text(hasPictures ? kMovieBrand : kSoundBrand);
    out.u32(0);
    out.text(hasPictures ? "mp42isomiso5" : "M4A isomiso5");
    out.close(ftyp);
    return out;
}

// Of so many packets, the last of which may be shorter.
void durations(BoxBuffer &out, std::uint64_t packets, std::uint64_t lastPacketFrames,
               std::uint64_t framesPerPacket = kFramesPerPacket) {
    const std::size_t stts = out.openFull("stts", 0, 0);
    const bool isShorter = packets > 0 && lastPacketFrames != framesPerPacket;
    const std::uint64_t whole = packets - isShorter;
    out.u32((whole > 0) + isShorter);
    for (const auto &[count, frames] :
         {std::pair(whole, framesPerPacket), {std::uint64_t(isShorter), lastPacketFrames}})
        if (count > 0) {
            out.u32(count);
            out.u32(frames);
        }
    out.close(stts);
}

template <class Table> void packetsPerChunk(BoxBuffer &out, const Table &table) {
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

bool needsLongOffsets(std::uint64_t lastOffset) { return lastOffset > std::numeric_limits<std::uint32_t>::max(); }

template <class Table> bool needsLongOffsets(const Table &table) {
    return table.chunks() && needsLongOffsets(table.chunk(table.chunks() - 1).offset);
}

// The whole track of pictures.
void pictureTrack(BoxBuffer &out, const AvcFormat &format, const PictureTable &table, int timescale) {
    const std::uint64_t shown = static_cast<std::uint64_t>(static_cast<unsigned __int128>(table.duration())
                                                           * static_cast<unsigned>(timescale) / kPictureTimescale);
    const TrackMarks marks = openTrack(out, format, {kPictureTimescale, 0, table.duration(), table.duration(), shown});

    const std::size_t stts = out.openFull("stts", 0, 0);
    const std::size_t runs = out.size();
    out.u32(0);
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < table.packets(); ++count) {
        const std::size_t first = i;
        while (i < table.packets() && table.length(i) == table.length(first))
            ++i;
        out.u32(i - first);
        out.u32(table.length(first));
    }
    out.patch32(runs, count);
    out.close(stts);

    const std::size_t stss = out.openFull("stss", 0, 0);
    out.u32(table.keys().size());
    for (const std::uint32_t key : table.keys())
        out.u32(key + 1);
    out.close(stss);
    packetsPerChunk(out, table);
    const std::size_t stsz = out.openFull("stsz", 0, 0);
    out.u32(0);
    out.u32(table.packets());
    for (std::size_t i = 0; i < table.packets(); ++i)
        out.u32(table.packetSize(i));
    out.close(stsz);
    const bool longOffsets = needsLongOffsets(table);
    const std::size_t offsets = out.openFull(longOffsets ? "co64" : "stco", 0, 0);
    out.u32(table.chunks());
    for (std::size_t i = 0; i < table.chunks(); ++i) {
        if (longOffsets)
            out.u64(table.chunk(i).offset);
        else
            out.u32(table.chunk(i).offset);
    }
    out.close(offsets);
    closeTrack(out, marks);
}

void emptySoundTrack(BoxBuffer &out, const AacFormat &format) {
    const TrackMarks marks = openTrack(out, format, {format.sampleRate, format.primingFrames, 0, 0, 0});
    durations(out, 0, 0);
    for (const char *empty : {"stsc", "stco"}) {
        const std::size_t box = out.openFull(empty, 0, 0);
        out.u32(0);
        out.close(box);
    }
    const std::size_t stsz = out.openFull("stsz", 0, 0);
    out.zeros(8);
    out.close(stsz);
    closeTrack(out, marks);
}

void trackExtends(BoxBuffer &out, std::uint32_t id, std::uint32_t duration, std::uint32_t flags) {
    const std::size_t trex = out.openFull("trex", 0, 0);
    for (const std::uint32_t value : {id, 1u, duration, 0u, flags})
        out.u32(value);
    out.close(trex);
}

// Everything of a track's part in a fragment in front of its entries; answers where the data offset is to be filled in.
std::size_t openRun(BoxBuffer &out, std::uint32_t id, std::uint64_t first, std::uint32_t flags, std::size_t count,
                    std::array<std::size_t, 2> &marks) {
    marks[0] = out.open("traf");
    const std::size_t tfhd = out.openFull("tfhd", 0, 0x020000); // offsets count from this moof
    out.u32(id);
    out.close(tfhd);
    const std::size_t tfdt = out.openFull("tfdt", 1, 0);
    out.u64(first);
    out.close(tfdt);
    marks[1] = out.openFull("trun", 0, flags);
    out.u32(count);
    const std::size_t offset = out.size();
    out.u32(0);
    return offset;
}

} // namespace

BoxBuffer movieStart(const MovieFormat &format) {
    BoxBuffer out = fileType(format.pictures.has_value());
    const std::size_t placeholder = out.open("free");
    out.text(kMark);
    out.close(placeholder);

    const std::size_t moov = out.open("moov");
    movieHeader(out, movieTimescale(format), 0);
    if (format.pictures)
        pictureTrack(out, *format.pictures, {}, movieTimescale(format));
    if (format.sound)
        emptySoundTrack(out, *format.sound);
    const std::size_t mvex = out.open("mvex");
    if (format.pictures)
        trackExtends(out, kPictureTrackId, 0, kDependentSample);
    if (format.sound)
        trackExtends(out, kTrackId, kFramesPerPacket, kSyncSample);
    out.close(mvex);
    out.close(moov);
    return out;
}

BoxBuffer fragmentStart(std::uint32_t sequence, std::uint64_t firstFrame, const PacketRun &packets,
                        std::uint64_t firstPicture, const PictureRun &pictures) {
    BoxBuffer out;
    const std::size_t moof = out.open("moof");
    const std::size_t mfhd = out.openFull("mfhd", 0, 0);
    out.u32(sequence);
    out.close(mfhd);
    std::size_t pictureOffset = 0, soundOffset = 0;
    std::array<std::size_t, 2> marks{};
    if (!pictures.entries.empty()) {
        pictureOffset = openRun(out, kPictureTrackId, firstPicture, kPictureRun, pictures.entries.size(), marks);
        for (const PictureRun::Entry &entry : pictures.entries) {
            out.u32(entry.length);
            out.u32(entry.bytes);
            out.u32(entry.isKey ? kSyncSample : kDependentSample);
        }
        out.close(marks[1]);
        out.close(marks[0]);
    }
    if (!packets.sizes.empty()) {
        soundOffset = openRun(out, kTrackId, firstFrame, kSoundRun, packets.sizes.size(), marks);
        for (const std::uint32_t size : packets.sizes)
            out.u32(size);
        out.close(marks[1]);
        out.close(marks[0]);
    }
    out.close(moof);
    const std::size_t payload = out.size() + 8;
    if (pictureOffset)
        out.patch32(pictureOffset, payload);
    if (soundOffset)
        out.patch32(soundOffset, payload + pictures.bytes.size());
    out.u32(8 + pictures.bytes.size() + packets.bytes.size());
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

bool writeMovie(const MovieFormat &format, const MovieTable &table, std::int64_t validFrames,
                const std::function<bool(std::span<const std::uint8_t>)> &write,
                std::span<const std::uint8_t> userData) {
    const SampleTable &sound = table.sound;
    const std::uint64_t packets = sound.packets();
    const std::uint64_t allFrames = packets * kFramesPerPacket;
    const std::uint64_t heard = std::max<std::int64_t>(validFrames, 0);
    const bool longOffsets = needsLongOffsets(sound);
    const std::uint64_t sizesBytes = 20 + 4 * packets;
    const std::uint64_t offsetsBytes = 16 + (longOffsets ? 8 : 4) * sound.chunks();

    BoxBuffer out;
    const int timescale = movieTimescale(format);
    const std::size_t moov = out.open("moov");
    const std::uint64_t seen = static_cast<std::uint64_t>(static_cast<unsigned __int128>(table.pictures.duration())
                                                          * static_cast<unsigned>(timescale) / kPictureTimescale);
    movieHeader(out, timescale, std::max(format.sound ? heard : 0, seen));
    out.bytes(userData);
    if (format.pictures)
        pictureTrack(out, *format.pictures, table.pictures, timescale);
    if (!format.sound) {
        out.close(moov);
        return write(out.data());
    }
    const std::uint64_t decoded =
        std::clamp(heard + format.sound->primingFrames, packets ? allFrames - kFramesPerPacket + 1 : 0, allFrames);
    // The two tables that grow with the recording come last, so that the rest is small and they can be streamed.
    const TrackMarks marks =
        openTrack(out, *format.sound, {format.sound->sampleRate, format.sound->primingFrames, heard, decoded, heard});
    durations(out, packets, packets ? decoded - (allFrames - kFramesPerPacket) : 0);
    packetsPerChunk(out, sound);
    closeTrack(out, marks, sizesBytes + offsetsBytes);
    out.close(moov, sizesBytes + offsetsBytes);

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
        out.u32(sound.packetSize(i));
        if (!flushAt(kPieceBytes))
            return false;
    }
    const std::size_t offsets = out.openFull(longOffsets ? "co64" : "stco", 0, 0);
    out.patch32(offsets, offsetsBytes);
    out.u32(sound.chunks());
    for (std::size_t i = 0; i < sound.chunks(); ++i) {
        if (longOffsets)
            out.u64(sound.chunk(i).offset);
        else
            out.u32(sound.chunk(i).offset);
        if (!flushAt(kPieceBytes))
            return false;
    }
    return flushAt(1);
}

BoxBuffer pcmMovie(const PcmFormat &format, std::uint64_t position, std::uint64_t frames) {
    // Many frames are one sample: a reader that takes a sample at a time is done in half the time.
    constexpr std::uint64_t kFramesPerSample = 1 << 15;
    const std::uint64_t samples = (frames + kFramesPerSample - 1) / kFramesPerSample;
    const std::uint64_t last = frames - (samples - 1) * kFramesPerSample; // frames
    BoxBuffer out;
    const std::size_t moov = out.open("moov");
    movieHeader(out, format.rate, frames);
    const TrackMarks marks = openTrack(out, format, {format.rate, 0, frames, frames, frames});
    durations(out, samples, last, kFramesPerSample);
    const auto table = [&](const char *type, const std::vector<std::uint64_t> &values) {
        const std::size_t box = out.openFull(type, 0, 0);
        for (const std::uint64_t value : values)
            out.u32(value);
        out.close(box);
    };
    table("stsc", {1, 1, samples, 1});
    const auto bytes = static_cast<std::uint64_t>(format.bytesPerFrame());
    std::vector<std::uint64_t> sizes{0, samples}; // 0: they differ
    sizes.resize(2 + samples, kFramesPerSample * bytes);
    sizes.back() = last * bytes;
    table("stsz", sizes);
    table("co64", {1, position >> 32, position});
    closeTrack(out, marks);
    out.close(moov);
    return out;
}

BoxBuffer plainMovieStart() {
    BoxBuffer out = fileType();
    out.u32(kLongBox);
    out.text("mdat");
    out.u64(0);
    return out;
}

} // namespace cantorel::media
