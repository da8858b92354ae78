#include "platform/desktop/portal/PortalHotKeys.h"

#include "lang/Lang.h"
#include "platform/desktop/HotKeyTable.h"
#include "platform/desktop/portal/PortalShortcut.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

namespace cantorel::desktop {
namespace {

using test::eventually;

const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kShortcuts = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");

// A desktop that grants keys, and notes what it is asked.
class FakePortal : public QDBusVirtualObject {
public:
    QStringList calls;
    QString refuses;           // the method that is not there
    QString denies;            // the request that the person cancels
    bool namesTriggers = true; // in the answer to a bind
    bool isFast = false;       // answers before the call returns
    QString session;

    FakePortal() : mBus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"))) {
        mOwns = mBus.registerVirtualObject(kPath, this, QDBusConnection::SubPath)
                && mBus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~FakePortal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }
    bool owns() const { return mOwns; }
    // Another process takes its place: sessions are gone, and nobody is known.
    void restart() {
        mBus.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
        calls.clear();
        session.clear();
        mOwns = mBus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }

    void activate(const QString &id, const QString &inSession) {
        send(kPath, kShortcuts, QStringLiteral("Activated"),
             {QVariant::fromValue(QDBusObjectPath(inSession)), id, QVariant::fromValue<qulonglong>(1), QVariantMap()});
    }
    void change(const QString &id, const QString &trigger) {
        send(kPath, kShortcuts, QStringLiteral("ShortcutsChanged"),
             {QVariant::fromValue(QDBusObjectPath(session)), QVariant::fromValue(rows({id}, trigger))});
    }
    void closeSession() {
        send(session, QStringLiteral("org.freedesktop.portal.Session"), QStringLiteral("Closed"), {});
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        const QString method = message.member();
        if (method == refuses) {
            calls << method;
            return bus.send(message.createErrorReply(QDBusError::UnknownMethod, QStringLiteral("no such method")));
        }
        if (method == QStringLiteral("Register")) {
            calls << method + QLatin1Char(' ') + message.arguments().value(0).toString();
            return bus.send(message.createReply());
        }
        if (method == QStringLiteral("CreateSession"))
            return createSession(message, bus);
        if (method == QStringLiteral("BindShortcuts"))
            return bindShortcuts(message, bus);
        calls << method;
        return bus.send(message.createReply());
    }

private:
    static QList<PortalShortcut> rows(const QStringList &ids, const QString &trigger) {
        QList<PortalShortcut> rows;
        for (const QString &id : ids)
            rows.append({id, {{QStringLiteral("trigger_description"), trigger}}});
        return rows;
    }
    bool send(const QString &path, const QString &interface, const QString &name, const QVariantList &arguments) {
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
        signal.setArguments(arguments);
        return mBus.send(signal);
    }
    bool respond(const QDBusMessage &message, const QDBusConnection &bus, const QVariantMap &options,
                 const QVariantMap &results) {
        QString sender = message.service().mid(1);
        sender.replace(QLatin1Char('.'), QLatin1Char('_'));
        const QString request =
            kPath
            + QStringLiteral("/request/%1/%2").arg(sender, options.value(QStringLiteral("handle_token")).toString());
        const uint code = message.member() == denies ? 1 : 0;
        const auto response = [&] {
            return send(request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"),
                        {code, code == 0 ? results : QVariantMap()});
        };
        const auto reply = message.createReply(QVariant::fromValue(QDBusObjectPath(request)));
        return isFast ? response() && bus.send(reply) : bus.send(reply) && response();
    }
    bool createSession(const QDBusMessage &message, const QDBusConnection &bus) {
        const auto options = qdbus_cast<QVariantMap>(message.arguments().value(0));
        session =
            kPath + QStringLiteral("/session/x/") + options.value(QStringLiteral("session_handle_token")).toString();
        calls << QStringLiteral("CreateSession");
        mBinds = 0;
        return respond(message, bus, options, {{QStringLiteral("session_handle"), session}});
    }
    bool bindShortcuts(const QDBusMessage &message, const QDBusConnection &bus) {
        EXPECT_EQ(++mBinds, 1) << "a session binds once";
        QStringList ids, asked;
        for (const PortalShortcut &row : qdbus_cast<QList<PortalShortcut>>(message.arguments().value(1))) {
            ids << row.id;
            asked << row.id + QLatin1Char('=') + row.details.value(QStringLiteral("preferred_trigger")).toString();
            EXPECT_FALSE(row.details.value(QStringLiteral("description")).toString().isEmpty());
        }
        calls << QStringLiteral("BindShortcuts ") + asked.join(QLatin1Char(' '));
        const QVariant granted =
            QVariant::fromValue(namesTriggers ? rows(ids, QStringLiteral("Press F1")) : QList<PortalShortcut>());
        return respond(message, bus, qdbus_cast<QVariantMap>(message.arguments().value(3)),
                       {{QStringLiteral("shortcuts"), granted}});
    }

    QDBusConnection mBus;
    bool mOwns = false;
    int mBinds = 0;
};

class PortalHotKeysTest : public testing::Test, public HotKeyTarget {
protected:
    void hotKeyPressed(const EventHotKeyID &identity) override { pressed.push_back(identity.id); }

    std::unique_ptr<PortalHotKeys> make() {
        auto made = std::make_unique<PortalHotKeys>(
            QDBusConnection::sessionBus(), QStringLiteral("com.tessolar.Cantorel"),
            std::vector<HotKeyPurpose>{{QStringLiteral("start"), QStringLiteral("Start recording")},
                                       {QStringLiteral("stop"), QStringLiteral("Stop recording")}});
        made->trouble = [this](const foundation::Failure &failure) { troubles << Lang::english(failure.sentence); };
        made->triggersDidChange = [this] { ++changes; };
        return made;
    }

    const test::PrivateBus bus;
    FakePortal portal;
    std::vector<std::uint32_t> pressed;
    QStringList troubles;
    int changes = 0;
};

constexpr HotKeyCombination kStart{1, kControlModifier | kCommandModifier};
constexpr HotKeyCombination kStop{17, kOptionModifier | kShiftModifier};

TEST_F(PortalHotKeysTest, TheProgramIntroducesItselfAndBindsOnceWithStableIdentifiers) {
    ASSERT_TRUE(portal.owns());
    for (const bool isFast : {false, true}) {
        portal.isFast = isFast;
        portal.calls.clear();
        const auto hotKeys = make();
        const EventHotKeyRef start = hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
        hotKeys->RegisterEventHotKey(kStop, {2, 2}, *this);
        ASSERT_TRUE(eventually([&] { return std::exchange(changes, 0) > 0; }));
        portal.calls.removeAll(QStringLiteral("Close")); // of the one before
        EXPECT_EQ(portal.calls.join(QStringLiteral("; ")).toStdString(),
                  std::string("Register com.tessolar.Cantorel; CreateSession; "
                              "BindShortcuts start=CTRL+LOGO+s stop=ALT+SHIFT+t"));
        EXPECT_EQ(hotKeys->triggerOf(start), QStringLiteral("Press F1")) << "what the desktop has decided";
        portal.activate(QStringLiteral("stop"), portal.session);
        ASSERT_TRUE(eventually([&] { return !pressed.empty(); }));
        EXPECT_EQ(std::exchange(pressed, {}), std::vector<std::uint32_t>{2});
    }
    EXPECT_TRUE(troubles.isEmpty());
}

TEST_F(PortalHotKeysTest, APressIsDeliveredOnceToTheNewestAndOnlyOfOurSession) {
    const auto hotKeys = make();
    hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
    ASSERT_TRUE(eventually([&] { return changes > 0; }));
    hotKeys->RegisterEventHotKey(kStop, {1, 1}, *this); // the settings were edited: the desktop's key stays
    portal.activate(QStringLiteral("start"), QStringLiteral("/org/freedesktop/portal/desktop/session/other/1"));
    portal.activate(QStringLiteral("unknown"), portal.session);
    portal.activate(QStringLiteral("start"), portal.session);
    portal.change(QStringLiteral("start"), QStringLiteral("Press F2"));
    ASSERT_TRUE(eventually([&] { return changes > 1; }));
    EXPECT_EQ(pressed, std::vector<std::uint32_t>{1});
    EXPECT_EQ(portal.calls.filter(QStringLiteral("BindShortcuts")).size(), 1);
}

TEST_F(PortalHotKeysTest, ANewPurposeTakesANewSession) {
    const auto hotKeys = make();
    hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
    ASSERT_TRUE(eventually([&] { return changes > 0; }));
    const QString first = portal.session;
    const EventHotKeyRef stop = hotKeys->RegisterEventHotKey(kStop, {2, 2}, *this);
    ASSERT_TRUE(eventually([&] { return !hotKeys->triggerOf(stop).isEmpty(); }));
    EXPECT_NE(portal.session, first);
    EXPECT_EQ(portal.calls.mid(3).join(QStringLiteral("; ")),
              QStringLiteral("Close; CreateSession; BindShortcuts start=CTRL+LOGO+s stop=ALT+SHIFT+t"));
}

TEST_F(PortalHotKeysTest, AnEmptyAnswerToAGoodBindIsNoRefusal) {
    portal.namesTriggers = false;
    const auto hotKeys = make();
    const EventHotKeyRef start = hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
    ASSERT_TRUE(eventually([&] { return changes > 0; }));
    EXPECT_EQ(hotKeys->triggerOf(start), QString());
    portal.activate(QStringLiteral("start"), portal.session);
    EXPECT_TRUE(eventually([&] { return pressed.size() == 1; }));
    EXPECT_TRUE(troubles.isEmpty());
}

TEST_F(PortalHotKeysTest, WhatTheDesktopCannotOrWillNotGrantIsToldOnceWithTheWayOut) {
    const struct {
        const char *refuses, *denies;
        int troubles;
    } cases[] = {{"Register", "", 0}, // an older portal
                 {"CreateSession", "", 1},
                 {"BindShortcuts", "", 1},
                 {"", "CreateSession", 1},
                 {"", "BindShortcuts", 1}};
    for (const auto &c : cases) {
        troubles.clear();
        changes = 0;
        portal.refuses = QString::fromLatin1(c.refuses);
        portal.denies = QString::fromLatin1(c.denies);
        const auto hotKeys = make();
        hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
        ASSERT_TRUE(eventually([&] { return changes + troubles.size() > 0; })) << c.refuses << c.denies;
        hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
        hotKeys->RegisterEventHotKey(kStop, {2, 2}, *this);
        const int callsBefore = static_cast<int>(portal.calls.size());
        EXPECT_TRUE(eventually([&] { return portal.calls.size() > callsBefore; })) << "a new purpose is asked for";
        EXPECT_EQ(troubles.size(), c.troubles) << c.refuses << c.denies;
        EXPECT_TRUE(troubles.isEmpty() || troubles[0].contains(QStringLiteral("cantorel-cli toggle")));
    }
}

TEST_F(PortalHotKeysTest, AClosedSessionDeliversNothingAndShowsNoTriggers) {
    const auto hotKeys = make();
    const EventHotKeyRef start = hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
    ASSERT_TRUE(eventually([&] { return changes > 0; }));
    portal.closeSession();
    ASSERT_TRUE(eventually([&] { return changes > 1; }));
    EXPECT_EQ(hotKeys->triggerOf(start), QString());
}

TEST_F(PortalHotKeysTest, APortalThatBeginsAnewIsAskedAnew) {
    const auto hotKeys = make();
    const EventHotKeyRef start = hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
    ASSERT_TRUE(eventually([&] { return !hotKeys->triggerOf(start).isEmpty(); }));
    portal.restart();
    ASSERT_TRUE(eventually([&] { return portal.calls.size() == 3; }));
    EXPECT_EQ(portal.calls.join(QStringLiteral("; ")),
              QStringLiteral("Register com.tessolar.Cantorel; CreateSession; BindShortcuts start=CTRL+LOGO+s"));
    ASSERT_TRUE(eventually([&] { return !hotKeys->triggerOf(start).isEmpty(); }));
    portal.activate(QStringLiteral("start"), portal.session);
    EXPECT_TRUE(eventually([&] { return pressed.size() == 1; }));
    EXPECT_TRUE(troubles.isEmpty());
}

TEST(PortalHotKeys, WithoutAnyPortalThereIsASentence) {
    const test::PrivateBus bus;
    QStringList troubles;
    PortalHotKeys hotKeys(QDBusConnection::sessionBus(), QStringLiteral("x"),
                          {{QStringLiteral("a"), QStringLiteral("A")}});
    hotKeys.trouble = [&](const foundation::Failure &failure) { troubles << Lang::english(failure.sentence); };
    class : public HotKeyTarget {
        void hotKeyPressed(const EventHotKeyID &) override {}
    } target;
    hotKeys.RegisterEventHotKey(kStart, {1, 1}, target);
    EXPECT_TRUE(eventually([&] { return troubles.size() == 1; }));
}

} // namespace
} // namespace cantorel::desktop
