#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QVariant>

namespace cantorel::foundation {

// The platform's property lists as values: dictionary QVariantMap, array QVariantList, string QString, data QByteArray,
// date QDateTime, boolean bool, integer qlonglong (qulonglong above its range), real double. Stateless; any thread.

// A reference into the object list of a keyed archive.
struct PropertyListUid {
    quint64 value = 0;
    bool operator==(const PropertyListUid &) const = default;
};

// Whether a property list can hold the value and everything in it.
bool isPropertyListValue(const QVariant &value);

// Reads the XML and the binary form; says in its failure why there is nothing to read.
Result<QVariant> parsePropertyList(const QByteArray &bytes);

// The XML form, as other tools read it. Characters that XML cannot carry are left out of texts.
QByteArray propertyListXml(const QVariant &value);

// The binary form.
QByteArray propertyListBinary(const QVariant &value);

} // namespace cantorel::foundation

Q_DECLARE_METATYPE(cantorel::foundation::PropertyListUid)
