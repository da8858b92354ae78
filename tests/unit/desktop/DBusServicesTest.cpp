#include "lang/Lang.h"
#include "platform/desktop/dbus/DBusFileManagerReveal.h"
#include "platform/desktop/dbus/DBusPowerActivity.h"
#include "platform/desktop/dbus/DBusSleepDelay.h"
#include "tests/support/FakeLogin.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

namespace cantorel::desktop {
namespace {

using test::eventually;
using test::FakeLogin;
using test::FakeService;
using test::PrivateBus;
using test::whileServing;

struct PowerManager : FakeService {
    PowerManager() : FakeService("org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit") {
        answers = {{"Inhibit", quint32{77}}};
    }
};

// Whoever locks the screen is asked for nothing: neither to hold back, nor to believe that somebody is there.
TEST(DBusPowerActivity, ThePowerManagerAloneHoldsOneInhibitorUntilItIsReleased) {
    const PrivateBus bus;
    FakeService screenSaver("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver");
    PowerManager manager;
    whileServing([] {
        DBusPowerActivity power;
        EXPECT_TRUE(power.hold("why").ok());
        EXPECT_TRUE(power.hold("why").ok());
        power.release();
        power.release();
    });
    EXPECT_EQ(manager.calls, (QStringList{"Inhibit Cantorel why", "UnInhibit 77"}));
    EXPECT_TRUE(screenSaver.calls.isEmpty());
}

TEST(DBusPowerActivity, AServiceThatWasStartedAnewIsAskedAnew) {
    const PrivateBus bus;
    DBusPowerActivity power;
    {
        PowerManager first;
        whileServing([&] { EXPECT_TRUE(power.hold("a").ok()); });
    }
    PowerManager second;
    whileServing([&] {
        EXPECT_TRUE(power.hold("b").ok());
        power.release();
    });
    EXPECT_EQ(second.calls, (QStringList{"Inhibit Cantorel b", "UnInhibit 77"}));
}

TEST(DBusPowerActivity, WithoutTheServiceOrAnyBusThereIsASentence) {
    for (const bool hasBus : {true, false}) {
        const auto bus = hasBus ? std::make_unique<PrivateBus>() : nullptr;
        if (!hasBus)
            qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
        DBusPowerActivity power;
        const auto held = power.hold("why");
        ASSERT_FALSE(held.ok());
        EXPECT_TRUE(Lang::english(held.failure().sentence).endsWith('.'));
        power.release();
    }
}

TEST(DBusSleepDelay, TheMachineWaitsForTheDescriptorToBeClosed) {
    const PrivateBus bus;
    FakeLogin login;
    DBusSleepDelay delay;
    QStringList told;
    delay.willSleep = [&](bool shutsDown) { told << (shutsDown ? "shutdown" : "sleep"); };
    delay.didWake = [&] { told << "wake"; };
    delay.hold("why");
    delay.hold("why");
    ASSERT_TRUE(eventually([&] { return !login.calls.isEmpty(); }));
    login.tell("PrepareForSleep", true);
    login.tell("PrepareForSleep", false);
    login.tell("PrepareForShutdown", true);
    ASSERT_TRUE(eventually([&] { return told.size() == 3; }));
    EXPECT_EQ(told, (QStringList{"sleep", "wake", "shutdown"}));
    EXPECT_EQ(login.calls, QStringList{"Inhibit sleep:shutdown Cantorel why delay"});
    EXPECT_FALSE(login.isReleased());
    delay.release();
    EXPECT_TRUE(eventually([&] { return login.isReleased(); }));
}

TEST(DBusSleepDelay, ReleasedBeforeTheAnswerNothingIsHeld) {
    const PrivateBus bus;
    FakeLogin login;
    DBusSleepDelay delay;
    delay.hold("why");
    delay.release();
    ASSERT_TRUE(eventually([&] { return !login.calls.isEmpty(); }));
    EXPECT_TRUE(eventually([&] { return login.isReleased(); }));
}

TEST(DBusSleepDelay, WithoutLoginOrABusNothingHappens) {
    {
        const PrivateBus bus;
        DBusSleepDelay delay;
        delay.hold("why");
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        delay.release();
    }
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/bus");
    DBusSleepDelay delay;
    delay.hold("why");
    delay.release();
}

TEST(DBusFileManagerReveal, TheFileManagerIsGivenAddresses) {
    const PrivateBus bus;
    FakeService manager("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1");
    whileServing([] { EXPECT_TRUE(DBusFileManagerReveal().reveal({"/tmp/a b%.mp3", "/tmp/c"}).ok()); });
    EXPECT_EQ(manager.calls, QStringList{"ShowItems file:///tmp/a%20b%25.mp3 file:///tmp/c"});
}

TEST(DBusFileManagerReveal, WithoutFileManagerAndOpenerItSaysSo) {
    const PrivateBus bus;
    qputenv("PATH", "/no/such/folder");
    const auto revealed = DBusFileManagerReveal().reveal({"/tmp/a"});
    ASSERT_FALSE(revealed.ok());
    EXPECT_TRUE(Lang::english(revealed.failure().sentence).contains("xdg-open"));
}

} // namespace
} // namespace cantorel::desktop
