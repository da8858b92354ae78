#pragma once

#include "tests/support/FakeService.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QPoint>
#include <QVariantMap>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

namespace cantorel::test {

struct FakeStream {
    uint node = 0;
    QVariantMap properties;
};
inline QDBusArgument &operator<<(QDBusArgument &argument, const FakeStream &stream) {
    argument.beginStructure();
    argument << stream.node << stream.properties;
    argument.endStructure();
    return argument;
}
inline const QDBusArgument &operator>>(const QDBusArgument &argument, FakeStream &stream) {
    argument.beginStructure();
    argument >> stream.node >> stream.properties;
    argument.endStructure();
    return argument;
}
struct FakePair {
    int x = 0, y = 0;
};
inline QDBusArgument &operator<<(QDBusArgument &argument, const FakePair &pair) {
    argument.beginStructure();
    argument << pair.x << pair.y;
    argument.endStructure();
    return argument;
}
inline const QDBusArgument &operator>>(const QDBusArgument &argument, FakePair &pair) {
    argument.beginStructure();
    argument >> pair.x >> pair.y;
    argument.endStructure();
    return argument;
}

} // namespace cantorel::test

Q_DECLARE_METATYPE(cantorel::test::FakeStream)
Q_DECLARE_METATYPE(cantorel::test::FakePair)

namespace cantorel::test {

// The part of a desktop's portal that shares the screen, as its documentation describes it: one step after the other in
// a session, an answer to each by a signal of its request, a connection to the private world's PipeWire at the end.
class FakeScreenCast : public FakeService {
public:
    // When the answer of a request comes.
    enum class Pace { AfterReply, BeforeReply, WhenTold };

    uint node = 0; // what is shared
    Pace pace = Pace::AfterReply;
    QMap<QString, uint> responses; // by method; 0 for the others
    QString fails;                 // the method that ends in an error
    QVariantMap properties{{"AvailableSourceTypes", 3u}, {"AvailableCursorModes", 7u}, {"version", 4u}};
    QString grants = "token-1"; // the next restore token
    QString session;
    QVariantMap selected; // what SelectSources was given

    FakeScreenCast() : FakeService("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop") {
        qDBusRegisterMetaType<FakeStream>();
        qDBusRegisterMetaType<QList<FakeStream>>();
        qDBusRegisterMetaType<FakePair>();
    }

    void closeSession() {
        tell("org.freedesktop.portal.Session", "Closed", {QVariantMap()}, std::exchange(session, {}));
    }
    // The answers that were held back.
    void answerNow() {
        for (const auto &answer : std::exchange(mHeld, {}))
            answer();
    }
    bool hasHeld() const { return !mHeld.empty(); }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        const QString method = message.member();
        const QVariantList arguments = message.arguments();
        if (method == fails) {
            calls << method;
            return bus.send(message.createErrorReply(QDBusError::Failed, "it fails"));
        }
        if (method == "GetAll")
            return bus.send(message.createReply(QVariant(properties)));
        if (method == "Close" && message.interface() == "org.freedesktop.portal.Session") {
            calls << (message.path() == session ? "CloseSession" : "CloseUnknown");
            session.clear();
            return bus.send(message.createReply());
        }
        if (method == "CreateSession")
            return respond(message, bus, arguments.value(0), [this, message](const QVariantMap &options) {
                session = path(message, "session", options.value("session_handle_token").toString());
                return QVariantMap{{"session_handle", session}};
            });
        const bool isOurs = qdbus_cast<QDBusObjectPath>(arguments.value(0)).path() == session && !session.isEmpty();
        if (!isOurs && method != "Close")
            return bus.send(message.createErrorReply(QDBusError::AccessDenied, "Invalid session"));
        if (method == "SelectSources")
            return respond(message, bus, arguments.value(1), [this](const QVariantMap &options) {
                selected = options;
                return QVariantMap();
            });
        if (method == "Start") {
            EXPECT_FALSE(selected.isEmpty()) << "sources are selected first";
            return respond(message, bus, arguments.value(2), [this](const QVariantMap &) {
                const QVariantMap about{{"size", QVariant::fromValue(FakePair{320, 200})},
                                        {"position", QVariant::fromValue(FakePair{1920, 0})},
                                        {"source_type", 1u}};
                return QVariantMap{{"streams", QVariant::fromValue(QList<FakeStream>{{node, about}})},
                                   {"restore_token", grants}};
            });
        }
        if (method == "OpenPipeWireRemote") {
            calls << method;
            const int remote = connectToPipeWire();
            const QDBusUnixFileDescriptor descriptor(remote);
            ::close(remote);
            return bus.send(message.createReply(QVariant::fromValue(descriptor)));
        }
        return FakeService::handleMessage(message, bus);
    }

private:
    static QString path(const QDBusMessage &message, const QString &kind, const QString &token) {
        QString sender = message.service().mid(1);
        sender.replace('.', '_');
        return QStringLiteral("/org/freedesktop/portal/desktop/%1/%2/%3").arg(kind, sender, token);
    }
    static int connectToPipeWire() {
        const QByteArray socket = qgetenv("XDG_RUNTIME_DIR") + "/pipewire-0";
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy_n(socket.constData(), std::min<std::size_t>(socket.size(), sizeof address.sun_path - 1),
                    address.sun_path);
        const int remote = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(::connect(remote, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        return remote;
    }
    bool respond(const QDBusMessage &message, const QDBusConnection &bus, const QVariant &given,
                 const std::function<QVariantMap(const QVariantMap &)> &results) {
        const auto options = qdbus_cast<QVariantMap>(given);
        const QString token = options.value("handle_token").toString();
        EXPECT_FALSE(token.isEmpty());
        const QString request = path(message, "request", token);
        const uint code = responses.value(message.member());
        calls << message.member();
        const QVariantMap told = code == 0 ? results(options) : QVariantMap();
        const auto answer = [this, code, told, request] {
            tell("org.freedesktop.portal.Request", "Response", {code, told}, request);
        };
        if (pace == Pace::BeforeReply)
            answer();
        bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        if (pace == Pace::AfterReply)
            answer();
        else if (pace == Pace::WhenTold)
            mHeld.push_back(answer);
        return true;
    }

    std::vector<std::function<void()>> mHeld;
};

} // namespace cantorel::test
