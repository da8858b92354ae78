#pragma once

#include <QByteArray>
#include <QRectF>
#include <QVariant>

#include <optional>

namespace cantorel::foundation {

// One object of a keyed archive: the name of its class and what it encoded under each key. Model classes turn their
// stored fields into one and back.
struct ArchivedObject {
    QString className;
    QVariantMap values;
    bool operator==(const ArchivedObject &) const = default;
};

// The keyed archive, in binary form, of a value: a property-list value, a null one, a QRectF, an ArchivedObject, or
// lists and maps of these. Time linear in the result. Stateless; any thread.
QByteArray archivedData(const QVariant &rootObject);

// What an archive holds, in the same shape; nothing when it is damaged in any way, holds itself, or is nested beyond
// use. Whatever the bytes are, this neither crashes nor runs away.
std::optional<QVariant> unarchivedObject(const QByteArray &archive);

} // namespace cantorel::foundation

Q_DECLARE_METATYPE(cantorel::foundation::ArchivedObject)
