#include "tags/MpegSound.h"

#include "tags/SplicedFile.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QtEndian>

#include <algorithm>

namespace cantorel {

namespace {

constexpr std::int64_t kMostJunk = 4096;     // a stream that was cut into has less than a frame
constexpr std::int64_t kMostZeros = 1 << 20; // some programs leave room behind a tag
constexpr int kFrames = 3;                   // that follow each other are no accident

struct Frame {
    SoundKind kind = SoundKind::None;
    int length = 0;
    std::uint32_t alike = 0; // what all frames of a file have in common
};

Frame frameAt(QByteArrayView bytes) {
    if (bytes.size() < 6)
        return {};
    const auto head = qFromBigEndian<std::uint32_t>(bytes.data());
    if (head >> 21 != 0x7FF)
        return {};
    const unsigned version = head >> 19 & 3, layer = 4 - (head >> 17 & 3), bits = head >> 12 & 15,
                   rate = head >> 10 & 3;
    if (layer == 4) { // of AAC
        const int length =
            static_cast<int>((head & 3) << 11 | std::uint8_t(bytes[4]) << 3 | std::uint8_t(bytes[5]) >> 5);
        return version < 2 || length < 7 ? Frame{} : Frame{SoundKind::Adts, length, head & 0xFFFF'FFC0};
    }
    static constexpr int kBits[5][15] = {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
                                         {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
                                         {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
                                         {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
                                         {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}};
    static constexpr int kRates[3] = {44100, 48000, 32000};
    if (version == 1 || bits == 0 || bits == 15 || rate == 3)
        return {};
    const bool isFirst = version == 3;
    const int bitRate = 1000 * kBits[isFirst ? layer - 1 : layer == 1 ? 3 : 4][bits];
    const int sampleRate = kRates[rate] / (isFirst ? 1 : version == 2 ? 2 : 4);
    const int padding = head >> 9 & 1;
    const int length = layer == 1 ? (12 * bitRate / sampleRate + padding) * 4
                                  : (layer == 3 && !isFirst ? 72 : 144) * bitRate / sampleRate + padding;
    return {SoundKind::Mpeg, length, head & 0xFFFE'0C00};
}

// That many frames one behind the other, or fewer up to the end.
SoundKind framesAt(const SplicedFile &file, std::int64_t at, std::int64_t end, const Frame &first) {
    Frame frame = first;
    for (int count = 1; count < kFrames; ++count) {
        at += frame.length;
        if (at >= end) // The last one may be cut.
            return count > 1 || at == end ? first.kind : SoundKind::None;
        frame = frameAt(file.read(at, 6));
        if (frame.kind == SoundKind::None && end - at < 6)
            return first.kind;
        if (frame.kind != first.kind || frame.alike != first.alike)
            return SoundKind::None;
    }
    return first.kind;
}

bool isOtherKind(const QByteArray &start) {
    for (const char *mark :
         {"RIFF", "OggS", "fLaC", "FORM", "MAC ", "wvPk", "caff", "\x1A\x45\xDF\xA3", "\x30\x26\xB2\x75"})
        if (start.startsWith(mark))
            return true;
    return start.mid(4, 4) == "ftyp";
}

} // namespace

std::int64_t id3Size(const QByteArray &head) {
    if (head.size() < kId3Head || !head.startsWith("ID3"))
        return 0;
    std::int64_t size = kId3Head + (head[5] & 0x10 ? kId3Head : 0); // some have a foot like their head
    for (int i = 6; i < 10; ++i)
        size += std::int64_t(head[i] & 0x7F) << 7 * (9 - i);
    return size;
}

MpegSound findMpegSound(const SplicedFile &file) {
    MpegSound sound;
    std::int64_t begin = 0, end = file.size();
    while (const std::int64_t size = id3Size(file.read(begin, kId3Head))) // They may follow each other.
        begin += size;
    if (file.read(end - 128, 3) == "TAG")
        end -= 128;
    if (const QByteArray foot = file.read(end - 32, 32); foot.startsWith("APETAGEX")) {
        const std::int64_t size = qFromLittleEndian<std::uint32_t>(foot.constData() + 12)
                                  + (qFromLittleEndian<std::uint32_t>(foot.constData() + 20) >> 31 ? 32 : 0);
        end -= size <= end ? size : 0;
    }
    sound.begin = std::min(begin, end);
    sound.end = end;

    std::int64_t at = begin;
    if (const Frame first = frameAt(file.read(at, 6)); first.kind != SoundKind::None)
        sound.kind = framesAt(file, at, end, first);
    if (sound.kind != SoundKind::None)
        return sound;
    QByteArray bytes = file.read(at, kMostJunk);
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WAVE")
        sound.kind = SoundKind::Wave;
    if (isOtherKind(bytes))
        return sound;
    while (!bytes.isEmpty() && bytes.count('\0') == bytes.size() && at - begin < kMostZeros) {
        at += bytes.size();
        bytes = file.read(at, kMostJunk);
    }
    for (qsizetype i = 0; i < bytes.size() && sound.kind == SoundKind::None; ++i)
        if (const Frame frame = frameAt(QByteArrayView(bytes).sliced(i)); frame.kind != SoundKind::None)
            sound.kind = framesAt(file, at + i, end, frame);
    return sound;
}

} // namespace cantorel
