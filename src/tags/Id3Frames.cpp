#include "tags/Id3Frames.h"

#include <QByteArrayView>
#include <QtEndian>

#include <algorithm>
#include <iterator>

namespace cantorel {

namespace {

constexpr qsizetype kHead = 10; // of a tag and of a frame
constexpr qsizetype kRoom = 1024, kMostRoom = 64 << 10;

qsizetype plainNumber(QByteArrayView bytes) { return qFromBigEndian<quint32>(bytes.data()); }

// Seven bits of each byte.
qsizetype safeNumber(QByteArrayView bytes) {
    qsizetype number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 7 | (bytes[i] & 0x7F);
    return number;
}

bool isFrameId(QByteArrayView bytes) {
    return bytes.size() >= kHead && std::all_of(bytes.begin(), bytes.begin() + 4, [](char sign) {
               return (sign >= 'A' && sign <= 'Z') || (sign >= '0' && sign <= '9');
           });
}

// A frame, empty room or the end may stand behind a frame.
bool canFollow(QByteArrayView bytes) { return bytes.isEmpty() || bytes[0] == 0 || isFrameId(bytes); }

qsizetype frameSize(QByteArrayView bytes, int version) {
    const QByteArrayView number = bytes.sliced(4, 4);
    const qsizetype plain = plainNumber(number), safe = safeNumber(number);
    const auto fits = [&](qsizetype size) { return size <= bytes.size() - kHead; };
    if (version == 3)
        return fits(plain) ? plain : -1;
    // A well-known program writes the other kind of number into tags of version 4.
    const bool isPlain = plain != safe && fits(plain) && canFollow(bytes.sliced(kHead + plain))
                         && !(fits(safe) && canFollow(bytes.sliced(kHead + safe)));
    return isPlain ? plain : fits(safe) ? safe : -1;
}

bool isOneOf(std::string_view id, const std::vector<std::string_view> &ids) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

} // namespace

Id3Frames Id3Frames::split(QByteArray tag) {
    Id3Frames split;
    if (tag.size() < kHead || !tag.startsWith("ID3") || (tag[3] != 3 && tag[3] != 4))
        return split;
    split.version = tag[3];
    const int flags = tag[5];
    tag = tag.mid(kHead, safeNumber(QByteArrayView(tag).sliced(6, 4)));
    if (split.version == 3 && flags & 0x80)
        tag.replace(QByteArray("\xFF\0", 2), "\xFF"); // as it was before it was made safe for old players
    QByteArrayView left = tag;
    if (flags & 0x40 && left.size() >= 4) { // an extended header, which holds nothing of the person's
        const qsizetype size = split.version == 3 ? plainNumber(left) + 4 : safeNumber(left);
        left = left.sliced(std::clamp<qsizetype>(size, 0, left.size()));
    }
    while (isFrameId(left)) {
        const qsizetype size = frameSize(left, split.version);
        if (size < 0)
            break;
        split.frames.append({left.first(kHead + size).toByteArray()});
        left = left.sliced(kHead + size);
    }
    while (!left.isEmpty() && left.back() == 0)
        left.chop(1);
    split.rest = left.toByteArray();
    return split;
}

QByteArray Id3Frames::joined(qsizetype size) const {
    QByteArray tag;
    for (const Frame &frame : frames)
        tag += frame.bytes;
    if (tag.isEmpty() && rest.isEmpty())
        return {};
    tag += rest;
    const qsizetype room = size - kHead - tag.size();
    tag.append(room >= 0 && room <= kMostRoom ? room : kRoom, '\0');
    QByteArray head("ID3");
    head.append(static_cast<char>(version)).append(2, '\0');
    for (int shift = 21; shift >= 0; shift -= 7)
        head.append(static_cast<char>(tag.size() >> shift & 0x7F));
    return head + tag;
}

QList<Id3Frames::Frame> Id3Frames::having(const std::vector<std::string_view> &ids) const {
    QList<Frame> found;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(found),
                 [&](const Frame &frame) { return isOneOf(frame.id(), ids); });
    return found;
}

void Id3Frames::remove(const std::vector<std::string_view> &ids) {
    frames.removeIf([&](const Frame &frame) { return isOneOf(frame.id(), ids); });
}

} // namespace cantorel
