#pragma once

#include <QDBusArgument>
#include <QList>
#include <QString>

namespace cantorel::desktop {

// A name pattern of the portal's dialogs, "(us)" on the bus.
struct PortalPattern {
    uint kind = 0; // by the name
    QString pattern;
};

// One kind of file that a dialog can be limited to, "(sa(us))" on the bus.
struct PortalFilter {
    QString name;
    QList<PortalPattern> patterns;
};

inline QDBusArgument &operator<<(QDBusArgument &argument, const PortalPattern &pattern) {
    argument.beginStructure();
    argument << pattern.kind << pattern.pattern;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument &operator>>(const QDBusArgument &argument, PortalPattern &pattern) {
    argument.beginStructure();
    argument >> pattern.kind >> pattern.pattern;
    argument.endStructure();
    return argument;
}

inline QDBusArgument &operator<<(QDBusArgument &argument, const PortalFilter &filter) {
    argument.beginStructure();
    argument << filter.name << filter.patterns;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument &operator>>(const QDBusArgument &argument, PortalFilter &filter) {
    argument.beginStructure();
    argument >> filter.name >> filter.patterns;
    argument.endStructure();
    return argument;
}

} // namespace cantorel::desktop

Q_DECLARE_METATYPE(cantorel::desktop::PortalPattern)
Q_DECLARE_METATYPE(cantorel::desktop::PortalFilter)
