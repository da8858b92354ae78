#include "platform/foundation/DefaultsFile.h"

#include "platform/foundation/BinaryPropertyList.h"
#include "platform/foundation/PropertyList.h"

#include <QUuid>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace cantorel::foundation {

namespace {

constexpr qsizetype kChunk = 256 * 1024;
constexpr qsizetype kLarge = 64 * 1024;
const QByteArray kDataTag = QByteArrayLiteral("<data>");
// Stands before the list and tells how long its large data are, in their order.
const QByteArray kLengths = QByteArrayLiteral("<?large-data"), kLengthsEnd = QByteArrayLiteral("?>");

// A list's text, where short data that occur nowhere else stand in the place of large ones.
struct Skimmed {
    QByteArray text;
    std::vector<std::pair<QByteArray, LargeData>> large; // by what stands in their place
};

// 24 bytes, so that their base64 text has no padding.
QByteArray newMark() { return QByteArrayLiteral("large---") + QUuid::createUuid().toRfc4122(); }

// The bytes read; fewer than asked for only at the end of the file, -1 for a failure.
qint64 readAt(int file, char *bytes, qint64 count, qint64 at) {
    qint64 done = 0;
    while (done < count) {
        const auto some = ::pread(file, bytes + done, static_cast<std::size_t>(count - done), at + done);
        if (some < 0 && errno == EINTR)
            continue;
        if (some < 0)
            return -1;
        if (some == 0)
            break;
        done += some;
    }
    return done;
}

bool writeAll(int file, QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
        const auto some = ::write(file, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (some < 0 && errno == EINTR)
            continue;
        if (some <= 0)
            return false;
        bytes = bytes.sliced(some);
    }
    return true;
}

bool copy(int source, const LargeData &where, int target) {
    QByteArray chunk(kChunk, Qt::Uninitialized);
    for (qint64 done = 0; done < where.length;) {
        const qint64 wanted = std::min<qint64>(kChunk, where.length - done);
        if (readAt(source, chunk.data(), wanted, where.at + done) != wanted) {
            errno = errno == 0 ? EIO : errno;
            return false;
        }
        if (!writeAll(target, QByteArrayView(chunk).first(wanted)))
            return false;
        done += wanted;
    }
    return true;
}

// The lengths that the text tells, as far as it does.
QList<QByteArray> lengthsIn(const QByteArray &text) {
    const qsizetype begin = text.indexOf(kLengths), end = text.indexOf(kLengthsEnd, begin);
    return begin < 0 || end < 0
               ? QList<QByteArray>()
               : text.mid(begin + kLengths.size(), end - begin - kLengths.size()).simplified().split(' ');
}

qint64 base64Length(const QByteArray &data) { return (data.size() + 2) / 3 * 4; }

// Only data that reach beyond a chunk of the file are passed over. Their end is looked for where the list does not tell
// their length. A length that is wrong, since another program has changed them, leaves more than a mark in their place.
std::optional<Skimmed> skim(int file) {
    Skimmed skimmed;
    QByteArray &text = skimmed.text;
    QByteArray chunk(kChunk, Qt::Uninitialized);
    bool passing = false;
    qsizetype tag = -1; // the last one in the text
    for (qint64 at = 0;;) {
        const qint64 count = readAt(file, chunk.data(), kChunk, at);
        if (count < 0)
            return {};
        qint64 used = 0;
        if (passing) {
            const qsizetype end = QByteArrayView(chunk).first(count).indexOf('<');
            passing = end < 0;
            used = passing ? count : end;
            skimmed.large.back().second.length += used;
        }
        const QByteArrayView added = QByteArrayView(chunk).sliced(used, count - used);
        if (const qsizetype last = added.lastIndexOf('<'); last >= 0)
            tag = text.size() + last;
        text.append(added);
        at += count;
        if (count < kChunk)
            return skimmed;
        const qsizetype body = tag + kDataTag.size();
        if (!passing && tag >= 0 && text.size() - body > kLarge
            && QByteArrayView(text).sliced(tag).startsWith(kDataTag)) {
            LargeData data = {at - (text.size() - body), text.size() - body};
            text.truncate(body);
            const int told = lengthsIn(text).value(static_cast<qsizetype>(skimmed.large.size())).toInt(); // 0 for none
            passing = told <= 0;
            if (!passing) {
                data.length = told;
                at = data.at + told;
            }
            skimmed.large.push_back({newMark(), data});
            text += skimmed.large.back().first.toBase64();
        }
    }
}

std::optional<QByteArray> readWhole(int file) {
    QByteArray whole;
    QByteArray chunk(kChunk, Qt::Uninitialized);
    for (;;) {
        const qint64 count = readAt(file, chunk.data(), kChunk, whole.size());
        if (count < 0)
            return {};
        whole.append(chunk.constData(), count);
        if (count < kChunk)
            return whole;
    }
}

Result<DefaultsContent> parsed(const QByteArray &text) {
    auto list = parsePropertyList(text);
    if (!list)
        return list.failure();
    if (list.value().typeId() != QMetaType::QVariantMap)
        return Failure{QStringLiteral("This property list is no dictionary."), {}};
    return DefaultsContent{list.value().toMap(), {}};
}

// Takes the marks out of the values again; false when one is not the value of a key.
bool takeOut(DefaultsContent &content, const Skimmed &skimmed) {
    for (const auto &[mark, where] : skimmed.large) {
        const auto found = std::find(content.values.begin(), content.values.end(), QVariant(mark));
        if (found == content.values.end())
            return false;
        content.large.insert(found.key(), where);
        content.values.erase(found);
    }
    return true;
}

} // namespace

std::optional<Result<DefaultsContent>> readDefaults(int file) {
    const auto skimmed = skim(file);
    if (!skimmed)
        return {};
    // Inside comments and CDATA sections, and in the binary form, "<data>" is not a tag.
    const bool isPlain = !BinaryPlistReader::recognises(skimmed->text) && !skimmed->text.contains("<!--")
                         && !skimmed->text.contains("<![");
    if (skimmed->large.empty() || isPlain) {
        auto content = parsed(skimmed->text);
        if (skimmed->large.empty() || (content && takeOut(content.value(), *skimmed)))
            return content;
    }
    const auto whole = readWhole(file);
    return whole ? std::optional(parsed(*whole)) : std::nullopt;
}

std::optional<QByteArray> readLargeData(int file, const LargeData &where) {
    QByteArray text(where.length, Qt::Uninitialized);
    if (readAt(file, text.data(), where.length, where.at) != where.length)
        return {};
    return QByteArray::fromBase64(text);
}

std::optional<DefaultsContent> writeDefaults(int file, const DefaultsContent &content, int source) {
    DefaultsContent written{content.values, content.large};
    QVariantMap marked = content.values;
    QMap<QString, QByteArray> marks;
    for (auto value = content.values.begin(); value != content.values.end(); ++value)
        if (value->typeId() == QMetaType::QByteArray && value->toByteArray().size() > kChunk)
            marked.insert(value.key(), marks.insert(value.key(), newMark()).value());
    for (auto large = content.large.begin(); large != content.large.end(); ++large)
        marked.insert(large.key(), marks.insert(large.key(), newMark()).value());

    QByteArray lengths = kLengths;
    for (auto mark = marks.begin(); mark != marks.end(); ++mark) {
        const auto value = content.values.constFind(mark.key());
        const bool isNew = value != content.values.constEnd();
        lengths +=
            ' ' + QByteArray::number(isNew ? base64Length(value->toByteArray()) : content.large[mark.key()].length);
    }
    QByteArray text = propertyListXml(marked);
    if (!marks.isEmpty())
        text.insert(text.indexOf("<plist"), lengths + kLengthsEnd + '\n');
    // In the order of their keys, as the list has them.
    qsizetype done = 0;
    qint64 at = 0;
    for (auto mark = marks.begin(); mark != marks.end(); ++mark) {
        const qsizetype place = text.indexOf(mark->toBase64(), done);
        if (place < 0 || !writeAll(file, QByteArrayView(text).sliced(done, place - done))) {
            errno = place < 0 ? EINVAL : errno;
            return {};
        }
        at += place - done;
        done = place + mark->toBase64().size();
        LargeData &now = written.large[mark.key()];
        bool copied = false;
        if (const auto value = written.values.find(mark.key()); value != written.values.end()) {
            const QByteArray body = value->toByteArray().toBase64();
            written.values.erase(value);
            now.length = body.size();
            copied = writeAll(file, body);
        } else {
            copied = copy(source, now, file);
        }
        if (!copied)
            return {};
        now.at = std::exchange(at, at + now.length);
    }
    if (!writeAll(file, QByteArrayView(text).sliced(done)))
        return {};
    return written;
}

} // namespace cantorel::foundation
