#include "platform/desktop/dbus/DBusPowerActivity.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

#include <iterator>

namespace cantorel::desktop {

namespace {

constexpr int kPatience = 3000; // milliseconds for an answer

struct Service {
    const char *name, *path, *interface, *releaseMethod;
};

// Those of the session that inhibit by a cookie, the better first.
constexpr Service kServices[] = {
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "UnInhibit"},
    {"org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
     "org.freedesktop.PowerManagement.Inhibit", "UnInhibit"}};

QDBusMessage callTo(const Service &service, const char *method) {
    return QDBusMessage::createMethodCall(QString::fromLatin1(service.name), QString::fromLatin1(service.path),
                                          QString::fromLatin1(service.interface), QString::fromLatin1(method));
}

// The program behind a name of the session bus, started if it can be; empty when there is none.
QString ownerOf(const char *name) {
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return {};
    const QString service = QString::fromLatin1(name);
    QString owner = bus.interface()->serviceOwner(service);
    if (owner.isEmpty() && bus.interface()->startService(service).isValid())
        owner = bus.interface()->serviceOwner(service);
    return owner;
}

} // namespace

DBusPowerActivity::~DBusPowerActivity() { release(); }

bool DBusPowerActivity::holdWith(int service, const QString &reason) {
    const QString owner = ownerOf(kServices[service].name);
    if (owner.isEmpty())
        return false;
    QDBusMessage call = callTo(kServices[service], "Inhibit");
    call << QStringLiteral("Cantorel") << reason;
    const QDBusReply<quint32> cookie = QDBusConnection::sessionBus().call(call, QDBus::Block, kPatience);
    if (!cookie.isValid())
        return false;
    mService = service;
    mOwner = owner;
    mCookie = cookie.value();
    return true;
}

foundation::Result<void> DBusPowerActivity::hold(const QString &reason) {
    if (mService >= 0 && ownerOf(kServices[mService].name) == mOwner)
        return {};
    mService = -1;
    for (int service = 0; service < static_cast<int>(std::size(kServices)); ++service) {
        if (holdWith(service, reason)) {
            mLock = QDBusUnixFileDescriptor();
            return {};
        }
    }
    if (mLock.isValid())
        return {};

    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QStringLiteral("idle:sleep") << QStringLiteral("Cantorel") << reason << QStringLiteral("block");
    const QDBusReply<QDBusUnixFileDescriptor> lock = QDBusConnection::systemBus().call(call, QDBus::Block, kPatience);
    if (!lock.isValid())
        return foundation::Failure{
            QStringLiteral("The computer cannot be kept awake; it may fall asleep during a long recording."),
            QStringLiteral("no service keeps the computer awake: %1").arg(lock.error().message())};
    mLock = lock.value();
    return {};
}

void DBusPowerActivity::release() {
    mLock = QDBusUnixFileDescriptor();
    if (mService < 0)
        return;
    const Service &service = kServices[mService];
    mService = -1;
    QDBusMessage call = callTo(service, service.releaseMethod);
    call << mCookie;
    (void)QDBusConnection::sessionBus().call(call, QDBus::Block, kPatience); // nothing could be done about a refusal
}

void DBusPowerActivity::reportUserActivity() {
    const Service &screenSaver = kServices[0];
    if (!mCanSimulate || ownerOf(screenSaver.name).isEmpty())
        return;
    const auto reply =
        QDBusConnection::sessionBus().call(callTo(screenSaver, "SimulateUserActivity"), QDBus::Block, kPatience);
    mCanSimulate = reply.type() != QDBusMessage::ErrorMessage; // some desktops lack it: they are asked once
}

} // namespace cantorel::desktop
