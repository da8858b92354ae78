#include "platform/desktop/dbus/DBusRemoteControl.h"

#include "lang/Lang.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTimer>

#include <gtest/gtest.h>

namespace cantorel::desktop {
namespace {

using test::FakeService;
using test::PrivateBus;
using test::whileServing;

const QString kName = "com.example.Test";
const QString kPath = "/com/example/Test";
const QString kInterface = "com.example.Test.Commands";

struct Commands : RemoteCommands {
    QStringList calls;

    std::vector<RemoteMethod> methods() const override {
        return {{"Tell", {}}, {"Rename", {"from", "to"}}, {"Refuse", {}}};
    }
    foundation::Result<QVariantMap> call(const QString &method, const QStringList &arguments) override {
        calls << method + arguments.join('|');
        if (method == "Refuse")
            return foundation::Failure{QStringLiteral("It can't be."), {}};
        return QVariantMap{{"text", "ü"}, {"bytes", qint64{1} << 40}, {"seconds", 1.5}};
    }
};

struct Offer {
    Commands commands;
    DBusRemoteControl control{kName, kPath, kInterface};
    bool ok = control.offer(commands).ok();
};

std::optional<foundation::Result<QVariantMap>> ask(const char *method, const QStringList &arguments = {}) {
    return whileServing([&] { return DBusRemoteControl(kName, kPath, kInterface).ask(method, arguments); });
}

} // namespace

TEST(DBusRemoteControl, AnswersAndRefusalsArriveAsTheyWereGiven) {
    const PrivateBus bus;
    Offer offer;
    ASSERT_TRUE(offer.ok);
    const auto told = ask("Tell");
    ASSERT_TRUE(told && told->ok());
    EXPECT_EQ(told->value(), (QVariantMap{{"text", "ü"}, {"bytes", qint64{1} << 40}, {"seconds", 1.5}}));
    EXPECT_TRUE(ask("Rename", {"/a b", "ä"})->ok());
    const auto refused = ask("Refuse");
    ASSERT_TRUE(refused && !refused->ok());
    EXPECT_EQ(Lang::english(refused->failure().sentence), QStringLiteral("It can't be."));
    EXPECT_EQ(offer.commands.calls, (QStringList{"Tell", "Rename/a b|ä", "Refuse"}));
}

TEST(DBusRemoteControl, CallsOfAnotherShapeNeverReachTheCommands) {
    const PrivateBus bus;
    Offer offer;
    ASSERT_TRUE(offer.ok);
    for (const auto &[method, arguments] : {std::pair{"Rename", QStringList{"one"}}, {"Tell", {"more"}}, {"No", {}}}) {
        const auto answer = ask(method, arguments);
        EXPECT_TRUE(answer && !answer->ok()) << method;
    }
    const auto number = whileServing([] {
        auto call = QDBusMessage::createMethodCall(kName, kPath, kInterface, "Rename");
        call << 1 << 2;
        return QDBusConnection::sessionBus().call(call);
    });
    EXPECT_EQ(number.type(), QDBusMessage::ErrorMessage);
    EXPECT_TRUE(offer.commands.calls.isEmpty());
}

TEST(DBusRemoteControl, OneProgramOffersAtATimeAndTheNextOneAfterIt) {
    const PrivateBus bus;
    EXPECT_FALSE(ask("Tell").has_value());
    {
        Offer first;
        ASSERT_TRUE(first.ok);
        Offer second;
        EXPECT_FALSE(second.ok);
        EXPECT_TRUE(ask("Tell")->ok());
        EXPECT_EQ(first.commands.calls.size(), 1);
        first.control.withdraw();
        EXPECT_FALSE(ask("Tell").has_value());
    }
    EXPECT_TRUE(Offer().ok);
}

// Ends instead of answering.
struct Silent : FakeService {
    using FakeService::FakeService;
    bool handleMessage(const QDBusMessage &, const QDBusConnection &) override {
        QTimer::singleShot(0, qApp, [this] { delete this; });
        return true;
    }
};

TEST(DBusRemoteControl, OneThatEndsInsteadOfAnsweringIsNobody) {
    const PrivateBus bus;
    new Silent(kName, kPath);
    EXPECT_FALSE(ask("Tell").has_value());
}

TEST(DBusRemoteControl, WithoutABusNobodyIsReachedAndThatIsSaid) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    Commands commands;
    DBusRemoteControl control(kName, kPath, kInterface);
    EXPECT_FALSE(control.offer(commands).ok());
    const auto answer = control.ask("Tell", {});
    ASSERT_TRUE(answer && !answer->ok());
    EXPECT_TRUE(Lang::english(answer->failure().sentence).contains("DBUS_SESSION_BUS_ADDRESS"));
}

TEST(DBusRemoteControl, TheBusCanTellWhatThereIsToAsk) {
    const PrivateBus bus;
    Offer offer;
    ASSERT_TRUE(offer.ok);
    const auto xml = whileServing([] {
        return QDBusConnection::sessionBus().call(
            QDBusMessage::createMethodCall(kName, kPath, "org.freedesktop.DBus.Introspectable", "Introspect"));
    });
    const QString text = xml.arguments().value(0).toString();
    EXPECT_TRUE(text.contains("<method name=\"Rename\">")) << text.toStdString();
    EXPECT_TRUE(text.contains("<arg name=\"to\" type=\"s\" direction=\"in\"/>"));
}

} // namespace cantorel::desktop
