#include "platform/foundation/PropertyList.h"

#include "platform/foundation/BinaryPropertyList.h"
#include "platform/foundation/PlistHandles.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace cantorel::foundation {

namespace {

constexpr int kDeepest = 200; // levels of nesting; libplist walks them by recursion

// The nesting of the containers in an XML text, without parsing it.
int depthOfXml(const QByteArray &xml) {
    int depth = 0, deepest = 0;
    for (qsizetype at = xml.indexOf('<'); at >= 0; at = xml.indexOf('<', at + 1)) {
        const QByteArrayView tag = QByteArrayView(xml).sliced(at + 1);
        if (tag.startsWith("array") || tag.startsWith("dict"))
            deepest = std::max(deepest, ++depth);
        else if (tag.startsWith("/array") || tag.startsWith("/dict"))
            --depth;
    }
    return deepest;
}

QVariant fromPlist(plist_t node);

QVariantMap mapFromPlist(plist_t node) {
    QVariantMap map;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(node, &rawIterator);
    const PlistIterator iterator(rawIterator);
    char *rawKey = nullptr;
    plist_t item = nullptr;
    for (plist_dict_next_item(node, rawIterator, &rawKey, &item); item != nullptr;
         plist_dict_next_item(node, rawIterator, &rawKey, &item)) {
        const PlistText key(rawKey);
        map.insert(QString::fromUtf8(key.get()), fromPlist(item));
        rawKey = nullptr;
        item = nullptr;
    }
    return map;
}

QVariantList listFromPlist(plist_t node) {
    QVariantList list;
    plist_array_iter rawIterator = nullptr;
    plist_array_new_iter(node, &rawIterator);
    const PlistIterator iterator(rawIterator);
    plist_t item = nullptr;
    for (plist_array_next_item(node, rawIterator, &item); item != nullptr;
         plist_array_next_item(node, rawIterator, &item)) {
        list << fromPlist(item);
        item = nullptr;
    }
    return list;
}

QVariant fromPlist(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return static_cast<qlonglong>(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING: {
        char *raw = nullptr;
        plist_get_string_val(node, &raw);
        const PlistText text(raw);
        return QString::fromUtf8(raw);
    }
    case PLIST_DATA: {
        char *raw = nullptr;
        uint64_t size = 0;
        plist_get_data_val(node, &raw, &size);
        const PlistText data(raw);
        return QByteArray(raw, static_cast<qsizetype>(size));
    }
    case PLIST_DATE: {
        int32_t seconds = 0, microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return dateFromReference(seconds + microseconds * 1e-6);
    }
    case PLIST_ARRAY:
        return listFromPlist(node);
    case PLIST_DICT:
        return mapFromPlist(node);
    default:
        return {};
    }
}

// Without what XML 1.0 has no way to write.
QByteArray xmlText(const QString &text) {
    QString clean;
    clean.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            clean.append(c).append(text[++i]);
        else if ((c >= QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r'))
                 && !c.isSurrogate() && c.unicode() < 0xFFFE)
            clean.append(c);
    }
    return clean.toUtf8();
}

plist_t toPlist(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return plist_new_uint(static_cast<uint64_t>(value.toLongLong()));
    case QMetaType::ULongLong:
        return plist_new_uint(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QByteArray: {
        const QByteArray data = value.toByteArray();
        return plist_new_data(data.constData(), static_cast<uint64_t>(data.size()));
    }
    case QMetaType::QDateTime: {
        const double seconds = referenceFromDate(value.toDateTime());
        return plist_new_date(static_cast<int32_t>(seconds), 0);
    }
    case QMetaType::QVariantList: {
        plist_t array = plist_new_array();
        for (const QVariant &item : value.toList())
            plist_array_append_item(array, toPlist(item));
        return array;
    }
    case QMetaType::QStringList: {
        plist_t array = plist_new_array();
        for (const QString &item : value.toStringList())
            plist_array_append_item(array, toPlist(item));
        return array;
    }
    case QMetaType::QVariantMap: {
        plist_t dictionary = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto entry = map.begin(); entry != map.end(); ++entry)
            plist_dict_set_item(dictionary, xmlText(entry.key()).constData(), toPlist(entry.value()));
        return dictionary;
    }
    default:
        return plist_new_string(xmlText(value.toString()).constData());
    }
}

} // namespace

bool isPropertyListValue(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::QString:
    case QMetaType::QStringList:
    case QMetaType::QByteArray:
        return true;
    case QMetaType::Float:
    case QMetaType::Double:
        return std::isfinite(value.toDouble());
    case QMetaType::QDateTime:
        return value.toDateTime().isValid();
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        return std::all_of(list.begin(), list.end(), isPropertyListValue);
    }
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        return std::all_of(map.begin(), map.end(), isPropertyListValue);
    }
    default:
        return false;
    }
}

Result<QVariant> parsePropertyList(const QByteArray &bytes) {
    const auto broken = [](const char *why) {
        return Failure{QStringLiteral("This is no property list."), QString::fromLatin1(why)};
    };
    if (BinaryPlistReader::recognises(bytes)) {
        if (auto value = readBinaryPropertyList(bytes))
            return *std::move(value);
        return broken("damaged binary property list");
    }
    if (depthOfXml(bytes) > kDeepest)
        return broken("nested too deeply");
    if (bytes.size() > std::numeric_limits<int32_t>::max())
        return broken("too large");
    plist_t raw = nullptr;
    plist_from_xml(bytes.constData(), static_cast<uint32_t>(bytes.size()), &raw);
    const PlistHandle root(raw);
    if (!root)
        return broken("damaged XML property list");
    return fromPlist(raw);
}

QByteArray propertyListXml(const QVariant &value) {
    const PlistHandle root(toPlist(value));
    char *raw = nullptr;
    uint32_t size = 0;
    plist_to_xml(root.get(), &raw, &size);
    const PlistText text(raw);
    return QByteArray(raw, static_cast<qsizetype>(size));
}

QByteArray propertyListBinary(const QVariant &value) {
    BinaryPlistWriter writer;
    return writer.finish(writer.value(value));
}

} // namespace cantorel::foundation
