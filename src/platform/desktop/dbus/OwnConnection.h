#pragma once

#include <QDBusConnection>

namespace cantorel::desktop {

// A connection to the session bus that belongs to one service, and is closed with it: its name and objects go as well.
class OwnConnection {
public:
    explicit OwnConnection(const QString &purpose)
        : mName(QStringLiteral("%1-%2").arg(purpose).arg(reinterpret_cast<quintptr>(this))) {}
    ~OwnConnection() {
        // The bus hears of a closed connection some time later.
        if (!mService.isEmpty())
            mBus.unregisterService(mService);
        QDBusConnection::disconnectFromBus(mName);
    }
    OwnConnection(const OwnConnection &) = delete;
    OwnConnection &operator=(const OwnConnection &) = delete;

    QDBusConnection &bus() { return mBus; }
    // One name, if it is free.
    bool take(const QString &service) {
        if (!mBus.registerService(service))
            return false;
        mService = service;
        return true;
    }

private:
    const QString mName;
    QString mService;
    QDBusConnection mBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, mName);
};

} // namespace cantorel::desktop
