#include "platform/foundation/BinaryPropertyList.h"

#include <QDateTime>
#include <QTimeZone>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace cantorel::foundation {

namespace {

constexpr qint64 kReferenceEpoch = 978'307'200; // 2001-01-01 in seconds since 1970
constexpr int kRefSize = 4;                     // of the lists written here
constexpr int kTrailerSize = 32;
constexpr int kHeaderSize = 8;
constexpr int kDeepest = 200;

bool isAscii(const QString &text) {
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}

// Writes a reference and answers the place behind it.
char *put(char *out, BinaryPlistWriter::Ref ref) {
    qToBigEndian(ref, out);
    return out + kRefSize;
}

int bytesFor(std::uint64_t value) { return value <= 0xFF ? 1 : value <= 0xFFFF ? 2 : value <= 0xFFFF'FFFF ? 4 : 8; }

} // namespace

QDateTime dateFromReference(double seconds) {
    if (!(std::abs(seconds) < 1e14))
        return {};
    const auto date = QDateTime::fromMSecsSinceEpoch(kReferenceEpoch * 1000 + std::llround(seconds * 1000), Qt::UTC);
    return isStorableDate(date) ? date : QDateTime();
}

bool isStorableDate(const QDateTime &date) {
    const int year = date.toUTC().date().year();
    return date.isValid() && year >= 1 && year <= 9999;
}

double referenceFromDate(const QDateTime &date) {
    return static_cast<double>(date.toMSecsSinceEpoch() - kReferenceEpoch * 1000) / 1000;
}

BinaryPlistWriter::BinaryPlistWriter() : mBytes("bplist00") {}

BinaryPlistWriter::Ref BinaryPlistWriter::begin() {
    mOffsets.push_back(static_cast<std::uint64_t>(mBytes.size()));
    return static_cast<Ref>(mOffsets.size() - 1);
}

char *BinaryPlistWriter::more(std::size_t bytes) {
    const qsizetype at = mBytes.size();
    mBytes.resize(at + static_cast<qsizetype>(bytes));
    return mBytes.data() + at;
}

void BinaryPlistWriter::bigEndian(std::uint64_t value, int bytes) {
    char buffer[8];
    qToBigEndian(value, buffer);
    std::copy_n(buffer + (8 - bytes), bytes, more(static_cast<std::size_t>(bytes)));
}

void BinaryPlistWriter::marker(std::uint8_t kind, std::uint64_t count) {
    if (count < 15) {
        mBytes.append(static_cast<char>(kind | count));
        return;
    }
    const int bytes = bytesFor(count);
    mBytes.append(static_cast<char>(kind | 0x0F));
    mBytes.append(static_cast<char>(0x10 | std::countr_zero(static_cast<unsigned>(bytes))));
    bigEndian(count, bytes);
}

BinaryPlistWriter::Ref BinaryPlistWriter::text(const QString &text) {
    const Ref ref = begin();
    const auto length = static_cast<std::uint64_t>(text.size());
    const bool ascii = isAscii(text);
    marker(ascii ? 0x50 : 0x60, length);
    const qsizetype at = mBytes.size();
    mBytes.resize(at + text.size() * (ascii ? 1 : 2));
    if (ascii)
        std::transform(text.begin(), text.end(), mBytes.begin() + at, [](QChar c) { return c.toLatin1(); });
    else
        qToBigEndian<char16_t>(text.utf16(), text.size(), mBytes.data() + at);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::key(const QString &text) {
    // Objects of a list have the same keys in the same order, so the one that followed last time is tried first.
    std::size_t found = mKeys.empty() ? 0 : mKeys[mLastKey].next;
    if (mKeys.empty() || mKeys[found].text != text) {
        const auto known = mKeyPlaces.constFind(text);
        found = known != mKeyPlaces.constEnd() ? *known : mKeys.size();
        if (found == mKeys.size()) {
            mKeys.push_back({text, this->text(text), 0});
            mKeyPlaces.insert(text, found);
        }
        mKeys[mLastKey].next = found;
    }
    mLastKey = found;
    return mKeys[found].ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::integer(qint64 value) {
    const Ref ref = begin();
    const int bytes = value < 0 ? 8 : bytesFor(static_cast<std::uint64_t>(value));
    marker(0x10, static_cast<std::uint64_t>(std::countr_zero(static_cast<unsigned>(bytes))));
    bigEndian(static_cast<std::uint64_t>(value), bytes);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::unsignedInteger(quint64 value) {
    if (value <= static_cast<quint64>(std::numeric_limits<qint64>::max()))
        return integer(static_cast<qint64>(value));
    const Ref ref = begin();
    marker(0x10, 4); // 16 bytes, since 8 would be read as negative
    bigEndian(0, 8);
    bigEndian(value, 8);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::real(double value) {
    const Ref ref = begin();
    marker(0x20, 3);
    bigEndian(std::bit_cast<std::uint64_t>(value), 8);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::boolean(bool value) {
    const Ref ref = begin();
    mBytes.append(value ? '\x09' : '\x08');
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::date(const QDateTime &date) {
    const Ref ref = begin();
    mBytes.append('\x33');
    bigEndian(std::bit_cast<std::uint64_t>(referenceFromDate(date)), 8);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::data(const QByteArray &bytes) {
    const Ref ref = begin();
    marker(0x40, static_cast<std::uint64_t>(bytes.size()));
    mBytes.append(bytes);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::uid(std::uint32_t number) {
    const Ref ref = begin();
    const int bytes = bytesFor(number);
    mBytes.append(static_cast<char>(0x80 | (bytes - 1)));
    bigEndian(number, bytes);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::array(std::span<const Ref> items) {
    const Ref ref = begin();
    marker(0xA0, items.size());
    char *out = more(items.size() * kRefSize);
    for (const Ref item : items)
        out = put(out, item);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::dictionary(std::span<const std::pair<Ref, Ref>> entries) {
    const Ref ref = begin();
    marker(0xD0, entries.size());
    char *out = more(entries.size() * 2 * kRefSize);
    for (const auto &entry : entries)
        out = put(out, entry.first);
    for (const auto &entry : entries)
        out = put(out, entry.second);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::value(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::QString:
        return text(*static_cast<const QString *>(value.constData()));
    case QMetaType::Bool:
        return boolean(value.toBool());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return integer(value.toLongLong());
    case QMetaType::ULongLong:
        return unsignedInteger(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return real(value.toDouble());
    case QMetaType::QDateTime:
        return date(value.toDateTime());
    case QMetaType::QByteArray:
        return data(value.toByteArray());
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        std::vector<Ref> items;
        for (const QVariant &item : value.toList())
            items.push_back(this->value(item));
        return array(items);
    }
    case QMetaType::QVariantMap: {
        std::vector<std::pair<Ref, Ref>> entries;
        const QVariantMap map = value.toMap();
        for (auto entry = map.begin(); entry != map.end(); ++entry)
            entries.emplace_back(key(entry.key()), this->value(entry.value()));
        return dictionary(entries);
    }
    default:
        if (value.metaType() == QMetaType::fromType<PropertyListUid>())
            return uid(static_cast<std::uint32_t>(value.value<PropertyListUid>().value));
        return text(value.toString());
    }
}

QByteArray BinaryPlistWriter::finish(Ref top) {
    const auto table = static_cast<std::uint64_t>(mBytes.size());
    const int offsetSize = bytesFor(table);
    for (const std::uint64_t offset : mOffsets)
        bigEndian(offset, offsetSize);
    mBytes.append(6, '\0');
    mBytes.append(static_cast<char>(offsetSize)).append(static_cast<char>(kRefSize));
    bigEndian(mOffsets.size(), 8);
    bigEndian(top, 8);
    bigEndian(table, 8);
    return std::move(mBytes);
}

std::uint64_t BinaryPlistReader::number(std::uint64_t at, int bytes) const {
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i)
        value = value << 8 | static_cast<std::uint8_t>(mBytes[static_cast<qsizetype>(at) + i]);
    return value;
}

std::optional<BinaryPlistReader> BinaryPlistReader::open(const QByteArray &bytes) {
    if (!recognises(bytes) || bytes.size() < kHeaderSize + kTrailerSize)
        return std::nullopt;
    BinaryPlistReader reader(bytes);
    const auto size = static_cast<std::uint64_t>(bytes.size());
    const std::uint64_t trailer = size - kTrailerSize;
    reader.mOffsetSize = static_cast<int>(reader.number(trailer + 6, 1));
    reader.mRefSize = static_cast<int>(reader.number(trailer + 7, 1));
    const std::uint64_t count = reader.number(trailer + 8, 8);
    const std::uint64_t top = reader.number(trailer + 16, 8);
    reader.mTable = reader.number(trailer + 24, 8);
    const auto sane = [](int bytes) { return bytes >= 1 && bytes <= 8; };
    if (!sane(reader.mOffsetSize) || !sane(reader.mRefSize) || reader.mTable < kHeaderSize || reader.mTable > trailer
        || count == 0 || count > (trailer - reader.mTable) / static_cast<std::uint64_t>(reader.mOffsetSize)
        || count > std::numeric_limits<Ref>::max() || top >= count)
        return std::nullopt;
    reader.mCount = static_cast<Ref>(count);
    reader.mTop = static_cast<Ref>(top);
    return reader;
}

bool BinaryPlistReader::take(std::uint64_t at, std::uint64_t bytes) {
    if (at > mTable || bytes > mTable - at)
        return false;
    // Honest lists name small objects often: each reference of a byte may cost a number of nine.
    mConsumed += bytes;
    return mConsumed <= static_cast<std::uint64_t>(mBytes.size()) * 16;
}

BinaryPlistReader::Item BinaryPlistReader::item(Ref ref) {
    if (ref >= mCount)
        return {};
    std::uint64_t at = number(mTable + std::uint64_t(ref) * static_cast<std::uint64_t>(mOffsetSize), mOffsetSize);
    if (at < kHeaderSize || !take(at, 1))
        return {};
    const auto head = static_cast<std::uint8_t>(mBytes[static_cast<qsizetype>(at++)]);
    const std::uint8_t kind = head & 0xF0;
    std::uint64_t count = head & 0x0F;

    if (kind >= 0x40 && kind != 0x80 && count == 15) {
        if (!take(at, 1))
            return {};
        const auto size = static_cast<std::uint8_t>(mBytes[static_cast<qsizetype>(at++)]);
        const int bytes = 1 << (size & 0x0F);
        if ((size & 0xF0) != 0x10 || bytes > 8 || !take(at, static_cast<std::uint64_t>(bytes)))
            return {};
        count = number(at, bytes);
        at += static_cast<std::uint64_t>(bytes);
        if (count > mTable)
            return {};
    }
    const auto scalar = [](QVariant value) { return Item{Item::Kind::Scalar, std::move(value), 0, {}}; };
    const auto here = [&] { return mBytes.constData() + at; };

    switch (kind) {
    case 0x00:
        if (count == 8 || count == 9)
            return scalar(count == 9);
        return count == 0 ? scalar({}) : Item{};
    case 0x10: {
        const std::uint64_t bytes = 1ULL << count;
        if (count > 4 || !take(at, bytes))
            return {};
        if (bytes == 16 && number(at, 8) != 0)
            return {}; // more than any number of ours
        if (bytes == 16)
            return scalar(static_cast<qulonglong>(number(at + 8, 8)));
        return scalar(static_cast<qlonglong>(number(at, static_cast<int>(bytes))));
    }
    case 0x20:
        if (count == 2 && take(at, 4))
            return scalar(double(std::bit_cast<float>(static_cast<std::uint32_t>(number(at, 4)))));
        return count == 3 && take(at, 8) ? scalar(std::bit_cast<double>(number(at, 8))) : Item{};
    case 0x30:
        if (count == 3 && take(at, 8))
            if (const QDateTime date = dateFromReference(std::bit_cast<double>(number(at, 8))); date.isValid())
                return scalar(date);
        return {};
    case 0x40:
        return take(at, count) ? scalar(QByteArray(here(), static_cast<qsizetype>(count))) : Item{};
    case 0x50:
        return take(at, count) ? scalar(QString::fromLatin1(here(), static_cast<qsizetype>(count))) : Item{};
    case 0x60: {
        if (!take(at, count * 2))
            return {};
        QString text(static_cast<qsizetype>(count), Qt::Uninitialized);
        qFromBigEndian<char16_t>(here(), text.size(), text.data());
        return scalar(text);
    }
    case 0x70:
        return take(at, count) ? scalar(QString::fromUtf8(here(), static_cast<qsizetype>(count))) : Item{};
    case 0x80:
        return count < 8 && take(at, count + 1) ? Item{Item::Kind::Uid, {}, number(at, static_cast<int>(count) + 1), {}}
                                                : Item{};
    case 0xA0:
    case 0xD0: {
        const std::uint64_t refs = kind == 0xD0 ? count * 2 : count;
        if (!take(at, refs * static_cast<std::uint64_t>(mRefSize)))
            return {};
        Item result{kind == 0xD0 ? Item::Kind::Dictionary : Item::Kind::Array, {}, 0, {}};
        result.refs.reserve(refs);
        for (std::uint64_t i = 0; i < refs; ++i, at += static_cast<std::uint64_t>(mRefSize)) {
            const std::uint64_t item = number(at, mRefSize);
            if (item >= mCount)
                return {};
            result.refs.push_back(static_cast<Ref>(item));
        }
        return result;
    }
    default:
        return {};
    }
}

std::optional<QString> BinaryPlistReader::keyText(Ref ref) {
    if (const auto known = mKeys.constFind(ref); known != mKeys.constEnd())
        return *known;
    const Item key = item(ref);
    if (key.value.typeId() != QMetaType::QString)
        return std::nullopt;
    return *mKeys.insert(ref, key.value.toString());
}

namespace {

// Makes each object once; an object that is met while it is being made holds itself.
class TreeBuilder {
public:
    TreeBuilder(BinaryPlistReader &reader, std::uint64_t most)
        : mReader(reader),
          mMost(most),
          mDone(reader.count()),
          mState(reader.count(), State::Unread),
          mWeight(reader.count()) {}

    std::optional<QVariant> build(BinaryPlistReader::Ref ref, int depth = 0) {
        if (mState[ref] == State::Open || depth > kDeepest)
            return std::nullopt;
        if (mState[ref] == State::Unread) {
            mState[ref] = State::Open;
            const std::uint64_t around = std::exchange(mUsed, 1);
            auto value = make(mReader.item(ref), depth);
            mWeight[ref] = std::exchange(mUsed, around);
            if (!value)
                return std::nullopt;
            mState[ref] = State::Done;
            mDone[ref] = *std::move(value);
        }
        mUsed += mWeight[ref];
        return mUsed <= mMost ? std::optional(mDone[ref]) : std::nullopt;
    }

private:
    enum class State : std::uint8_t { Unread, Open, Done };
    using Kind = BinaryPlistReader::Item::Kind;

    std::optional<QVariant> make(const BinaryPlistReader::Item &item, int depth) {
        switch (item.kind) {
        case Kind::Invalid:
            return std::nullopt;
        case Kind::Scalar:
            mUsed += static_cast<std::uint64_t>(item.value.typeId() == QMetaType::QString ? item.value.toString().size()
                                                : item.value.typeId() == QMetaType::QByteArray
                                                    ? item.value.toByteArray().size()
                                                    : 0);
            return item.value;
        case Kind::Uid:
            return QVariant::fromValue(PropertyListUid{item.uid});
        case Kind::Array: {
            QVariantList list;
            for (const auto ref : item.refs) {
                auto value = build(ref, depth + 1);
                if (!value)
                    return std::nullopt;
                list << *std::move(value);
            }
            return list;
        }
        case Kind::Dictionary: {
            QVariantMap map;
            const std::size_t count = item.refs.size() / 2;
            for (std::size_t i = 0; i < count; ++i) {
                const auto key = mReader.keyText(item.refs[i]);
                auto value = build(item.refs[count + i], depth + 1);
                if (!key || !value)
                    return std::nullopt;
                mUsed += static_cast<std::uint64_t>(key->size());
                map.insert(*key, *std::move(value));
            }
            return map;
        }
        }
        return std::nullopt;
    }

    BinaryPlistReader &mReader;
    const std::uint64_t mMost;
    std::vector<QVariant> mDone;
    std::vector<State> mState;
    std::vector<std::uint64_t> mWeight; // of each made object and all that it holds, written out
    std::uint64_t mUsed = 0;            // by the one that is being made
};

} // namespace

std::optional<QVariant> readBinaryPropertyList(const QByteArray &bytes) {
    auto reader = BinaryPlistReader::open(bytes);
    const std::uint64_t most = static_cast<std::uint64_t>(bytes.size()) * 16 + (1 << 20);
    return reader ? TreeBuilder(*reader, most).build(reader->top()) : std::nullopt;
}

} // namespace cantorel::foundation
