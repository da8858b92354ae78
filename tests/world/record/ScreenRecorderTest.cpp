// A real X server and a real sound server, recorded to a movie that ffmpeg decodes.

#include "app/start/DesktopPictures.h"
#include "capture/ZQAVRecorderKit.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/FlashAndClick.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/Movie.h"
#include "tests/support/MovieLog.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateDisplay.h"
#include "tests/support/PrivateWorld.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <tuple>

namespace cantorel {
namespace {

using test::eventually;
using test::FlashAndClick;
using test::Painter;

struct ScreenRecorderTest : testing::Test {
    void SetUp() override {
        ASSERT_TRUE(display.ready());
        qputenv("DISPLAY", display.name().toLocal8Bit());
        recorder = ZQScreenRecorder::init();
        recorder->delegate = &listener;
        recorder->setShowsCursor(false);
    }
    void hear() {
        world = std::make_unique<test::PrivateWorld>();
        ASSERT_TRUE(world->ready());
        auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
        ASSERT_TRUE(backend);
        system = std::make_unique<hal::HardwareSystem>(std::move(backend).value(), QDir::homePath());
        const auto heard = media::captureDeviceWithUniqueID(QLatin1String(hal::kOutputMonitorUid));
        ASSERT_TRUE(heard);
        recorder->setCaptureAudioDevices({*heard});
    }
    void start() {
        ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file)));
        ASSERT_TRUE(eventually([&] { return listener.started == 1; }));
    }
    void stop() {
        recorder->stopRecording();
        ASSERT_TRUE(eventually([&] { return listener.ended == 1; }));
    }
    static void pass(double seconds) {
        const QDeadlineTimer passed(static_cast<qint64>(seconds * 1000));
        (void)eventually([&] { return passed.hasExpired(); }, static_cast<int>(seconds * 1000) + 1000);
    }

    const test::PrivateDisplay display{"640x480x24"};
    std::unique_ptr<test::PrivateWorld> world;
    std::unique_ptr<hal::HardwareSystem> system;
    const media::InstalledPictureSources pictures{desktopPictures()};
    test::MovieLog listener;
    std::unique_ptr<ZQScreenRecorder> recorder;
    const QString file = QDir::homePath() + "/movie.mp4";
};

} // namespace

TEST_F(ScreenRecorderTest, FlashAndClickStayTogetherAcrossAPauseThatLeavesNoGap) {
    hear();
    FlashAndClick both(display, {0, 0, 640, 480});
    start();
    const auto begin = std::chrono::steady_clock::now();
    pass(0.3);
    both.strike();
    both.strike();
    recorder->pauseRecording();
    EXPECT_TRUE(recorder->isPaused());
    const auto paused = std::chrono::steady_clock::now();
    both.strike(); // not in the movie
    pass(1.5);
    const auto resumed = std::chrono::steady_clock::now();
    recorder->resumeRecording();
    pass(0.3 + qEnvironmentVariableIntValue("CANTOREL_SECONDS_APART")); // more by hand: 300 s
    both.strike();
    both.strike();
    const auto end = std::chrono::steady_clock::now();
    stop();
    EXPECT_FALSE(listener.failure) << listener.failure->detail.toStdString();
    EXPECT_EQ(listener.files, 1);
    EXPECT_EQ(listener.counts.droppedPictures, 0);

    const auto flashes = test::flashesOf(test::picturesOf(file));
    const auto clicks = test::clicksOf(file);
    ASSERT_EQ(flashes.size(), 4u);
    ASSERT_EQ(clicks.size(), 4u);
    for (std::size_t i = 0; i < flashes.size(); ++i)
        EXPECT_NEAR(flashes[i], clicks[i], 1.0 / 30) << "strike " << i;
    const double wall = std::chrono::duration<double>((end - begin) - (resumed - paused)).count();
    EXPECT_NEAR(listener.counts.seconds(), wall, 0.2);
    for (const char *stream : {"v", "a"})
        EXPECT_NEAR(test::factOf(file, stream, "stream=duration").toDouble(), listener.counts.seconds(), 0.05)
            << stream;
    EXPECT_EQ(test::factOf(file, "a", "stream=codec_name,sample_rate,channels"), "aac,48000,2");
    EXPECT_EQ(test::factOf(file, "v", "stream=codec_name,width,height"), "h264,640,480");
}

// The upper right quarter is light, and what is recorded is an odd part that reaches into it.
TEST_F(ScreenRecorderTest, APartOfTheScreenIsRecordedInItsEvenSizeWithoutSound) {
    Painter painter(display);
    painter.paint(0, {0, 0, 640, 480});
    painter.paint(0xFFFFFF, {320, 0, 320, 240});
    recorder->setRecordRect({300, 100, 201, 121});
    start();
    pass(1.3); // nothing moves
    stop();
    EXPECT_FALSE(listener.failure);
    EXPECT_EQ(recorder->movieSize(), (media::PictureSize{200, 120}));
    EXPECT_EQ(test::factOf(file, "v", "stream=width,height"), "200,120");
    EXPECT_EQ(test::factOf(file, "a", "stream=codec_name"), "");
    EXPECT_EQ(recorder->coder(), "libx264");
    for (const auto &[part, grey] : {std::pair("16:120:0:0", 0), std::pair("160:120:30:0", 255)})
        for (const test::ShownPicture &picture : test::picturesOf(file, part))
            EXPECT_NEAR(picture.grey, grey, 3) << part;
    const auto shown = test::picturesOf(file);
    EXPECT_LE(shown.size(), 3u) << "what stands still is not read, but repeated once a second";
    EXPECT_GE(shown.size(), 2u);
    EXPECT_NEAR(test::factOf(file, "v", "stream=duration").toDouble(), 1.3, 0.25);
}

// What is shown as often as it changes, but no more often than was asked for.
TEST_F(ScreenRecorderTest, PicturesComeAtThePaceThatWasAskedForAndThePointerIsInThem) {
    Painter painter(display);
    painter.paint(0, {0, 0, 640, 480});
    recorder->setShowsCursor(true);
    recorder->setMaximumScreenInputFramerate(20);
    start();
    const QDeadlineTimer passed(2000);
    for (std::int16_t x = 0; !passed.hasExpired(); x = static_cast<std::int16_t>((x + 1) % 100)) {
        painter.paint(0xFFFFFF, {x, 400, 20, 20});
        xcb_warp_pointer(display.connection(), XCB_NONE, display.root(), 0, 0, 0, 0,
                         static_cast<std::int16_t>(300 + x / 2), 200);
        display.sync();
        (void)eventually([] { return false; }, 4);
        painter.paint(0, {x, 400, 20, 20});
    }
    stop();
    const auto shown = test::picturesOf(file, "120:60:290:180");
    EXPECT_NEAR(static_cast<double>(shown.size()), 2 * 20, 8);
    const auto pointers = std::count_if(shown.begin(), shown.end(), [](const auto &one) { return one.grey > 0; });
    EXPECT_GT(pointers, 20) << "the server's own pointer is white";
}

TEST_F(ScreenRecorderTest, WhatCannotBeRecordedIsRefusedInASentence) {
    const QRect outside(600, 400, 200, 200), tiny(10, 10, 8, 8);
    for (const auto &[region, id, key] :
         {std::tuple(outside, 0u, "RegionOutside"), {tiny, 0u, "MovieSize"}, {QRect(), 4711u, "DisplayMissing"}}) {
        recorder->setScreenDisplayId(id);
        recorder->setRecordRect(region);
        EXPECT_FALSE(recorder->startRecording(QUrl::fromLocalFile(file)));
        EXPECT_EQ(recorder->failure()->sentence.key(), key);
    }
    qputenv("DISPLAY", ":4711");
    recorder->setScreenDisplayId(0);
    EXPECT_FALSE(recorder->startRecording(QUrl::fromLocalFile(file)));
    EXPECT_EQ(recorder->failure()->sentence.key(), "NoDisplay");
    EXPECT_TRUE(QDir::home().entryList({"*movie*"}, QDir::Files | QDir::Hidden).isEmpty());
}

TEST_F(ScreenRecorderTest, AServerThatGoesEndsTheMovieAndWhatWasSeenIsKept) {
    start();
    pass(1.2);
    const_cast<test::PrivateDisplay &>(display).kill();
    ASSERT_TRUE(eventually([&] { return listener.ended == 1; }));
    ASSERT_TRUE(listener.failure);
    EXPECT_EQ(listener.failure->sentence.key(), "DisplayGone");
    EXPECT_FALSE(recorder->isRecording());
    EXPECT_GE(test::picturesOf(file).size(), 2u);
}

// By the modes of the server: a size that is neither the movie's nor of its shape.
TEST_F(ScreenRecorderTest, ADisplayThatChangesItsSizeIsFittedIntoTheMovie) {
    const Painter painter(display);
    const auto change = [&](const QStringList &options) {
        ASSERT_EQ(QProcess::execute("xrandr", QStringList{"-d", display.name()} + options), 0);
        painter.paint(0xFFFFFF, {0, 0, 640, 480});
        pass(1.2);
    };
    painter.paint(0xFFFFFF, {0, 0, 640, 480});
    start();
    change({"--newmode", "flat", "10", "320", "330", "340", "350", "120", "130", "140", "150"});
    change({"--addmode", "screen", "flat"});
    change({"--output", "screen", "--mode", "flat"});
    change({"--output", "screen", "--mode", "640x480"});
    EXPECT_TRUE(recorder->isRecording());
    stop();
    EXPECT_FALSE(listener.failure);
    EXPECT_EQ(test::factOf(file, "v", "stream=width,height"), "640,480");
    // The server clears what it resizes, so that all is black for a moment.
    const auto top = test::picturesOf(file, "640:60:0:0"), middle = test::picturesOf(file, "640:60:0:210");
    QByteArray shown;
    for (std::size_t i = 0; i < top.size(); ++i)
        if (const char kind = middle[i].grey < 240 ? '?'
                              : top[i].grey < 16   ? 'f'
                                                   : 'w';
            kind != '?' && !shown.endsWith(kind))
            shown += kind;
    EXPECT_EQ(shown, "wfw") << "white, flat with black above it, and white again";
}

// An old file stays until the new one is whole; the new one is nothing until then.
TEST_F(ScreenRecorderTest, AnotherFileOfTheNameIsReplacedAtTheEndOnly) {
    test::store(file, "old");
    QString hidden;
    recorder->willWrite = [&](const QString &written) { hidden = written; };
    start();
    pass(0.3);
    EXPECT_EQ(test::contents(file), "old");
    EXPECT_TRUE(media::isUnfinished(hidden));
    EXPECT_GT(recorder->recordedFileSize(), 0);
    stop();
    EXPECT_FALSE(QFileInfo::exists(hidden));
    EXPECT_GE(test::picturesOf(file).size(), 1u);
}

} // namespace cantorel
