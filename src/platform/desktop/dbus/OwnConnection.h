#pragma once

#include <QDBusConnection>

namespace cantorel::desktop {

// A connection to the session bus that belongs to one service, and is closed with it: names and objects go as well.
class OwnConnection {
public:
    explicit OwnConnection(const QString &purpose)
        : mName(QStringLiteral("%1-%2").arg(purpose).arg(reinterpret_cast<quintptr>(this))) {}
    ~OwnConnection() { QDBusConnection::disconnectFromBus(mName); }
    OwnConnection(const OwnConnection &) = delete;
    OwnConnection &operator=(const OwnConnection &) = delete;

    QDBusConnection &bus() { return mBus; }

private:
    const QString mName;
    QDBusConnection mBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, mName);
};

} // namespace cantorel::desktop
