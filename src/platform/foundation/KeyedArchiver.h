#pragma once

#include <QByteArray>
#include <QRectF>
#include <QVariant>

#include <functional>
#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel::foundation {

// What one object encoded, in the order of its keys: a map in one piece of memory, since lists hold such objects by the
// hundred thousand.
class ArchivedValues {
public:
    using Entry = std::pair<QString, QVariant>;

    ArchivedValues() = default;
    ArchivedValues(std::initializer_list<Entry> entries);

    // The value under the key; null when there is none.
    const QVariant *find(const QString &key) const;
    QVariant value(const QString &key) const;
    // The value under the key, made null where there was none.
    QVariant &operator[](const QString &key);
    void reserve(std::size_t count) { mEntries.reserve(count); }
    QStringList keys() const;

    std::size_t size() const { return mEntries.size(); }
    auto begin() const { return mEntries.begin(); }
    auto end() const { return mEntries.end(); }
    bool operator==(const ArchivedValues &) const = default;

private:
    std::vector<Entry> mEntries;
};

// One object of a keyed archive: the name of its class and what it encoded under each key. Model classes turn their
// stored fields into one and back.
struct ArchivedObject {
    QString className;
    ArchivedValues values;
    bool operator==(const ArchivedObject &) const = default;
};

// The keyed archive, in binary form, of a value: a property-list value, a null one, a QRectF, an ArchivedObject, or
// lists and maps of these. Time linear in the result. Stateless; any thread.
QByteArray archivedData(const QVariant &rootObject);

// What an archive holds, in the same shape; nothing when it is damaged in any way, holds itself, or is nested beyond
// use. Whatever the bytes are, this neither crashes nor runs away.
std::optional<QVariant> unarchivedObject(const QByteArray &archive);

// Gives the items of an archived list in their order, each made only then, so that a long list is never in memory as
// values. False when the archive is damaged or holds no list: what was given before that was found counts for nothing.
bool unarchiveItems(const QByteArray &archive, const std::function<void(const QVariant &item)> &take);

} // namespace cantorel::foundation

Q_DECLARE_METATYPE(cantorel::foundation::ArchivedObject)
