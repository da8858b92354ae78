#include "platform/foundation/KeyedArchiver.h"

#include "platform/foundation/BinaryPropertyList.h"

#include <QDateTime>
#include <QHash>

#include <algorithm>

namespace cantorel::foundation {

namespace {

class Archiver {
public:
    QByteArray archive(const QVariant &rootObject) {
        mObjects.push_back(mWriter.text(QStringLiteral("$null")));
        const Ref root = mWriter.uid(encode(rootObject));
        const Ref objects = mWriter.array(mObjects);
        const Ref top = dictionary({{QStringLiteral("root"), root}});
        return mWriter.finish(
            dictionary({{QStringLiteral("$version"), mWriter.integer(100'000)},
                        {QStringLiteral("$archiver"), mWriter.text(QStringLiteral("NSKeyedArchiver"))},
                        {QStringLiteral("$top"), top},
                        {QStringLiteral("$objects"), objects}}));
    }

private:
    using Ref = BinaryPlistWriter::Ref;
    using Uid = std::uint32_t;
    using Entries = std::vector<std::pair<Ref, Ref>>;

    Ref dictionary(std::initializer_list<std::pair<QString, Ref>> entries) {
        Entries refs;
        for (const auto &[key, value] : entries)
            refs.emplace_back(mWriter.key(key), value);
        return mWriter.dictionary(refs);
    }

    Uid add(Ref object) {
        mObjects.push_back(object);
        return static_cast<Uid>(mObjects.size() - 1);
    }

    Ref classOf(const QString &name, const QStringList &ancestors = {}) {
        auto known = mClasses.constFind(name);
        if (known == mClasses.constEnd()) {
            const Ref nameRef = mWriter.key(name);
            std::vector<Ref> chain{nameRef};
            for (const QString &ancestor : ancestors)
                chain.push_back(mWriter.key(ancestor));
            chain.push_back(mWriter.key(QStringLiteral("NSObject")));
            const Uid uid = add(dictionary(
                {{QStringLiteral("$classname"), nameRef}, {QStringLiteral("$classes"), mWriter.array(chain)}}));
            known = mClasses.insert(name, mWriter.uid(uid));
        }
        return *known;
    }

    Ref references(const QVariantList &list) {
        std::vector<Ref> refs;
        refs.reserve(static_cast<std::size_t>(list.size()));
        for (const QVariant &item : list)
            refs.push_back(mWriter.uid(encode(item)));
        return mWriter.array(refs);
    }

    // What an object encodes under a key: numbers stand there themselves, everything else by reference.
    Ref member(const QVariant &value) {
        switch (value.typeId()) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Float:
        case QMetaType::Double:
            return mWriter.value(value);
        default:
            return mWriter.uid(encode(value));
        }
    }

    Uid encode(const QVariant &value) {
        switch (value.typeId()) {
        case QMetaType::UnknownType:
            return 0;
        case QMetaType::QVariantList:
        case QMetaType::QStringList: {
            const Ref items = references(value.toList());
            const Ref type = classOf(QStringLiteral("NSMutableArray"), {QStringLiteral("NSArray")});
            return add(dictionary({{QStringLiteral("NS.objects"), items}, {QStringLiteral("$class"), type}}));
        }
        case QMetaType::QVariantMap: {
            const QVariantMap map = value.toMap();
            const Ref keys = references(QVariantList(map.keyBegin(), map.keyEnd()));
            const Ref items = references(map.values());
            const Ref type = classOf(QStringLiteral("NSDictionary"));
            return add(dictionary({{QStringLiteral("NS.keys"), keys},
                                   {QStringLiteral("NS.objects"), items},
                                   {QStringLiteral("$class"), type}}));
        }
        case QMetaType::QDateTime: {
            const Ref time = mWriter.real(referenceFromDate(value.toDateTime()));
            return add(dictionary(
                {{QStringLiteral("NS.time"), time}, {QStringLiteral("$class"), classOf(QStringLiteral("NSDate"))}}));
        }
        case QMetaType::QRectF: {
            const QRectF rect = value.toRectF();
            const auto number = [](double x) { return QString::number(x, 'g', QLocale::FloatingPointShortest); };
            const QString text =
                QStringLiteral("{{%1, %2}, {%3, %4}}")
                    .arg(number(rect.x()), number(rect.y()), number(rect.width()), number(rect.height()));
            const Ref textRef = mWriter.uid(add(mWriter.text(text)));
            return add(dictionary({{QStringLiteral("NS.rectval"), textRef},
                                   {QStringLiteral("NS.special"), mWriter.integer(3)},
                                   {QStringLiteral("$class"), classOf(QStringLiteral("NSValue"))}}));
        }
        default:
            if (value.metaType() == QMetaType::fromType<ArchivedObject>())
                return encodeObject(*static_cast<const ArchivedObject *>(value.constData()));
            return add(mWriter.value(value));
        }
    }

    Uid encodeObject(const ArchivedObject &object) {
        Entries entries;
        entries.reserve(object.values.size() + 1);
        entries.emplace_back(mWriter.key(QStringLiteral("$class")), classOf(object.className));
        for (const auto &[key, value] : object.values)
            entries.emplace_back(mWriter.key(key), member(value));
        return add(mWriter.dictionary(entries));
    }

    BinaryPlistWriter mWriter;
    std::vector<Ref> mObjects;
    QHash<QString, Ref> mClasses;
};

} // namespace

ArchivedValues::ArchivedValues(std::initializer_list<Entry> entries) {
    mEntries.reserve(entries.size());
    for (const auto &[key, value] : entries)
        (*this)[key] = value;
}

const QVariant *ArchivedValues::find(const QString &key) const {
    // A handful, which is walked faster than searched.
    for (const auto &[name, value] : mEntries)
        if (name == key)
            return &value;
    return nullptr;
}

QVariant ArchivedValues::value(const QString &key) const {
    const QVariant *found = find(key);
    return found ? *found : QVariant();
}

QVariant &ArchivedValues::operator[](const QString &key) {
    const auto place = std::lower_bound(mEntries.begin(), mEntries.end(), key,
                                        [](const Entry &entry, const QString &name) { return entry.first < name; });
    if (place != mEntries.end() && place->first == key)
        return place->second;
    return mEntries.emplace(place, key, QVariant())->second;
}

QStringList ArchivedValues::keys() const {
    QStringList keys;
    for (const auto &entry : mEntries)
        keys.append(entry.first);
    return keys;
}

QByteArray archivedData(const QVariant &rootObject) { return Archiver().archive(rootObject); }

} // namespace cantorel::foundation
