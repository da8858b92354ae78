#include "platform/foundation/PropertyList.h"

#include "platform/foundation/BinaryPropertyList.h"
#include "platform/foundation/XmlPropertyList.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace cantorel::foundation {

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
        return isStorableDate(value.toDateTime());
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
    if (BinaryPlistReader::recognises(bytes)) {
        if (auto value = readBinaryPropertyList(bytes))
            return *std::move(value);
        return Failure{QStringLiteral("This is no property list."), QStringLiteral("damaged binary property list")};
    }
    return readXmlPropertyList(bytes);
}

QByteArray propertyListBinary(const QVariant &value) {
    BinaryPlistWriter writer;
    return writer.finish(writer.value(value));
}

} // namespace cantorel::foundation
