#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantList>

// How the desktop's portal is spoken to.
namespace cantorel::desktop::portal {

inline const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
inline const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
inline const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");

inline QDBusMessage callTo(const QString &interface, const QString &method, const QVariantList &arguments,
                           const QString &path = kPath) {
    QDBusMessage call = QDBusMessage::createMethodCall(kService, path, interface, method);
    call.setArguments(arguments);
    return call;
}

inline QString pathOf(const QDBusConnection &bus, const QString &kind, const QString &token) {
    QString sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return QStringLiteral("%1/%2/%3/%4").arg(kPath, kind, sender, token);
}

// Where the answer to a request with that token comes from: listened to before it is asked, lest the answer be faster.
inline QString requestPath(const QDBusConnection &bus, const QString &token) {
    return pathOf(bus, QStringLiteral("request"), token);
}

inline QString sessionPath(const QDBusConnection &bus, const QString &token) {
    return pathOf(bus, QStringLiteral("session"), token);
}

} // namespace cantorel::desktop::portal
