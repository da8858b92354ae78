#include "lang/Lang.h"
#include "platform/desktop/dbus/DBusFileManagerReveal.h"
#include "platform/desktop/dbus/DBusPowerActivity.h"
#include "platform/desktop/dbus/DBusSleepDelay.h"
#include "tests/support/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>

namespace cantorel::desktop {
namespace {

using test::PrivateBus;

// A service of the desktop that notes what it is asked, as "method argument argument".
class FakeService : public QDBusVirtualObject {
public:
    QStringList calls;
    QString refuses; // the method that it does not have

    FakeService(const QString &name, const QString &path)
        : mBus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)), mName(name) {
        mOwns = mBus.registerService(name) && mBus.registerVirtualObject(path, this);
    }
    ~FakeService() override {
        mBus.unregisterService(mName);
        QDBusConnection::disconnectFromBus(mName);
    }
    bool owns() const { return mOwns; }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        QStringList parts{message.member()};
        for (const QVariant &argument : message.arguments())
            parts << (argument.typeId() == QMetaType::QStringList ? argument.toStringList()
                                                                  : QStringList{argument.toString()});
        calls << parts.join(QLatin1Char(' '));
        if (message.member() == refuses)
            return bus.send(message.createErrorReply(QDBusError::UnknownMethod, QStringLiteral("no such method")));
        if (message.member() == QStringLiteral("Inhibit"))
            return bus.send(message.createReply(QVariant::fromValue<quint32>(77)));
        return bus.send(message.createReply());
    }

private:
    QDBusConnection mBus;
    const QString mName;
    bool mOwns = false;
};

// Runs the action on a worker while this thread serves the fakes.
template <class Action> void whileServing(Action action) {
    std::atomic<bool> done = false;
    std::thread worker([&] {
        action();
        done = true;
    });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    worker.join();
}

const QString kManager = QStringLiteral("org.freedesktop.PowerManagement");
const QString kManagerPath = QStringLiteral("/org/freedesktop/PowerManagement/Inhibit");

// Whoever locks the screen is asked for nothing: neither to hold back, nor to believe that somebody is there.
TEST(DBusPowerActivity, ThePowerManagerAloneHoldsOneInhibitorUntilItIsReleased) {
    const PrivateBus bus;
    FakeService screenSaver(QStringLiteral("org.freedesktop.ScreenSaver"),
                            QStringLiteral("/org/freedesktop/ScreenSaver"));
    FakeService manager(kManager, kManagerPath);
    ASSERT_TRUE(screenSaver.owns() && manager.owns());
    whileServing([] {
        DBusPowerActivity power;
        EXPECT_TRUE(power.hold(QStringLiteral("why")).ok());
        EXPECT_TRUE(power.hold(QStringLiteral("why")).ok());
        power.release();
        power.release();
    });
    EXPECT_EQ(manager.calls, (QStringList{QStringLiteral("Inhibit Cantorel why"), QStringLiteral("UnInhibit 77")}));
    EXPECT_TRUE(screenSaver.calls.isEmpty());
}

TEST(DBusPowerActivity, AServiceThatWasStartedAnewIsAskedAnew) {
    const PrivateBus bus;
    DBusPowerActivity power;
    {
        FakeService first(kManager, kManagerPath);
        whileServing([&] { EXPECT_TRUE(power.hold(QStringLiteral("a")).ok()); });
    }
    FakeService second(kManager, kManagerPath);
    whileServing([&] {
        EXPECT_TRUE(power.hold(QStringLiteral("b")).ok());
        power.release();
    });
    EXPECT_EQ(second.calls, (QStringList{QStringLiteral("Inhibit Cantorel b"), QStringLiteral("UnInhibit 77")}));
}

TEST(DBusPowerActivity, NoServiceIsASentence) {
    const PrivateBus bus;
    DBusPowerActivity power;
    const auto held = power.hold(QStringLiteral("why"));
    ASSERT_FALSE(held.ok());
    EXPECT_TRUE(Lang::english(held.failure().sentence).endsWith(QLatin1Char('.')));
}

TEST(DBusPowerActivity, WithoutAnyBusItFailsAtOnce) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/bus");
    DBusPowerActivity power;
    EXPECT_FALSE(power.hold(QStringLiteral("why")).ok());
    power.release();
}

// login1, which hands out a descriptor and knows whether it is still open.
class FakeLogin : public QDBusVirtualObject {
public:
    FakeLogin() {
        EXPECT_EQ(::pipe2(mPipe, O_CLOEXEC | O_NONBLOCK), 0);
        EXPECT_TRUE(mBus.registerService(mName) && mBus.registerVirtualObject(mPath, this));
    }
    ~FakeLogin() override {
        ::close(mPipe[0]);
        ::close(mPipe[1]);
        QDBusConnection::disconnectFromBus(mName);
    }
    QStringList calls;

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        QStringList parts{message.member()};
        for (const QVariant &argument : message.arguments())
            parts << argument.toString();
        calls << parts.join(QLatin1Char(' '));
        const bool sent =
            bus.send(message.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(mPipe[1])))); // a copy
        ::close(std::exchange(mPipe[1], -1));
        return sent;
    }
    // Nobody has the descriptor any more.
    bool isReleased() const {
        char byte = 0;
        return ::read(mPipe[0], &byte, 1) == 0;
    }
    void tell(const char *signal, bool begins) {
        auto message =
            QDBusMessage::createSignal(mPath, QStringLiteral("org.freedesktop.login1.Manager"), QLatin1String(signal));
        message << begins;
        mBus.send(message);
    }

private:
    const QString mName = QStringLiteral("org.freedesktop.login1");
    const QString mPath = QStringLiteral("/org/freedesktop/login1");
    QDBusConnection mBus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, mName);
    int mPipe[2] = {-1, -1};
};

bool soon(const std::function<bool()> &condition) {
    const QDeadlineTimer deadline(10'000);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return condition();
}

TEST(DBusSleepDelay, TheMachineWaitsForTheDescriptorToBeClosed) {
    const PrivateBus bus;
    FakeLogin login;
    DBusSleepDelay delay;
    QStringList told;
    delay.willSleep = [&](bool shutsDown) {
        told << (shutsDown ? QStringLiteral("shutdown") : QStringLiteral("sleep"));
    };
    delay.didWake = [&] { told << QStringLiteral("wake"); };
    delay.hold(QStringLiteral("why"));
    delay.hold(QStringLiteral("why"));
    ASSERT_TRUE(soon([&] { return !login.calls.isEmpty(); }));
    login.tell("PrepareForSleep", true);
    login.tell("PrepareForSleep", false);
    login.tell("PrepareForShutdown", true);
    ASSERT_TRUE(soon([&] { return told.size() == 3; }));
    EXPECT_EQ(told, (QStringList{QStringLiteral("sleep"), QStringLiteral("wake"), QStringLiteral("shutdown")}));
    EXPECT_EQ(login.calls, QStringList{QStringLiteral("Inhibit sleep:shutdown Cantorel why delay")});
    EXPECT_FALSE(login.isReleased());
    delay.release();
    EXPECT_TRUE(soon([&] { return login.isReleased(); }));
}

TEST(DBusSleepDelay, ReleasedBeforeTheAnswerNothingIsHeld) {
    const PrivateBus bus;
    FakeLogin login;
    DBusSleepDelay delay;
    delay.hold(QStringLiteral("why"));
    delay.release();
    ASSERT_TRUE(soon([&] { return !login.calls.isEmpty(); }));
    EXPECT_TRUE(soon([&] { return login.isReleased(); }));
}

TEST(DBusSleepDelay, WithoutLoginOrABusNothingHappens) {
    {
        const PrivateBus bus;
        DBusSleepDelay delay;
        delay.hold(QStringLiteral("why"));
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        delay.release();
    }
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/bus");
    DBusSleepDelay delay;
    delay.hold(QStringLiteral("why"));
    delay.release();
}

TEST(DBusFileManagerReveal, TheFileManagerIsGivenAddresses) {
    const PrivateBus bus;
    FakeService manager(QStringLiteral("org.freedesktop.FileManager1"),
                        QStringLiteral("/org/freedesktop/FileManager1"));
    whileServing([] {
        EXPECT_TRUE(DBusFileManagerReveal().reveal({QStringLiteral("/tmp/a b%.mp3"), QStringLiteral("/tmp/c")}).ok());
    });
    EXPECT_EQ(manager.calls, QStringList{QStringLiteral("ShowItems file:///tmp/a%20b%25.mp3 file:///tmp/c ")});
}

TEST(DBusFileManagerReveal, WithoutFileManagerAndOpenerItSaysSo) {
    const PrivateBus bus;
    qputenv("PATH", "/no/such/folder");
    const auto revealed = DBusFileManagerReveal().reveal({QStringLiteral("/tmp/a")});
    ASSERT_FALSE(revealed.ok());
    EXPECT_TRUE(Lang::english(revealed.failure().sentence).contains(QStringLiteral("xdg-open")));
}

} // namespace
} // namespace cantorel::desktop
