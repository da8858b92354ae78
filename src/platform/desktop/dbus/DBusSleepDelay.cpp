#include "platform/desktop/dbus/DBusSleepDelay.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace cantorel::desktop {

namespace {

const QString kService = QStringLiteral("org.freedesktop.login1");
const QString kPath = QStringLiteral("/org/freedesktop/login1");
const QString kManager = QStringLiteral("org.freedesktop.login1.Manager");

} // namespace

void DBusSleepDelay::hold(const QString &reason) {
    auto bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return;
    if (!std::exchange(mIsListening, true)) {
        bus.connect(kService, kPath, kManager, QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
        bus.connect(kService, kPath, kManager, QStringLiteral("PrepareForShutdown"), this,
                    SLOT(prepareForShutdown(bool)));
    }
    if (std::exchange(mIsHolding, true))
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kManager, QStringLiteral("Inhibit"));
    call << QStringLiteral("sleep:shutdown") << QStringLiteral("Cantorel") << reason << QStringLiteral("delay");
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, asked = ++mAsked] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
        if (asked != mAsked)
            return;
        if (reply.isError())
            mIsHolding = false; // Asked again with the next hold.
        else
            mLock = reply.value();
    });
}

void DBusSleepDelay::release() {
    ++mAsked;
    mIsHolding = false;
    mLock = QDBusUnixFileDescriptor();
}

void DBusSleepDelay::prepareFor(bool begins, bool shutsDown) {
    if (begins && willSleep)
        willSleep(shutsDown);
    else if (!begins && didWake)
        didWake();
}

} // namespace cantorel::desktop
