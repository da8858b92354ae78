#include "platform/desktop/dbus/DBusLauncherEntry.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>

#include <gtest/gtest.h>

namespace cantorel::desktop {
namespace {

// A dock that notes what it is told, as "program progress", or "program -" for no progress.
class Dock : public QObject {
    Q_OBJECT

public:
    Dock() : mBus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("dock"))) {
        EXPECT_TRUE(
            mBus.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", this, SLOT(updated(QDBusMessage))));
    }
    ~Dock() override { QDBusConnection::disconnectFromBus(QStringLiteral("dock")); }

    QStringList told;

private Q_SLOTS:
    void updated(const QDBusMessage &signal) {
        const auto values = qdbus_cast<QVariantMap>(signal.arguments().value(1));
        told << signal.arguments().value(0).toString() + ' '
                    + (values.value("progress-visible").toBool() ? values.value("progress").toString() : "-");
    }

private:
    QDBusConnection mBus;
};

TEST(DBusLauncherEntry, DocksAreToldWhatChangesAndThatItIsOver) {
    const test::PrivateBus bus;
    Dock dock;
    DBusLauncherEntry entry("com.tessolar.Cantorel");
    entry.hideProgress();
    for (const double progress : {0.25, 0.2501, 0.5})
        entry.showProgress(progress);
    entry.hideProgress();
    EXPECT_TRUE(test::eventually([&] { return dock.told.size() >= 3; }));
    const QString program = "application://com.tessolar.Cantorel.desktop ";
    EXPECT_EQ(dock.told, (QStringList{program + "0.25", program + "0.5", program + "-"}));
}

} // namespace
} // namespace cantorel::desktop

#include "DBusLauncherEntryTest.moc"
