#include "platform/desktop/dbus/DBusFileManagerReveal.h"
#include "platform/desktop/dbus/DBusPowerActivity.h"
#include "tests/support/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

#include <atomic>
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

const QString kScreenSaver = QStringLiteral("org.freedesktop.ScreenSaver");
const QString kScreenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");

TEST(DBusPowerActivity, TheScreenSaverHoldsOneInhibitorUntilItIsReleased) {
    const PrivateBus bus;
    FakeService screenSaver(kScreenSaver, kScreenSaverPath);
    ASSERT_TRUE(screenSaver.owns());
    whileServing([] {
        DBusPowerActivity power;
        EXPECT_TRUE(power.hold(QStringLiteral("why")).ok());
        EXPECT_TRUE(power.hold(QStringLiteral("why")).ok());
        power.reportUserActivity();
        power.release();
        power.release();
    });
    EXPECT_EQ(screenSaver.calls, (QStringList{QStringLiteral("Inhibit Cantorel why"),
                                              QStringLiteral("SimulateUserActivity"), QStringLiteral("UnInhibit 77")}));
}

TEST(DBusPowerActivity, ADesktopWithoutActivityCallIsAskedOnce) {
    const PrivateBus bus;
    FakeService screenSaver(kScreenSaver, kScreenSaverPath);
    screenSaver.refuses = QStringLiteral("SimulateUserActivity");
    whileServing([] {
        DBusPowerActivity power;
        power.reportUserActivity();
        power.reportUserActivity();
    });
    EXPECT_EQ(screenSaver.calls.count(QStringLiteral("SimulateUserActivity")), 1);
}

TEST(DBusPowerActivity, AServiceThatWasStartedAnewIsAskedAnew) {
    const PrivateBus bus;
    DBusPowerActivity power;
    {
        FakeService first(kScreenSaver, kScreenSaverPath);
        whileServing([&] { EXPECT_TRUE(power.hold(QStringLiteral("a")).ok()); });
    }
    FakeService second(kScreenSaver, kScreenSaverPath);
    whileServing([&] {
        EXPECT_TRUE(power.hold(QStringLiteral("b")).ok());
        power.release();
    });
    EXPECT_EQ(second.calls, (QStringList{QStringLiteral("Inhibit Cantorel b"), QStringLiteral("UnInhibit 77")}));
}

TEST(DBusPowerActivity, ThePowerManagerIsTheNextChoiceAndNoServiceIsASentence) {
    const PrivateBus bus;
    {
        FakeService manager(QStringLiteral("org.freedesktop.PowerManagement"),
                            QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"));
        whileServing([] {
            DBusPowerActivity power;
            EXPECT_TRUE(power.hold(QStringLiteral("why")).ok());
        });
        EXPECT_EQ(manager.calls.value(0), QStringLiteral("Inhibit Cantorel why"));
    }
    DBusPowerActivity power;
    const auto held = power.hold(QStringLiteral("why"));
    ASSERT_FALSE(held.ok());
    EXPECT_TRUE(held.failure().sentence.endsWith(QLatin1Char('.')));
    power.reportUserActivity();
}

TEST(DBusPowerActivity, WithoutAnyBusItFailsAtOnce) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/bus");
    DBusPowerActivity power;
    EXPECT_FALSE(power.hold(QStringLiteral("why")).ok());
    power.reportUserActivity();
    power.release();
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
    EXPECT_TRUE(revealed.failure().sentence.contains(QStringLiteral("xdg-open")));
}

} // namespace
} // namespace cantorel::desktop
