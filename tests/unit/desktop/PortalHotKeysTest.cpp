#include "platform/desktop/portal/PortalHotKeys.h"

#include "lang/Lang.h"
#include "platform/desktop/HotKeyTable.h"
#include "platform/desktop/portal/PortalShortcut.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>

#include <gtest/gtest.h>

namespace cantorel::desktop {
namespace {

using test::eventually;

const QString kPath = "/org/freedesktop/portal/desktop";
const QString kShortcuts = "org.freedesktop.portal.GlobalShortcuts";

// A desktop that grants keys, and notes what it is asked.
class FakePortal : public test::FakeService {
public:
    QString refuses;           // the method that is not there
    QString denies;            // the request that the person cancels
    bool namesTriggers = true; // in the answer to a bind
    bool isFast = false;       // answers before the call returns
    QString session;

    FakePortal() : FakeService("org.freedesktop.portal.Desktop", kPath) {}
    // Another process takes its place: sessions are gone, and nobody is known.
    void restart() {
        mBus.unregisterService(mName);
        calls.clear();
        session.clear();
        EXPECT_TRUE(mBus.registerService(mName));
    }

    void activate(const QString &id, const QString &inSession) {
        tell(kShortcuts, "Activated",
             {QVariant::fromValue(QDBusObjectPath(inSession)), id, QVariant::fromValue<qulonglong>(1), QVariantMap()});
    }
    void change(const QString &id, const QString &trigger) {
        tell(kShortcuts, "ShortcutsChanged",
             {QVariant::fromValue(QDBusObjectPath(session)), QVariant::fromValue(rows({id}, trigger))});
    }
    void closeSession() { tell("org.freedesktop.portal.Session", "Closed", {}, session); }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        const QString method = message.member();
        if (method == refuses) {
            calls << method;
            return bus.send(message.createErrorReply(QDBusError::UnknownMethod, "no such method"));
        }
        if (method == "CreateSession")
            return createSession(message, bus);
        if (method == "BindShortcuts")
            return bindShortcuts(message, bus);
        return FakeService::handleMessage(message, bus);
    }

private:
    static QList<PortalShortcut> rows(const QStringList &ids, const QString &trigger) {
        QList<PortalShortcut> rows;
        for (const QString &id : ids)
            rows.append({id, {{"trigger_description", trigger}}});
        return rows;
    }
    bool respond(const QDBusMessage &message, const QDBusConnection &bus, const QVariantMap &options,
                 const QVariantMap &results) {
        QString sender = message.service().mid(1);
        sender.replace('.', '_');
        const QString request =
            kPath + QStringLiteral("/request/%1/%2").arg(sender, options.value("handle_token").toString());
        const uint code = message.member() == denies ? 1 : 0;
        const auto response = [&] {
            return tell("org.freedesktop.portal.Request", "Response", {code, code == 0 ? results : QVariantMap()},
                        request);
        };
        const auto reply = message.createReply(QVariant::fromValue(QDBusObjectPath(request)));
        return isFast ? response() && bus.send(reply) : bus.send(reply) && response();
    }
    bool createSession(const QDBusMessage &message, const QDBusConnection &bus) {
        const auto options = qdbus_cast<QVariantMap>(message.arguments().value(0));
        session = kPath + "/session/x/" + options.value("session_handle_token").toString();
        calls << "CreateSession";
        mBinds = 0;
        return respond(message, bus, options, {{"session_handle", session}});
    }
    bool bindShortcuts(const QDBusMessage &message, const QDBusConnection &bus) {
        EXPECT_EQ(++mBinds, 1) << "a session binds once";
        QStringList ids, asked;
        for (const PortalShortcut &row : qdbus_cast<QList<PortalShortcut>>(message.arguments().value(1))) {
            ids << row.id;
            asked << row.id + '=' + row.details.value("preferred_trigger").toString();
            EXPECT_FALSE(row.details.value("description").toString().isEmpty());
        }
        calls << "BindShortcuts " + asked.join(' ');
        const QVariant granted = QVariant::fromValue(namesTriggers ? rows(ids, "Press F1") : QList<PortalShortcut>());
        return respond(message, bus, qdbus_cast<QVariantMap>(message.arguments().value(3)), {{"shortcuts", granted}});
    }

    int mBinds = 0;
};

constexpr HotKeyCombination kStart{1, kControlModifier | kCommandModifier};
constexpr HotKeyCombination kStop{17, kOptionModifier | kShiftModifier};

class PortalHotKeysTest : public testing::Test, public HotKeyTarget {
protected:
    void hotKeyPressed(const EventHotKeyID &identity) override { pressed.push_back(identity.id); }

    std::unique_ptr<PortalHotKeys> make() {
        auto made = std::make_unique<PortalHotKeys>(
            QDBusConnection::sessionBus(), "com.tessolar.Cantorel",
            std::vector<HotKeyPurpose>{{"start", "Start recording"}, {"stop", "Stop recording"}});
        made->trouble = [this](const foundation::Failure &failure) { troubles << Lang::english(failure.sentence); };
        made->triggersDidChange = [this] { ++changes; };
        return made;
    }

    // With the first key granted, which start refers to.
    std::unique_ptr<PortalHotKeys> granted() {
        auto made = make();
        start = made->RegisterEventHotKey(kStart, {1, 1}, *this);
        EXPECT_TRUE(eventually([&] { return changes > 0; }));
        return made;
    }

    const test::PrivateBus bus;
    FakePortal portal;
    EventHotKeyRef start = {};
    std::vector<std::uint32_t> pressed;
    QStringList troubles;
    int changes = 0;
};

TEST_F(PortalHotKeysTest, TheProgramIntroducesItselfAndBindsOnceWithStableIdentifiers) {
    for (const bool isFast : {false, true}) {
        portal.isFast = isFast;
        portal.calls.clear();
        const auto hotKeys = make();
        const EventHotKeyRef start = hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
        hotKeys->RegisterEventHotKey(kStop, {2, 2}, *this);
        ASSERT_TRUE(eventually([&] { return std::exchange(changes, 0) > 0; }));
        portal.calls.removeAll("Close"); // of the one before
        EXPECT_EQ(portal.calls.join("; ").toStdString(),
                  std::string("Register com.tessolar.Cantorel; CreateSession; "
                              "BindShortcuts start=CTRL+LOGO+s stop=ALT+SHIFT+t"));
        EXPECT_EQ(hotKeys->triggerOf(start), "Press F1") << "what the desktop has decided";
        portal.activate("stop", portal.session);
        ASSERT_TRUE(eventually([&] { return !pressed.empty(); }));
        EXPECT_EQ(std::exchange(pressed, {}), std::vector<std::uint32_t>{2});
    }
    EXPECT_TRUE(troubles.isEmpty());
}

TEST_F(PortalHotKeysTest, APressIsDeliveredOnceToTheNewestAndOnlyOfOurSession) {
    const auto hotKeys = granted();
    hotKeys->RegisterEventHotKey(kStop, {1, 1}, *this); // the settings were edited: the desktop's key stays
    portal.activate("start", "/org/freedesktop/portal/desktop/session/other/1");
    portal.activate("unknown", portal.session);
    portal.activate("start", portal.session);
    portal.change("start", "Press F2");
    ASSERT_TRUE(eventually([&] { return changes > 1; }));
    EXPECT_EQ(pressed, std::vector<std::uint32_t>{1});
    EXPECT_EQ(portal.calls.filter("BindShortcuts").size(), 1);
}

TEST_F(PortalHotKeysTest, ANewPurposeTakesANewSession) {
    const auto hotKeys = granted();
    const QString first = portal.session;
    const EventHotKeyRef stop = hotKeys->RegisterEventHotKey(kStop, {2, 2}, *this);
    ASSERT_TRUE(eventually([&] { return !hotKeys->triggerOf(stop).isEmpty(); }));
    EXPECT_NE(portal.session, first);
    EXPECT_EQ(portal.calls.mid(3).join("; "), "Close; CreateSession; BindShortcuts start=CTRL+LOGO+s stop=ALT+SHIFT+t");
}

TEST_F(PortalHotKeysTest, AnEmptyAnswerToAGoodBindIsNoRefusal) {
    portal.namesTriggers = false;
    const auto hotKeys = granted();
    EXPECT_EQ(hotKeys->triggerOf(start), QString());
    portal.activate("start", portal.session);
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
        portal.refuses = c.refuses;
        portal.denies = c.denies;
        const auto hotKeys = make();
        hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
        ASSERT_TRUE(eventually([&] { return changes + troubles.size() > 0; })) << c.refuses << c.denies;
        hotKeys->RegisterEventHotKey(kStart, {1, 1}, *this);
        hotKeys->RegisterEventHotKey(kStop, {2, 2}, *this);
        const int callsBefore = static_cast<int>(portal.calls.size());
        EXPECT_TRUE(eventually([&] { return portal.calls.size() > callsBefore; })) << "a new purpose is asked for";
        EXPECT_EQ(troubles.size(), c.troubles) << c.refuses << c.denies;
        EXPECT_TRUE(troubles.isEmpty() || troubles[0].contains("cantorel-cli toggle"));
    }
}

TEST_F(PortalHotKeysTest, AClosedSessionDeliversNothingAndShowsNoTriggers) {
    const auto hotKeys = granted();
    portal.closeSession();
    ASSERT_TRUE(eventually([&] { return changes > 1; }));
    EXPECT_EQ(hotKeys->triggerOf(start), QString());
}

TEST_F(PortalHotKeysTest, APortalThatBeginsAnewIsAskedAnew) {
    const auto hotKeys = granted();
    portal.restart();
    ASSERT_TRUE(eventually([&] { return portal.calls.size() == 3; }));
    EXPECT_EQ(portal.calls.join("; "),
              "Register com.tessolar.Cantorel; CreateSession; BindShortcuts start=CTRL+LOGO+s");
    ASSERT_TRUE(eventually([&] { return !hotKeys->triggerOf(start).isEmpty(); }));
    portal.activate("start", portal.session);
    EXPECT_TRUE(eventually([&] { return pressed.size() == 1; }));
    EXPECT_TRUE(troubles.isEmpty());
}

TEST(PortalHotKeys, WithoutAnyPortalThereIsASentence) {
    const test::PrivateBus bus;
    QStringList troubles;
    PortalHotKeys hotKeys(QDBusConnection::sessionBus(), "x", {{"a", "A"}});
    hotKeys.trouble = [&](const foundation::Failure &failure) { troubles << Lang::english(failure.sentence); };
    class : public HotKeyTarget {
        void hotKeyPressed(const EventHotKeyID &) override {}
    } target;
    hotKeys.RegisterEventHotKey(kStart, {1, 1}, target);
    EXPECT_TRUE(eventually([&] { return troubles.size() == 1; }));
}

} // namespace
} // namespace cantorel::desktop
