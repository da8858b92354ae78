#include "tags/Id3Frames.h"

#include <QByteArrayView>
#include <QtEndian>

#include <algorithm>
#include <iterator>

namespace cantorel {

namespace {

constexpr qsizetype kHead = 10, kOldHead = 6; // of a tag and of a frame; of a frame of version 2
constexpr qsizetype kRoom = 1024, kMostRoom = 64 << 10;

qsizetype plainNumber(QByteArrayView bytes) { return qFromBigEndian<quint32>(bytes.data()); }

// Seven bits of each byte.
qsizetype safeNumber(QByteArrayView bytes) {
    qsizetype number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 7 | (bytes[i] & 0x7F);
    return number;
}

bool isFrameId(QByteArrayView bytes, int version = 3) {
    const bool isOld = version == 2;
    return bytes.size() >= (isOld ? kOldHead : kHead)
           && std::all_of(bytes.begin(), bytes.begin() + (isOld ? 3 : 4),
                          [](char sign) { return (sign >= 'A' && sign <= 'Z') || (sign >= '0' && sign <= '9'); });
}

// A frame, empty room or the end may stand behind a frame.
bool canFollow(QByteArrayView bytes) { return bytes.isEmpty() || bytes[0] == 0 || isFrameId(bytes); }

// The name that a frame of version 2 has in version 3; empty where it has none.
std::string_view laterName(std::string_view old) {
    static constexpr std::string_view kNames[] = {
        "BUFRBUF", "CNTPCNT", "COMCOMM", "CRAAENC", "EQUEQUA", "ETCETCO", "GEOGEOB", "GP1GRP1", "IPLIPLS", "LNKLINK",
        "MCIMCDI", "MLLMLLT", "MVIMVIN", "MVNMVNM", "PCSPCST", "PICAPIC", "POPPOPM", "REVRVRB", "RVARVAD", "SLTSYLT",
        "STCSYTC", "TALTALB", "TBPTBPM", "TCMTCOM", "TCOTCON", "TCPTCMP", "TCRTCOP", "TCTTCAT", "TDATDAT", "TDRTDRL",
        "TDSTDES", "TDYTDLY", "TENTENC", "TFTTFLT", "TIDTGID", "TIMTIME", "TKETKEY", "TKWTKWD", "TLATLAN", "TLETLEN",
        "TMTTMED", "TOATOPE", "TOFTOFN", "TOLTOLY", "TORTORY", "TOTTOAL", "TP1TPE1", "TP2TPE2", "TP3TPE3", "TP4TPE4",
        "TPATPOS", "TPBTPUB", "TRCTSRC", "TRDTRDA", "TRKTRCK", "TS2TSO2", "TSATSOA", "TSCTSOC", "TSITSIZ", "TSPTSOP",
        "TSSTSSE", "TSTTSOT", "TT1TIT1", "TT2TIT2", "TT3TIT3", "TXTTEXT", "TXXTXXX", "TYETYER", "UFIUFID", "ULTUSLT",
        "WAFWOAF", "WARWOAR", "WASWOAS", "WCMWCOM", "WCPWCOP", "WFDWFED", "WPBWPUB", "WXXWXXX"};
    for (const std::string_view name : kNames)
        if (name.substr(0, 3) == old)
            return name.substr(3);
    return {};
}

// A frame of version 2 as one of version 3; empty for one that this has not. But for pictures they say the same.
QByteArray laterFrame(QByteArrayView old) {
    const std::string_view name = laterName({old.data(), 3});
    if (name.empty())
        return {};
    QByteArray content = old.sliced(kOldHead).toByteArray();
    if (name == "APIC") // in place of three letters for their kind
        content.replace(1, 3, QByteArray("image/", 7));
    QByteArray head(name.data(), 4);
    for (int shift = 24; shift >= 0; shift -= 8)
        head.append(static_cast<char>(content.size() >> shift));
    return head.append(2, '\0') + content;
}

qsizetype frameSize(QByteArrayView bytes, int version) {
    if (version == 2) {
        const qsizetype size = plainNumber(bytes.sliced(2, 4)) & 0xFF'FFFF;
        return size <= bytes.size() - kOldHead ? size : -1;
    }
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
    if (tag.size() < kHead || !tag.startsWith("ID3") || tag[3] < 2 || tag[3] > 4)
        return split;
    const int version = tag[3], flags = tag[5];
    const bool isSafe = flags & 0x80, isOld = version == 2; // safe for old players, which take some bytes for sound
    split.version = std::max(version, 3);
    tag = tag.mid(kHead, safeNumber(QByteArrayView(tag).sliced(6, 4)));
    if (version < 4 && isSafe)
        tag.replace(QByteArray("\xFF\0", 2), "\xFF"); // as it was before
    QByteArrayView left = tag;
    if (!isOld && flags & 0x40 && left.size() >= 4) { // an extended header, which holds nothing of the person's
        const qsizetype size = version == 3 ? plainNumber(left) + 4 : safeNumber(left);
        left = left.sliced(std::clamp<qsizetype>(size, 0, left.size()));
    }
    while (isFrameId(left, version)) {
        const qsizetype size = frameSize(left, version);
        if (size < 0)
            break;
        const QByteArrayView bytes = left.first((isOld ? kOldHead : kHead) + size);
        Frame frame{isOld ? laterFrame(bytes) : bytes.toByteArray()};
        if (version == 4 && isSafe)
            frame.bytes[9] = static_cast<char>(frame.bytes[9] | 2); // The tag said so of each of them.
        if (!frame.bytes.isEmpty())
            split.frames.append(frame);
        left = left.sliced(bytes.size());
    }
    while (!left.isEmpty() && left.back() == 0)
        left.chop(1);
    if (!isOld)
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
