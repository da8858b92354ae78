#include "app/start/Hardware.h"
#include "log/Log.h"
#include "platform/desktop/dbus/DBusRemoteControl.h"
#include "recording/control/RecordingControl.h"
#include "recording/session/RecordingJournal.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"
#include "tests/window/Screen.h"

#include <QDataStream>
#include <QDir>
#include <QLineEdit>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

namespace cantorel::test {
namespace {

QByteArray logOf() { return contents(LogFilePath(kApplicationLogName)); }

struct ProgramTest : testing::Test {
    ProgramTest() { qputenv("CANTOREL_DEBUG", "1"); } // nothing is asked of the maker
    int endBySignal(const QStringList &arguments, const QByteArray &logged) {
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QStringLiteral(CANTOREL_PROGRAM), arguments);
        EXPECT_TRUE(eventually([&] { return logOf().contains(logged); }, 30'000)) << logOf().toStdString();
        program.terminate();
        EXPECT_TRUE(program.waitForFinished());
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        return program.exitCode();
    }
    QProcess program;
};

TEST_F(ProgramTest, TheEndOfALogInEndsTheWindowInOrder) {
    EXPECT_EQ(endBySignal({"--backend=embedded"}, "RegisterHotkey -> "), 0);
}

TEST_F(ProgramTest, HotKeysRecordWhileAnotherWindowHasTheKeyboard) {
    constexpr xcb_keysym_t kControl = 0xffe3, kSuper = 0xffeb; // on the left
    const QDir music(QDir::homePath() + "/Music");
    AppSettings::setOutputPath(music.path());
    AppSettings::setAudioFormat(4);
    AppSettings::setAutoSkipSilence(false);
    AppSettings::setIsBeepBeforeRecording(false);
    AppSettings::setAudioType(1); // the microphone: nothing has to be installed
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral(CANTOREL_PROGRAM), {"--backend=embedded"});
    ASSERT_TRUE(eventually([&] { return logOf().contains("RegisterHotkey -> hotkeyPauseRecording"); }, 30'000));
    QLineEdit other;
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));
    const auto strike = [&](std::initializer_list<xcb_keysym_t> keys) {
        ASSERT_TRUE(eventually([&] { // The program comes to the front by itself when it starts.
            other.activateWindow();
            QTest::qWait(20);
            return other.isActiveWindow() && other.hasFocus();
        }));
        screenOfThisProcess->strike(keys);
        QTest::qWait(50);
    };
    strike({'a'});
    EXPECT_EQ(other.text(), "a") << "the keyboard is the other window's";
    strike({kControl, kSuper, 's'});
    EXPECT_TRUE(eventually([&] { return !music.entryList({"*.m4a"}).isEmpty(); }));
    strike({kControl, kSuper, 't'});
    EXPECT_TRUE(eventually([&] { return !music.entryList({"*.wav"}).isEmpty(); })) << logOf().toStdString();
    EXPECT_EQ(other.text(), "a") << "a hot key is typed nowhere";
    program.terminate();
    EXPECT_TRUE(program.waitForFinished());
}

TEST_F(ProgramTest, TheWindowOpensWithinASmallLaptopsScreenHoweverLargeItsPixels) {
    const PrivateDisplay laptop("1366x768x24");
    ASSERT_TRUE(laptop.ready());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", laptop.name());
    for (const double scale : {1.0, 1.5, 2.0}) {
        environment.insert("QT_SCALE_FACTOR", QString::number(scale));
        program.setProcessEnvironment(environment);
        QFile::remove(LogFilePath(kApplicationLogName));
        EXPECT_EQ(endBySignal({"--backend=embedded"}, "RegisterHotkey -> "), 0);
        // What is kept of the window begins with a number, two versions and its place with the frame.
        QDataStream kept(ZQUserDefaultGetDataValue("mainWindowGeometry", {}));
        kept.skipRawData(8);
        QRect place;
        kept >> place;
        EXPECT_TRUE(place.isValid() && place.width() <= 1366 / scale && place.height() <= 768 / scale)
            << place.width() << "x" << place.height() << " at " << scale;
        EXPECT_TRUE(ZQUserDefaultSetValue_Object(QByteArray(), "mainWindowGeometry"));
    }
}

// Programs of one session, which find each other.
struct Session : testing::Test {
    Session() { qputenv("CANTOREL_DEBUG", "1"); }
    ~Session() override {
        for (const auto &program : programs)
            if (program->state() != QProcess::NotRunning)
                end(*program);
    }
    QProcess &start(const QStringList &arguments = {QStringLiteral("--backend=embedded")}) {
        auto program = std::make_unique<QProcess>();
        program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program->start(QStringLiteral(CANTOREL_PROGRAM), arguments);
        EXPECT_TRUE(program->waitForStarted());
        return *programs.emplace_back(std::move(program));
    }
    static int end(QProcess &program) {
        program.terminate();
        EXPECT_TRUE(program.waitForFinished());
        return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }
    bool showsWindow() {
        const auto shown = remote.ask(control::kShow, {});
        return shown && shown->ok();
    }
    bool soonShowsWindow() {
        return eventually([&] { return showsWindow(); }, 30'000);
    }

    PrivateBus bus;
    desktop::DBusRemoteControl remote{kBundleIdentifier, "/com/tessolar/Cantorel", "com.tessolar.Cantorel.Recorder"};
    std::vector<std::unique_ptr<QProcess>> programs;
};

TEST_F(Session, AStartWhileTheOneBeforeEndsStays) {
    QProcess *running = &start();
    ASSERT_TRUE(soonShowsWindow());
    for (int round = 0; round < 3; ++round) {
        running->terminate();
        QProcess &next = start();
        EXPECT_TRUE(running->waitForFinished());
        EXPECT_TRUE(soonShowsWindow()) << round;
        EXPECT_EQ(next.state(), QProcess::Running);
        running = &next;
    }
    QProcess &second = start();
    EXPECT_TRUE(second.waitForFinished(30'000)) << "one that stays is shown instead";
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(end(*running), 0);
    EXPECT_FALSE(showsWindow());
}

TEST_F(Session, AWindowWithoutASoundServerStaysAndTakesUpTheOneThatComes) {
    const QTemporaryDir music;
    AppSettings::setAudioType(0);
    AppSettings::setOutputPath(music.path());
    QProcess &window = start({});
    ASSERT_TRUE(soonShowsWindow());
    const auto begins = [&] {
        const auto answer = remote.ask(QString::fromLatin1(control::kStart), {});
        return answer && answer->ok();
    };
    EXPECT_FALSE(begins());
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    EXPECT_TRUE(eventually(begins));
    EXPECT_TRUE(eventually([&] { return !QDir(music.path()).entryList({"*.m4a"}).isEmpty(); }));
    EXPECT_EQ(end(window), 0);
    EXPECT_TRUE(eventually([&] { return world.metadata("default.audio.sink").contains("builtin_output"); }));
}

TEST_F(Session, AStartWaitsForTheRecorderOfOneThatEnds) {
    auto before = std::make_unique<RecordingJournal>(Hardware::stateFolder());
    ASSERT_TRUE(before->claim());
    QProcess &next = start();
    EXPECT_TRUE(eventually([&] { return logOf().contains("event -> main -> main"); }, 30'000));
    EXPECT_FALSE(showsWindow());
    before.reset();
    EXPECT_TRUE(soonShowsWindow());
    EXPECT_EQ(end(next), 0);
}

} // namespace
} // namespace cantorel::test
