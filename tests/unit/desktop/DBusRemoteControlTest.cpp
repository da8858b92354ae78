#include "platform/desktop/dbus/DBusRemoteControl.h"

#include "lang/Lang.h"
#include "platform/desktop/dbus/OwnConnection.h"
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

const QString kName = QStringLiteral("com.example.Test");
const QString kPath = QStringLiteral("/com/example/Test");
const QString kInterface = QStringLiteral("com.example.Test.Commands");

struct Commands : RemoteCommands {
    QStringList calls;

    std::vector<RemoteMethod> methods() const override {
        return {{QStringLiteral("Tell"), {}},
                {QStringLiteral("Rename"), {QStringLiteral("from"), QStringLiteral("to")}},
                {QStringLiteral("Refuse"), {}}};
    }
    foundation::Result<QVariantMap> call(const QString &method, const QStringList &arguments) override {
        calls << method + arguments.join(QLatin1Char('|'));
        if (method == QStringLiteral("Refuse"))
            return foundation::Failure{QStringLiteral("It can't be."), {}};
        return QVariantMap{{QStringLiteral("text"), QStringLiteral("ü")},
                           {QStringLiteral("bytes"), qint64{1} << 40},
                           {QStringLiteral("seconds"), 1.5}};
    }
};

struct Offer {
    Commands commands;
    DBusRemoteControl control{kName, kPath, kInterface};
    bool ok = control.offer(commands).ok();
};

// What another program is answered while this thread serves.
template <class Question> auto whileServing(Question question) {
    std::atomic<bool> done = false;
    decltype(question()) answer;
    std::thread worker([&] {
        answer = question();
        done = true;
    });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    worker.join();
    return answer;
}

std::optional<foundation::Result<QVariantMap>> ask(const char *method, const QStringList &arguments = {}) {
    return whileServing(
        [&] { return DBusRemoteControl(kName, kPath, kInterface).ask(QString::fromLatin1(method), arguments); });
}

} // namespace

TEST(DBusRemoteControl, AnswersAndRefusalsArriveAsTheyWereGiven) {
    const PrivateBus bus;
    Offer offer;
    ASSERT_TRUE(offer.ok);
    const auto told = ask("Tell");
    ASSERT_TRUE(told && told->ok());
    EXPECT_EQ(told->value(), (QVariantMap{{QStringLiteral("text"), QStringLiteral("ü")},
                                          {QStringLiteral("bytes"), qint64{1} << 40},
                                          {QStringLiteral("seconds"), 1.5}}));
    EXPECT_TRUE(ask("Rename", {QStringLiteral("/a b"), QStringLiteral("ä")})->ok());
    const auto refused = ask("Refuse");
    ASSERT_TRUE(refused && !refused->ok());
    EXPECT_EQ(Lang::english(refused->failure().sentence), QStringLiteral("It can't be."));
    EXPECT_EQ(offer.commands.calls,
              (QStringList{QStringLiteral("Tell"), QStringLiteral("Rename/a b|ä"), QStringLiteral("Refuse")}));
}

TEST(DBusRemoteControl, CallsOfAnotherShapeNeverReachTheCommands) {
    const PrivateBus bus;
    Offer offer;
    ASSERT_TRUE(offer.ok);
    for (const auto &[method, arguments] :
         {std::pair{"Rename", QStringList{QStringLiteral("one")}}, {"Tell", {QStringLiteral("more")}}, {"No", {}}}) {
        const auto answer = ask(method, arguments);
        EXPECT_TRUE(answer && !answer->ok()) << method;
    }
    const auto number = whileServing([] {
        auto call = QDBusMessage::createMethodCall(kName, kPath, kInterface, QStringLiteral("Rename"));
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

// Takes a call, and owes the answer.
struct Silent : QDBusVirtualObject {
    bool wasAsked = false;
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &, const QDBusConnection &) override { return wasAsked = true; }
};

TEST(DBusRemoteControl, OneThatEndsInsteadOfAnsweringIsNobody) {
    const PrivateBus bus;
    Silent silent;
    auto connection = std::make_unique<OwnConnection>(QStringLiteral("silent"));
    ASSERT_TRUE(connection->bus().registerVirtualObject(kPath, &silent) && connection->bus().registerService(kName));
    std::atomic<bool> done = false;
    std::optional<foundation::Result<QVariantMap>> answer = QVariantMap();
    std::thread worker([&] {
        answer = DBusRemoteControl(kName, kPath, kInterface).ask(QStringLiteral("Tell"), {});
        done = true;
    });
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        if (silent.wasAsked)
            connection.reset();
    }
    worker.join();
    EXPECT_FALSE(answer.has_value());
}

TEST(DBusRemoteControl, WithoutABusNobodyIsReachedAndThatIsSaid) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    Commands commands;
    DBusRemoteControl control(kName, kPath, kInterface);
    EXPECT_FALSE(control.offer(commands).ok());
    const auto answer = control.ask(QStringLiteral("Tell"), {});
    ASSERT_TRUE(answer && !answer->ok());
    EXPECT_TRUE(Lang::english(answer->failure().sentence).contains(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")));
}

TEST(DBusRemoteControl, TheBusCanTellWhatThereIsToAsk) {
    const PrivateBus bus;
    Offer offer;
    ASSERT_TRUE(offer.ok);
    const auto xml = whileServing([] {
        return QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
            kName, kPath, QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect")));
    });
    const QString text = xml.arguments().value(0).toString();
    EXPECT_TRUE(text.contains(QStringLiteral("<method name=\"Rename\">"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("<arg name=\"to\" type=\"s\" direction=\"in\"/>")));
}

} // namespace cantorel::desktop
