#include "platform/desktop/dbus/DBusNotifications.h"

#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>

#include <gtest/gtest.h>

namespace cantorel::desktop {
namespace {

using test::eventually;
using test::FakeService;
using test::PrivateBus;

const QString kName = "org.freedesktop.Notifications";
const QString kPath = "/org/freedesktop/Notifications";

// A notification server: what it is asked stands in calls, what it showed last in its fields.
class FakeServer : public FakeService {
public:
    explicit FakeServer(QStringList capabilities) : FakeService(kName, kPath), mCapabilities(std::move(capabilities)) {}

    QStringList actions;
    QVariantMap hints;
    int timeout = 0;
    quint32 lastId = 6;
    bool refuses = false, isSlow = false;

    void tell(const char *signal, quint32 id, const QVariant &second) {
        FakeService::tell(kName, signal, {id, second});
    }
    // What a slow server has not answered yet.
    void answerAll() {
        for (const QDBusMessage &reply : std::exchange(mHeld, {}))
            mBus.send(reply);
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        const QVariantList arguments = message.arguments();
        calls << message.member();
        if (message.member() == "GetCapabilities")
            return bus.send(message.createReply(mCapabilities));
        if (message.member() == "CloseNotification") {
            calls.last() += QStringLiteral(" %1").arg(arguments[0].toUInt());
            return bus.send(message.createReply());
        }
        EXPECT_EQ(message.signature(), "susssasa{sv}i");
        if (refuses)
            return bus.send(message.createErrorReply(QDBusError::LimitsExceeded, "too many"));
        calls.last() = QStringLiteral("%1 replaces %2: %3 | %4")
                           .arg(arguments[0].toString())
                           .arg(arguments[1].toUInt())
                           .arg(arguments[3].toString(), arguments[4].toString());
        actions = arguments[5].toStringList();
        hints = qdbus_cast<QVariantMap>(arguments[6]);
        timeout = arguments[7].toInt();
        const quint32 replaced = arguments[1].toUInt();
        const auto reply = message.createReply(replaced != 0 ? replaced : ++lastId);
        if (!isSlow)
            return bus.send(reply);
        mHeld.push_back(reply);
        return true;
    }

private:
    const QStringList mCapabilities;
    std::vector<QDBusMessage> mHeld;
};

struct DBusNotificationsTest : testing::Test {
    // A message with a button, whose fate is written down.
    Notification message(const char *title, const char *text = "") {
        const QString name = title;
        return {.title = name,
                .text = text,
                .actions = {{Notification::click(), "Open"}, {"folder", "Folder"}},
                .shown = [this, name] { told << name + " shown"; },
                .refused = [this, name] { told << name + " refused"; },
                .pressed = [this, name](const QString &action) { told << name + ' ' + action; },
                .ended = [this, name] { told << name + " ended"; }};
    }
    Notification lasting(const char *title) {
        Notification made = message(title);
        made.isLasting = true;
        return made;
    }
    void show(const Notification &notification, const char *tag = "tag") { notifications->show(tag, notification); }
    void close(const char *tag = "tag") { notifications->close(tag); }
    bool tells(const QStringList &what) {
        return eventually([&] { return told.size() >= what.size(); }) && told == what;
    }

    PrivateBus bus;
    QStringList told;
    std::unique_ptr<DBusNotifications> notifications = std::make_unique<DBusNotifications>("App", "com.example.App");
};

TEST_F(DBusNotificationsTest, NothingIsAskedBeforeTheFirstMessageAndTheCapabilitiesOnce) {
    FakeServer server({"actions", "body"});
    const auto look = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "look");
    const QStringList names = look.interface()->registeredServiceNames();
    EXPECT_EQ(names.filter(":").size(), 2) << "the server and who looks";
    show(message("One", "a"));
    show(message("Two", "b"), "other");
    ASSERT_TRUE(tells({"Two shown", "One shown"})) << told.join(',').toStdString();
    EXPECT_EQ(server.calls, (QStringList{"GetCapabilities", "App replaces 0: Two | b", "App replaces 0: One | a"}));
    EXPECT_EQ(server.hints.value("desktop-entry").toString(), "com.example.App");
    EXPECT_EQ(server.timeout, -1);
}

TEST_F(DBusNotificationsTest, WhatAServerCannotDoIsLeftOut) {
    const struct {
        QStringList capabilities;
        QStringList actions;
        const char *text;
    } cases[] = {{{}, {}, "a <b>&.mp3"},
                 {{"actions"}, {"default", "Open", "folder", "Folder"}, "a <b>&.mp3"},
                 {{"body", "body-markup"}, {}, "a &lt;b&gt;&amp;.mp3"}};
    for (const auto &one : cases) {
        told.clear();
        FakeServer server(one.capabilities);
        notifications = std::make_unique<DBusNotifications>("App", "com.example.App");
        show(message("Ready", "a <b>&.mp3"));
        ASSERT_TRUE(tells({"Ready shown"}));
        EXPECT_EQ(server.actions, one.actions);
        EXPECT_EQ(server.calls.last(), QStringLiteral("App replaces 0: Ready | ") + QString::fromLatin1(one.text));
    }
}

TEST_F(DBusNotificationsTest, AMessageReplacesTheOneOfItsTagAlsoWhileThatIsOnItsWay) {
    FakeServer server({"actions"});
    show(message("One"));
    ASSERT_TRUE(tells({"One shown"}));
    server.isSlow = true;
    show(message("Two"));
    ASSERT_TRUE(eventually([&] { return server.calls.size() == 3; }));
    show(message("Three"));
    show(message("Four"));
    server.isSlow = false;
    server.answerAll();
    ASSERT_TRUE(tells({"One shown", "Four shown"})) << told.join(',').toStdString();
    EXPECT_EQ(server.calls, (QStringList{"GetCapabilities", "App replaces 0: One | ", "App replaces 7: Two | ",
                                         "App replaces 7: Four | "}));
    server.tell("ActionInvoked", 7, "folder");
    EXPECT_TRUE(tells({"One shown", "Four shown", "Four folder"}));
}

TEST_F(DBusNotificationsTest, WhatIsPressedAndPutAwayIsToldOnceAndOnlyOfOwnMessages) {
    FakeServer server({"actions"});
    show(message("One"));
    ASSERT_TRUE(tells({"One shown"}));
    server.tell("ActionInvoked", 99, "folder");
    // Another program cannot press.
    auto stranger = QDBusMessage::createSignal(kPath, kName, "ActionInvoked");
    stranger << quint32{7} << "folder";
    QDBusConnection::sessionBus().send(stranger);
    server.tell("ActionInvoked", 7, "default");
    server.tell("NotificationClosed", 7, quint32{2});
    server.tell("NotificationClosed", 7, quint32{2});
    server.tell("ActionInvoked", 7, "folder");
    ASSERT_TRUE(tells({"One shown", "One default", "One ended"})) << told.join(',').toStdString();
    show(message("Two"));
    EXPECT_TRUE(tells({"One shown", "One default", "One ended", "Two shown"})) << told.join(',').toStdString();
    EXPECT_EQ(server.calls.last(), "App replaces 0: Two | ") << "the first one is gone";
}

TEST_F(DBusNotificationsTest, WhatIsClosedGoesAndHearsNothingAlsoWhileItIsOnItsWay) {
    FakeServer server({"actions"});
    close();
    show(message("Never"));
    close(); // before anything was sent
    show(message("One"));
    ASSERT_TRUE(tells({"One shown"}));
    close();
    server.isSlow = true;
    show(message("Two"));
    ASSERT_TRUE(eventually([&] { return server.calls.size() == 4; }));
    close();
    server.answerAll();
    ASSERT_TRUE(eventually([&] { return server.calls.size() == 5; }));
    EXPECT_EQ(server.calls, (QStringList{"GetCapabilities", "App replaces 0: One | ", "CloseNotification 7",
                                         "App replaces 0: Two | ", "CloseNotification 8"}));
    EXPECT_EQ(told, QStringList{"One shown"});
}

TEST_F(DBusNotificationsTest, ALastingMessageStaysAndIsOnlyShownWithItsButtons) {
    {
        FakeServer server({"actions", "persistence"});
        show(lasting("Sign"));
        ASSERT_TRUE(tells({"Sign shown"}));
        EXPECT_EQ(server.timeout, 0);
        EXPECT_TRUE(server.hints.value("resident").toBool());
    }
    ASSERT_TRUE(tells({"Sign shown", "Sign ended"})) << "its server has gone";
    told.clear();
    FakeServer poor({"body"});
    show(lasting("Sign"));
    EXPECT_TRUE(tells({"Sign refused"}));
    EXPECT_EQ(poor.calls, QStringList{"GetCapabilities"});
}

TEST_F(DBusNotificationsTest, NobodyWhoShowsMessagesIsARefusalAndLookedForAgainWithTheNext) {
    show(message("One"));
    ASSERT_TRUE(tells({"One refused"}));
    FakeServer server({"actions"});
    show(message("Two"));
    ASSERT_TRUE(tells({"One refused", "Two shown"}));
    server.refuses = true;
    show(message("Three"));
    EXPECT_TRUE(tells({"One refused", "Two shown", "Three refused"}));
}

TEST_F(DBusNotificationsTest, WithoutABusItIsARefusal) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    show(message("One"));
    close();
    EXPECT_TRUE(tells({"One refused"}));
}

} // namespace
} // namespace cantorel::desktop
