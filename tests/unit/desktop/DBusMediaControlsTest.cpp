#include "platform/desktop/dbus/DBusMediaControls.h"

#include "platform/desktop/dbus/OwnConnection.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <gtest/gtest.h>

namespace cantorel::desktop {
namespace {

using test::PrivateBus;

const QString kName = "org.mpris.MediaPlayer2.test";
const QString kPath = "/org/mpris/MediaPlayer2";
const QString kPlayer = "org.mpris.MediaPlayer2.Player";
const QString kRoot = "org.mpris.MediaPlayer2";
const QString kProperties = "org.freedesktop.DBus.Properties";

struct Commands : MediaCommands {
    QStringList calls;
    double at = 30;

    void play() override { calls << "play"; }
    void pause() override { calls << "pause"; }
    void playOrPause() override { calls << "playOrPause"; }
    void stop() override { calls << "stop"; }
    void next() override { calls << "next"; }
    void previous() override { calls << "previous"; }
    void seek(double seconds) override { calls << QStringLiteral("seek %1").arg(seconds); }
    double position() const override { return at; }
    void showWindow() override { calls << "show"; }
    void quit() override { calls << "quit"; }
};

// Another program of the session: asks from a thread of its own while this one serves, and hears the player's signals.
class Panel : public QObject {
    Q_OBJECT

public:
    Panel() {
        auto bus = QDBusConnection::sessionBus();
        bus.connect({}, kPath, kProperties, "PropertiesChanged", this,
                    SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
        bus.connect({}, kPath, kPlayer, "Seeked", this, SLOT(seeked(qlonglong)));
    }
    QList<QVariantMap> changes;
    QList<qlonglong> jumps;

    static QDBusMessage call(const QString &interface, const char *method, const QVariantList &arguments = {}) {
        QDBusMessage call = QDBusMessage::createMethodCall(kName, kPath, interface, method);
        call.setArguments(arguments);
        return test::whileServing([&] { return OwnConnection("panel").bus().call(call); });
    }
    static QVariantMap all(const QString &interface) {
        return qdbus_cast<QVariantMap>(call(kProperties, "GetAll", {interface}).arguments().value(0));
    }
    // The names of the properties of each change so far.
    QStringList changed() const {
        QStringList names;
        for (const QVariantMap &change : changes)
            names << change.keys().join(' ');
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
    state.track = QUrl::fromLocalFile(QStringLiteral("/music/%1.mp3").arg(title));
    state.title = title;
    state.seconds = 60;
    state.canPlay = true;
    return state;
}

struct DBusMediaControlsTest : testing::Test {
    bool namesHave(const QString &name) { return QDBusConnection::sessionBus().interface()->isServiceRegistered(name); }
    PrivateBus bus;
    Panel panel;
    Commands commands;
    DBusMediaControls controls{"test", "Test", "com.example.Test"};
};

TEST_F(DBusMediaControlsTest, ThePlayerIsThereWhileItIsOffered) {
    controls.show(playing("Rain"));
    controls.positionDidJump();
    EXPECT_FALSE(namesHave(kName));
    ASSERT_TRUE(controls.offer(commands));
    EXPECT_TRUE(namesHave(kName));
    DBusMediaControls other("test", "Test", "com.example.Test");
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

TEST_F(DBusMediaControlsTest, ItTellsWhatIsPlayed) {
    ASSERT_TRUE(controls.offer(commands));
    MediaState state = playing("Rain & Wind");
    state.artist = "A";
    state.album = "B";
    state.seconds = 61.5;
    controls.show(state);
    QVariantMap player = Panel::all(kPlayer);
    EXPECT_EQ(player.value("PlaybackStatus"), "Playing");
    EXPECT_EQ(player.value("Position").toLongLong(), 30'000'000);
    EXPECT_EQ(player.value("Rate").toDouble(), 1);
    EXPECT_EQ(player.value("Position").typeId(), QMetaType::LongLong);
    const QVariantMap metadata = qdbus_cast<QVariantMap>(player.value("Metadata"));
    EXPECT_EQ(metadata.value("mpris:trackid").value<QDBusObjectPath>().path(), "/com/example/Test/track/1");
    EXPECT_EQ(metadata.value("mpris:length"), QVariant(61'500'000LL));
    EXPECT_EQ(metadata.value("xesam:title"), "Rain & Wind");
    EXPECT_EQ(metadata.value("xesam:artist").toStringList(), QStringList{"A"});
    EXPECT_EQ(metadata.value("xesam:album"), "B");
    EXPECT_EQ(metadata.value("xesam:url"), "file:///music/Rain%20&%20Wind.mp3");
    EXPECT_EQ(Panel::call(kProperties, "Set", {kPlayer, "Volume", QVariant::fromValue(QDBusVariant(0.5))}).type(),
              QDBusMessage::ErrorMessage);
}

TEST_F(DBusMediaControlsTest, OnlyWhatHasChangedIsTold) {
    ASSERT_TRUE(controls.offer(commands));
    MediaState state = playing("Rain");
    // Each change is waited for: what is sent in one go may come in any order.
    const auto told = [&](qsizetype count) { return test::eventually([&] { return panel.changes.size() == count; }); };
    controls.show(state);
    controls.show(state);
    commands.at = 31; // is asked for, never told
    controls.show(state);
    ASSERT_TRUE(told(1));
    state.playback = MediaState::Playback::Paused;
    controls.show(state);
    ASSERT_TRUE(told(2));
    state.canGoNext = true;
    controls.show(state);
    ASSERT_TRUE(told(3));
    state.track = QUrl::fromLocalFile("/music/other/Rain.mp3");
    controls.show(state);
    ASSERT_TRUE(told(4));
    controls.positionDidJump();
    controls.show({});
    ASSERT_TRUE(told(5) && test::eventually([&] { return !panel.jumps.isEmpty(); }));
    EXPECT_EQ(panel.changed(),
              (QStringList{"CanPause CanPlay CanSeek Metadata PlaybackStatus", "PlaybackStatus", "CanGoNext",
                           "Metadata", "CanGoNext CanPause CanPlay CanSeek Metadata PlaybackStatus"}));
    EXPECT_EQ(panel.changes[1].value("PlaybackStatus"), "Paused");
    EXPECT_EQ(panel.jumps, QList<qlonglong>{31'000'000});
}

TEST_F(DBusMediaControlsTest, WhatIsAskedReachesThePlayerAndNothingElseDoes) {
    ASSERT_TRUE(controls.offer(commands));
    const auto track = [] {
        const auto metadata = qdbus_cast<QVariantMap>(Panel::all(kPlayer).value("Metadata"));
        return metadata.value("mpris:trackid");
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
                 {"SetPosition", {QVariant::fromValue(QDBusObjectPath("/a/b")), 1LL}, nullptr},
                 {"Seek", {"far"}, nullptr},
                 {"OpenUri", {"file:///etc/passwd"}, nullptr}};
    for (const auto &one : cases) {
        commands.calls.clear();
        Panel::call(kPlayer, one.method, one.arguments);
        EXPECT_EQ(commands.calls, one.reaches == nullptr ? QStringList() : QStringList{one.reaches}) << one.method;
    }
    controls.show(playing("Wind"));
    commands.calls.clear();
    Panel::call(kPlayer, "SetPosition", {first, 0LL});
    EXPECT_TRUE(commands.calls.isEmpty()) << "that track is over";
    EXPECT_NE(track(), first);
    Panel::call(kRoot, "Raise");
    Panel::call(kRoot, "Quit");
    EXPECT_EQ(commands.calls, (QStringList{"show", "quit"}));
}

TEST(DBusMediaControls, WithoutABusNobodyCanAsk) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    Commands commands;
    DBusMediaControls controls("test", "Test", {});
    EXPECT_FALSE(controls.offer(commands));
    controls.show(playing("Rain"));
    controls.positionDidJump();
    controls.withdraw();
}

} // namespace
} // namespace cantorel::desktop

#include "DBusMediaControlsTest.moc"
