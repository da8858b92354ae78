#include "platform/desktop/dbus/DBusMediaControls.h"

#include "platform/desktop/dbus/OwnConnection.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace cantorel::desktop {
namespace {

using test::PrivateBus;

const QString kName = QStringLiteral("org.mpris.MediaPlayer2.test");
const QString kPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString kPlayer = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString kRoot = QStringLiteral("org.mpris.MediaPlayer2");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

struct Commands : MediaCommands {
    QStringList calls;
    double at = 30;

    void play() override { calls << QStringLiteral("play"); }
    void pause() override { calls << QStringLiteral("pause"); }
    void playOrPause() override { calls << QStringLiteral("playOrPause"); }
    void stop() override { calls << QStringLiteral("stop"); }
    void next() override { calls << QStringLiteral("next"); }
    void previous() override { calls << QStringLiteral("previous"); }
    void seek(double seconds) override { calls << QStringLiteral("seek %1").arg(seconds); }
    double position() const override { return at; }
    void showWindow() override { calls << QStringLiteral("show"); }
    void quit() override { calls << QStringLiteral("quit"); }
};

// Another program of the session: asks from a thread of its own while this one serves, and hears the player's signals.
class Panel : public QObject {
    Q_OBJECT

public:
    Panel() {
        auto bus = QDBusConnection::sessionBus();
        bus.connect({}, kPath, kProperties, QStringLiteral("PropertiesChanged"), this,
                    SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
        bus.connect({}, kPath, kPlayer, QStringLiteral("Seeked"), this, SLOT(seeked(qlonglong)));
    }
    QList<QVariantMap> changes;
    QList<qlonglong> jumps;

    static QDBusMessage call(const QString &interface, const char *method, const QVariantList &arguments = {}) {
        QDBusMessage call = QDBusMessage::createMethodCall(kName, kPath, interface, QString::fromLatin1(method));
        call.setArguments(arguments);
        std::atomic<bool> done = false;
        QDBusMessage answer;
        std::thread worker([&] {
            answer = OwnConnection(QStringLiteral("panel")).bus().call(call);
            done = true;
        });
        while (!done)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        worker.join();
        return answer;
    }
    static QVariantMap all(const QString &interface) {
        return qdbus_cast<QVariantMap>(call(kProperties, "GetAll", {interface}).arguments().value(0));
    }
    // The names of the properties of each change so far.
    QStringList changed() const {
        QStringList names;
        for (const QVariantMap &change : changes)
            names << change.keys().join(QLatin1Char(' '));
        return names;
    }

private Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &change, const QStringList &invalidated) {
        EXPECT_EQ(interface, kPlayer);
        EXPECT_TRUE(invalidated.isEmpty());
        changes << change;
    }
    void seeked(qlonglong position) { jumps << position; }
};

MediaState playing(const char *title) {
    MediaState state;
    state.playback = MediaState::Playback::Playing;
    state.track = QUrl::fromLocalFile(QStringLiteral("/music/%1.mp3").arg(QString::fromUtf8(title)));
    state.title = QString::fromUtf8(title);
    state.seconds = 60;
    state.canPlay = true;
    return state;
}

struct DBusMediaControlsTest : testing::Test {
    bool namesHave(const QString &name) { return QDBusConnection::sessionBus().interface()->isServiceRegistered(name); }
    bool soon(const std::function<bool()> &condition) {
        return test::eventually([&] {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            return condition();
        });
    }
    PrivateBus bus;
    Panel panel;
    Commands commands;
    DBusMediaControls controls{QStringLiteral("test"), QStringLiteral("Test"), QStringLiteral("com.example.Test")};
};

TEST_F(DBusMediaControlsTest, ThePlayerIsThereWhileItIsOffered) {
    controls.show(playing("Rain"));
    controls.positionDidJump();
    EXPECT_FALSE(namesHave(kName));
    ASSERT_TRUE(controls.offer(commands));
    EXPECT_TRUE(namesHave(kName));
    DBusMediaControls other(QStringLiteral("test"), QStringLiteral("Test"), QStringLiteral("com.example.Test"));
    ASSERT_TRUE(other.offer(commands));
    const QString second = kName + QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid());
    EXPECT_TRUE(namesHave(second));
    other.withdraw();
    EXPECT_FALSE(namesHave(second));
    EXPECT_TRUE(namesHave(kName));
    controls.withdraw();
    EXPECT_FALSE(namesHave(kName));
    ASSERT_TRUE(controls.offer(commands));
    EXPECT_TRUE(namesHave(kName));
}

TEST_F(DBusMediaControlsTest, ItTellsWhatItIsAndWhatIsPlayed) {
    ASSERT_TRUE(controls.offer(commands));
    QVariantMap player = Panel::all(kPlayer);
    EXPECT_EQ(player.value(QStringLiteral("PlaybackStatus")), QStringLiteral("Stopped"));
    EXPECT_TRUE(qdbus_cast<QVariantMap>(player.value(QStringLiteral("Metadata"))).isEmpty());

    MediaState state = playing("Rain & Wind");
    state.artist = QStringLiteral("A");
    state.album = QStringLiteral("B");
    state.seconds = 61.5;
    controls.show(state);
    player = Panel::all(kPlayer);
    EXPECT_EQ(player.value(QStringLiteral("PlaybackStatus")), QStringLiteral("Playing"));
    EXPECT_EQ(player.value(QStringLiteral("Position")).toLongLong(), 30'000'000);
    EXPECT_EQ(player.value(QStringLiteral("Rate")).toDouble(), 1);
    EXPECT_EQ(player.value(QStringLiteral("Position")).typeId(), QMetaType::LongLong);
    const QVariantMap metadata = qdbus_cast<QVariantMap>(player.value(QStringLiteral("Metadata")));
    EXPECT_EQ(metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path(),
              QStringLiteral("/com/example/Test/track/1"));
    EXPECT_EQ(metadata.value(QStringLiteral("mpris:length")), QVariant(61'500'000LL));
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:title")), QStringLiteral("Rain & Wind"));
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:artist")).toStringList(), QStringList{QStringLiteral("A")});
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:album")), QStringLiteral("B"));
    EXPECT_EQ(metadata.value(QStringLiteral("xesam:url")), QStringLiteral("file:///music/Rain%20&%20Wind.mp3"));
    EXPECT_EQ(
        Panel::call(kProperties, "Set", {kPlayer, QStringLiteral("Volume"), QVariant::fromValue(QDBusVariant(0.5))})
            .type(),
        QDBusMessage::ErrorMessage);
}

TEST_F(DBusMediaControlsTest, OnlyWhatHasChangedIsTold) {
    ASSERT_TRUE(controls.offer(commands));
    MediaState state = playing("Rain");
    controls.show(state);
    controls.show(state);
    commands.at = 31; // is asked for, never told
    controls.show(state);
    state.playback = MediaState::Playback::Paused;
    controls.show(state);
    state.canGoNext = true;
    controls.show(state);
    state.track = QUrl::fromLocalFile(QStringLiteral("/music/other/Rain.mp3"));
    controls.show(state);
    controls.positionDidJump();
    controls.show({});
    ASSERT_TRUE(soon([&] { return panel.changes.size() >= 5 && !panel.jumps.isEmpty(); }));
    EXPECT_EQ(panel.changed(),
              (QStringList{QStringLiteral("CanPause CanPlay CanSeek Metadata PlaybackStatus"),
                           QStringLiteral("PlaybackStatus"), QStringLiteral("CanGoNext"), QStringLiteral("Metadata"),
                           QStringLiteral("CanGoNext CanPause CanPlay CanSeek Metadata PlaybackStatus")}));
    EXPECT_EQ(panel.changes[1].value(QStringLiteral("PlaybackStatus")), QStringLiteral("Paused"));
    EXPECT_EQ(panel.jumps, QList<qlonglong>{31'000'000});
}

TEST_F(DBusMediaControlsTest, WhatIsAskedReachesThePlayerAndNothingElseDoes) {
    ASSERT_TRUE(controls.offer(commands));
    const auto track = [] {
        const auto metadata = qdbus_cast<QVariantMap>(Panel::all(kPlayer).value(QStringLiteral("Metadata")));
        return metadata.value(QStringLiteral("mpris:trackid"));
    };
    Panel::call(kPlayer, "Seek", {5'000'000LL}); // Nothing is played.
    controls.show(playing("Rain"));
    const QVariant first = track();
    const struct {
        const char *method;
        QVariantList arguments;
        const char *reaches;
    } cases[] = {{"Play", {}, "play"},
                 {"Pause", {}, "pause"},
                 {"PlayPause", {}, "playOrPause"},
                 {"Stop", {}, "stop"},
                 {"Next", {}, "next"},
                 {"Previous", {}, "previous"},
                 {"Seek", {5'000'000LL}, "seek 35"},
                 {"Seek", {-5'000'000LL}, "seek 25"},
                 {"Seek", {-40'000'000LL}, "seek 0"},
                 {"Seek", {30'000'001LL}, "next"},
                 {"SetPosition", {first, 0LL}, "seek 0"},
                 {"SetPosition", {first, 60'000'000LL}, "seek 60"},
                 {"SetPosition", {first, 60'000'001LL}, nullptr},
                 {"SetPosition", {first, -1LL}, nullptr},
                 {"SetPosition", {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/a/b"))), 1LL}, nullptr},
                 {"Seek", {QStringLiteral("far")}, nullptr},
                 {"OpenUri", {QStringLiteral("file:///etc/passwd")}, nullptr}};
    for (const auto &one : cases) {
        commands.calls.clear();
        Panel::call(kPlayer, one.method, one.arguments);
        EXPECT_EQ(commands.calls,
                  one.reaches == nullptr ? QStringList() : QStringList{QString::fromLatin1(one.reaches)})
            << one.method;
    }
    controls.show(playing("Wind"));
    commands.calls.clear();
    Panel::call(kPlayer, "SetPosition", {first, 0LL});
    EXPECT_TRUE(commands.calls.isEmpty()) << "that track is over";
    EXPECT_NE(track(), first);
    Panel::call(kRoot, "Raise");
    Panel::call(kRoot, "Quit");
    EXPECT_EQ(commands.calls, (QStringList{QStringLiteral("show"), QStringLiteral("quit")}));
}

TEST(DBusMediaControls, WithoutABusNobodyCanAsk) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    Commands commands;
    DBusMediaControls controls(QStringLiteral("test"), QStringLiteral("Test"), {});
    EXPECT_FALSE(controls.offer(commands));
    controls.show(playing("Rain"));
    controls.positionDidJump();
    controls.withdraw();
}

} // namespace
} // namespace cantorel::desktop

#include "DBusMediaControlsTest.moc"
