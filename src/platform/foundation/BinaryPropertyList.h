#pragma once

#include "platform/foundation/PropertyList.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

class QDateTime;

namespace cantorel::foundation {

// Dates of property lists count seconds from the first moment of 2001 in UTC.
QDateTime dateFromReference(double seconds);
double referenceFromDate(const QDateTime &date);
// Whether every form of a property list can hold the date.
bool isStorableDate(const QDateTime &date);

// Writes the binary form in time linear in what is written. Each function adds one object and answers its number;
// containers name the numbers of what is in them, so what is in them comes first. One thread, one list.
class BinaryPlistWriter {
public:
    using Ref = std::uint32_t;

    BinaryPlistWriter();

    Ref text(const QString &text);
    Ref key(const QString &text); // a text that stands only once however often it is named
    Ref integer(qint64 value);
    Ref unsignedInteger(quint64 value);
    Ref real(double value);
    Ref boolean(bool value);
    Ref date(const QDateTime &date);
    Ref data(const QByteArray &bytes);
    Ref uid(std::uint32_t number);
    Ref array(std::span<const Ref> items);
    Ref dictionary(std::span<const std::pair<Ref, Ref>> entries);

    // A value as PropertyList.h describes them, with all that is in it.
    Ref value(const QVariant &value);

    // The whole list with that object at its top; the writer is spent then.
    QByteArray finish(Ref top);

private:
    Ref begin();
    void marker(std::uint8_t kind, std::uint64_t count);
    char *more(std::size_t bytes); // room at the end
    void bigEndian(std::uint64_t value, int bytes);

    QByteArray mBytes;
    std::vector<std::uint64_t> mOffsets;
    struct Key {
        QString text;
        Ref ref;
        std::size_t next; // the key that was named after it
    };
    std::vector<Key> mKeys;
    QHash<QString, std::size_t> mKeyPlaces;
    std::size_t mLastKey = 0;
};

// Reads the objects of a binary list one by one. Whatever the bytes are, it stays within them, and a list whose objects
// overlap to multiply themselves ends as invalid. Holds a view: the bytes outlive it.
class BinaryPlistReader {
public:
    using Ref = std::uint32_t;

    struct Item {
        enum class Kind { Invalid, Scalar, Uid, Array, Dictionary };
        Kind kind = Kind::Invalid;
        QVariant value;        // of a scalar; null for the null object
        std::uint64_t uid = 0; // of a reference
        std::vector<Ref> refs; // of an array its items; of a dictionary its keys, then as many values
    };

    static bool recognises(const QByteArray &bytes) { return bytes.startsWith("bplist0"); }
    // Nothing when the frame of the list is broken.
    static std::optional<BinaryPlistReader> open(const QByteArray &bytes);

    Ref top() const { return mTop; }
    Ref count() const { return mCount; }

    // Reading the same large object again and again uses up the reader: keep what it answers.
    Item item(Ref ref);
    // The text of a dictionary's key, however often it is named; nothing when it is no text.
    std::optional<QString> keyText(Ref ref);

private:
    explicit BinaryPlistReader(const QByteArray &bytes) : mBytes(bytes) {}
    std::uint64_t number(std::uint64_t at, int bytes) const;
    bool take(std::uint64_t at, std::uint64_t bytes);

    QByteArray mBytes;
    int mOffsetSize = 0, mRefSize = 0;
    Ref mTop = 0, mCount = 0;
    std::uint64_t mTable = 0;    // where the offsets stand, which is where the objects end
    std::uint64_t mConsumed = 0; // bytes of objects read so far
    QHash<Ref, QString> mKeys;
};

// The whole list as one value; nothing when it is damaged, holds itself, is nested beyond any use, or names the same
// objects so often that what it stands for is many times what it is.
std::optional<QVariant> readBinaryPropertyList(const QByteArray &bytes);

} // namespace cantorel::foundation
