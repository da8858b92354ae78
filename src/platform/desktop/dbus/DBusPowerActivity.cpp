#include "platform/desktop/dbus/DBusPowerActivity.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

#include <utility>

namespace cantorel::desktop {

namespace {

constexpr int kPatience = 3000; // milliseconds for an answer

// Of the session's power manager, which never keeps the screen from being locked.
constexpr const char *kName = "org.freedesktop.PowerManagement";
constexpr const char *kPath = "/org/freedesktop/PowerManagement/Inhibit";
constexpr const char *kInterface = "org.freedesktop.PowerManagement.Inhibit";

QDBusMessage callTo(const char *method) {
    return QDBusMessage::createMethodCall(QString::fromLatin1(kName), QString::fromLatin1(kPath),
                                          QString::fromLatin1(kInterface), QString::fromLatin1(method));
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

bool DBusPowerActivity::holdWithManager(const QString &reason) {
    const QString owner = ownerOf(kName);
    if (owner.isEmpty())
        return false;
    QDBusMessage call = callTo("Inhibit");
    call << QStringLiteral("Cantorel") << reason;
    const QDBusReply<quint32> cookie = QDBusConnection::sessionBus().call(call, QDBus::Block, kPatience);
    if (!cookie.isValid())
        return false;
    mOwner = owner;
    mCookie = cookie.value();
    return true;
}

foundation::Result<void> DBusPowerActivity::hold(const QString &reason) {
    if (!mOwner.isEmpty() && ownerOf(kName) == mOwner)
        return {};
    mOwner.clear();
    if (holdWithManager(reason)) {
        mLock = QDBusUnixFileDescriptor();
        return {};
    }
    if (mLock.isValid())
        return {};

    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QStringLiteral("idle") << QStringLiteral("Cantorel") << reason << QStringLiteral("block");
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
    if (std::exchange(mOwner, {}).isEmpty())
        return;
    QDBusMessage call = callTo("UnInhibit");
    call << mCookie;
    (void)QDBusConnection::sessionBus().call(call, QDBus::Block, kPatience); // nothing could be done about a refusal
}

} // namespace cantorel::desktop
