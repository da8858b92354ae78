#include "platform/desktop/dbus/DBusMediaControls.h"

#include "platform/desktop/dbus/MprisObject.h"
#include "platform/desktop/dbus/OwnConnection.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusMessage>

#include <utility>

namespace cantorel::desktop {

using foundation::Failure;
using foundation::Result;

namespace {

const QString kPath = QStringLiteral("/org/mpris/MediaPlayer2");

} // namespace

DBusMediaControls::DBusMediaControls(QString player, QString identity, QString applicationId)
    : mPlayerName(std::move(player)), mIdentity(std::move(identity)), mApplicationId(std::move(applicationId)) {}

DBusMediaControls::~DBusMediaControls() { withdraw(); }

Result<void> DBusMediaControls::offer(MediaCommands &commands) {
    withdraw();
    auto object = std::make_unique<MprisObject>(commands, mIdentity, mApplicationId);
    new MprisRoot(*object); // Both belong to the object.
    auto *player = new MprisPlayer(*object);
    auto connection = std::make_unique<OwnConnection>(QStringLiteral("media-controls"));
    auto &bus = connection->bus();
    // The name comes last: who sees it finds the object.
    if (!bus.isConnected() || !bus.registerObject(kPath, object.get(), QDBusConnection::ExportAdaptors))
        return Failure{QStringLiteral("Media keys can't reach the player, since there is no session bus."),
                       QStringLiteral("no session bus: %1").arg(bus.lastError().message())};
    // If another instance has the name, this one takes a name with its process id.
    const QString name = QStringLiteral("org.mpris.MediaPlayer2.") + mPlayerName;
    if (!connection->take(name)
        && !connection->take(QStringLiteral("%1.instance%2").arg(name).arg(QCoreApplication::applicationPid())))
        return Failure{QStringLiteral("Media keys can't reach the player, since its name is taken."),
                       QStringLiteral("the name %1 is taken: %2").arg(name, bus.lastError().message())};
    mConnection = std::move(connection);
    mObject = std::move(object);
    mPlayer = player;
    return {};
}

void DBusMediaControls::withdraw() {
    mConnection.reset(); // The name goes with it.
    mPlayer = nullptr;
    mObject.reset();
}

void DBusMediaControls::show(const MediaState &state) {
    if (!mObject || state == mObject->state)
        return;
    const QVariantMap before = mPlayer->changing();
    if (state.track != std::exchange(mObject->state, state).track)
        ++mObject->trackNumber;
    QVariantMap changed = mPlayer->changing();
    for (auto property = changed.begin(); property != changed.end();)
        property = before.value(property.key()) == property.value() ? changed.erase(property) : std::next(property);
    QDBusMessage signal = QDBusMessage::createSignal(kPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                     QStringLiteral("PropertiesChanged"));
    signal << QStringLiteral("org.mpris.MediaPlayer2.Player") << changed << QStringList();
    mConnection->bus().send(signal);
}

void DBusMediaControls::positionDidJump() {
    if (mPlayer != nullptr)
        Q_EMIT mPlayer->Seeked(mPlayer->position());
}

} // namespace cantorel::desktop
