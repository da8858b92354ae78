#pragma once

#include <QDBusArgument>
#include <QString>
#include <QVariantMap>

namespace cantorel::desktop {

// One row of the portal's lists of shortcuts, "(sa{sv})" on the bus.
struct PortalShortcut {
    QString id;
    QVariantMap details;
};

inline QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.details;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.details;
    argument.endStructure();
    return argument;
}

} // namespace cantorel::desktop

Q_DECLARE_METATYPE(cantorel::desktop::PortalShortcut)
