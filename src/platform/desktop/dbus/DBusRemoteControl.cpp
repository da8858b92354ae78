#include "platform/desktop/dbus/DBusRemoteControl.h"

#include "platform/desktop/dbus/OwnConnection.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVirtualObject>

#include <algorithm>

namespace cantorel::desktop {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr int kPatience = 10'000; // milliseconds for an answer

} // namespace

// Answers the messages to one object.
class DBusRemoteControl::Object : public QDBusVirtualObject {
public:
    Object(RemoteCommands &commands, QString interface) : mCommands(commands), mInterface(std::move(interface)) {}

    QString introspect(const QString &) const override {
        QString xml = QStringLiteral("  <interface name=\"%1\">\n").arg(mInterface);
        for (const RemoteMethod &method : mCommands.methods()) {
            xml += QStringLiteral("    <method name=\"%1\">\n").arg(method.name);
            for (const QString &argument : method.arguments)
                xml += QStringLiteral("      <arg name=\"%1\" type=\"s\" direction=\"in\"/>\n").arg(argument);
            xml += QStringLiteral("      <arg name=\"answer\" type=\"a{sv}\" direction=\"out\"/>\n    </method>\n");
        }
        return xml + QStringLiteral("  </interface>\n");
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        if (message.type() != QDBusMessage::MethodCallMessage
            || (!message.interface().isEmpty() && message.interface() != mInterface))
            return false;
        const auto methods = mCommands.methods();
        const auto method = std::find_if(methods.begin(), methods.end(),
                                         [&](const RemoteMethod &one) { return one.name == message.member(); });
        if (method == methods.end())
            return false;
        if (message.signature() != QString(method->arguments.size(), QLatin1Char('s')))
            return bus.send(message.createErrorReply(
                QDBusError::InvalidArgs,
                QStringLiteral("%1 takes %2 texts").arg(method->name).arg(method->arguments.size())));
        QStringList arguments;
        for (const QVariant &argument : message.arguments())
            arguments << argument.toString();
        const auto answer = mCommands.call(method->name, arguments);
        return bus.send(answer ? message.createReply(QVariant(answer.value()))
                               : message.createErrorReply(mInterface + QStringLiteral(".Failed"),
                                                          answer.failure().sentence.plainEnglish()));
    }

private:
    RemoteCommands &mCommands;
    const QString mInterface;
};

DBusRemoteControl::DBusRemoteControl(const QString &service, const QString &path, const QString &interface)
    : mService(service), mPath(path), mInterface(interface) {
    // Qt's D-Bus thread may be told something while the program ends, and warns if Qt's registry of types is gone by
    // then. It goes later if it was made before the thread, which a first type does.
    (void)QMetaType::fromType<RemoteMethod>().id();
}

DBusRemoteControl::~DBusRemoteControl() { withdraw(); }

Result<void> DBusRemoteControl::offer(RemoteCommands &commands) {
    withdraw();
    auto connection = std::make_unique<OwnConnection>(QStringLiteral("remote-control"));
    auto &bus = connection->bus();
    auto object = std::make_unique<Object>(commands, mInterface);
    // The name comes last: who sees it finds the object.
    if (!bus.isConnected() || !bus.registerVirtualObject(mPath, object.get()))
        return Failure{QStringLiteral("Other programs can't reach this one, since there is no session bus."),
                       QStringLiteral("no session bus: %1").arg(bus.lastError().message())};
    if (!connection->take(mService))
        return Failure{QStringLiteral("Other programs reach another one, which was there first."),
                       QStringLiteral("the name %1 is taken: %2").arg(mService, bus.lastError().message())};
    mConnection = std::move(connection);
    mObject = std::move(object);
    return {};
}

void DBusRemoteControl::withdraw() {
    mConnection.reset(); // The name goes with it.
    mObject.reset();
}

std::optional<Result<QVariantMap>> DBusRemoteControl::ask(const QString &method, const QStringList &arguments) {
    OwnConnection connection(QStringLiteral("remote-control"));
    const auto &bus = connection.bus();
    if (!bus.isConnected())
        return Failure{QStringLiteral("The running program can't be asked, since there is no session bus; check "
                                      "DBUS_SESSION_BUS_ADDRESS."),
                       QStringLiteral("no session bus: %1").arg(bus.lastError().message())};
    QDBusMessage call = QDBusMessage::createMethodCall(mService, mPath, mInterface, method);
    call.setAutoStartService(false);
    for (const QString &argument : arguments)
        call << argument;
    const QDBusReply<QVariantMap> reply = bus.call(call, QDBus::Block, kPatience);
    if (reply.isValid())
        return reply.value();
    const QDBusError &error = reply.error();
    if (error.type() == QDBusError::ServiceUnknown || error.name().endsWith(QStringLiteral(".NameHasNoOwner")))
        return {};
    // One that ends meanwhile does not answer any more, or has no object left that could.
    if ((error.type() == QDBusError::NoReply || error.type() == QDBusError::UnknownObject)
        && !bus.interface()->isServiceRegistered(mService))
        return {};
    if (error.name() == mInterface + QStringLiteral(".Failed"))
        return Failure{error.message(), error.message()};
    return Failure{QStringLiteral("The running program does not answer; end it and start it anew."),
                   QStringLiteral("%1: %2: %3").arg(method, error.name(), error.message())};
}

} // namespace cantorel::desktop
