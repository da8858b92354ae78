#include "platform/desktop/portal/PortalAppearance.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <gtest/gtest.h>

namespace cantorel::desktop {
namespace {

using Scheme = AppearanceState::Scheme;
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kGnome = QStringLiteral("org.gnome.desktop.interface");

// A desktop with settings, of which one is no group that was asked for.
class FakeSettings : public QDBusVirtualObject {
public:
    FakeSettings() : mBus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("settings"))) {
        mBus.registerVirtualObject(kPath, this);
        mBus.registerService(kService);
    }
    ~FakeSettings() override { QDBusConnection::disconnectFromBus(QStringLiteral("settings")); }

    void change(const QString &group, const QString &key, const QVariant &value) {
        mBus.send(QDBusMessage::createSignal(kPath, kSettings, QStringLiteral("SettingChanged"))
                  << group << key << QVariant::fromValue(QDBusVariant(value)));
    }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        if (message.member() != QStringLiteral("ReadAll"))
            return false;
        if (isOlder)
            return bus.send(message.createErrorReply(QDBusError::UnknownMethod, QStringLiteral("no such method")));
        QDBusArgument all;
        all.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QVariantMap>());
        for (const auto &[group, values] : groups) {
            all.beginMapEntry();
            all << group << values;
            all.endMapEntry();
        }
        all.endMap();
        return bus.send(message.createReply(QVariant::fromValue(all)));
    }

    std::map<QString, QVariantMap> groups;
    bool isOlder = false;

private:
    QDBusConnection mBus;
};

class PortalAppearanceTest : public ::testing::Test {
protected:
    void listen() {
        appearance.listen([this](const AppearanceState &state) { told.push_back(state); });
    }
    bool isTold(const AppearanceState &state) {
        return test::eventually([&] { return !told.empty() && told.back() == state; });
    }

    const test::PrivateBus bus;
    FakeSettings settings;
    PortalAppearance appearance{[] { return QDBusConnection::sessionBus(); }};
    std::vector<AppearanceState> told;
};

} // namespace

TEST_F(PortalAppearanceTest, WhatTheDesktopIsSetToIsTold) {
    settings.groups = {{kAppearance, {{"color-scheme", 1u}, {"contrast", 1u}, {"accent-color", 7.0}}},
                       {kGnome, {{"enable-animations", false}}}};
    listen();
    EXPECT_TRUE(isTold({Scheme::Dark, true, true}));
}

TEST_F(PortalAppearanceTest, ChangesAreFollowed) {
    settings.groups = {{kAppearance, {{"color-scheme", 2u}}}};
    listen();
    ASSERT_TRUE(isTold({Scheme::Light, false, false}));
    settings.change(kAppearance, QStringLiteral("color-scheme"), 1u);
    EXPECT_TRUE(isTold({Scheme::Dark, false, false}));
    settings.change(kGnome, QStringLiteral("enable-animations"), false);
    EXPECT_TRUE(isTold({Scheme::Dark, false, true}));
    const auto before = told.size();
    settings.change(kGnome, QStringLiteral("font-name"), QStringLiteral("Sans 12"));
    settings.change(kAppearance, QStringLiteral("color-scheme"), 7u); // none that is known
    EXPECT_TRUE(isTold({Scheme::Unknown, false, true}));
    EXPECT_EQ(told.size(), before + 1);
}

TEST_F(PortalAppearanceTest, AnOlderDesktopIsNotFollowedButItsChangesAre) {
    settings.isOlder = true;
    listen();
    settings.change(kAppearance, QStringLiteral("contrast"), 1u);
    EXPECT_TRUE(isTold({Scheme::Unknown, true, false}));
}

} // namespace cantorel::desktop
