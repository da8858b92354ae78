#include "capture/ZQAVRecorderKit.h"
#include "platform/media/movie/software/SoftwareScreen.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/Movie.h"
#include "tests/support/MovieLog.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <csignal>
#include <span>

namespace cantorel {
namespace {

using test::eventually;

// A display and a microphone in software, on a clock that the test moves.
struct ZQScreenRecorderTest : testing::Test {
    ZQScreenRecorderTest() { recorder->delegate = &listener; }
    void hear() {
        recorder->setCaptureAudioDevices({*media::captureDeviceWithUniqueID(QStringLiteral("builtin_microphone"))});
    }
    void start() { ASSERT_TRUE(recorder->startRecording(QUrl::fromLocalFile(file))); }
    // Lets time pass that is recorded, and waits for the recorder to keep up: what stands still is repeated once a
    // second, and silence stands in after half a one.
    void pass(int milliseconds) {
        for (; milliseconds > 0; milliseconds -= 100) {
            world.advance(100);
            recorded += 0.1;
            (void)eventually([&] { return recorder->recordingCounts().seconds() > recorded - late; });
        }
    }
    void stop() {
        recorder->stopRecording();
        for (int i = 0; i < 20 && listener.ended == 0; ++i) {
            world.advance(50); // what was heard last is on its way yet
            (void)eventually([&] { return listener.ended > 0; }, 100);
        }
        ASSERT_EQ(listener.ended, 1);
    }

    double recorded = 0; // seconds
    double late = 1.2;   // as it may be told at most
    test::EmbeddedWorld world;
    media::SoftwareScreen *const screen = new media::SoftwareScreen(*world.clock, {64, 48}); // the sources' below
    const media::InstalledPictureSources pictures{std::unique_ptr<media::PictureSources>(screen)};
    test::MovieLog listener;
    std::unique_ptr<ZQScreenRecorder> recorder = ZQScreenRecorder::init();
    const QString file = QDir::homePath() + "/movie.mp4";
};

} // namespace

TEST_F(ZQScreenRecorderTest, APauseLeavesNoGapWithOrWithoutSound) {
    for (const bool isHeard : {false, true}) {
        SCOPED_TRACE(isHeard);
        listener.started = listener.ended = 0;
        recorded = 0;
        late = isHeard ? 0.3 : 1.2;
        screen->show(0);
        if (isHeard)
            hear();
        start();
        ASSERT_TRUE(eventually([&] {
            world.advance(10);
            return listener.started == 1;
        }));
        const double begun = recorder->recordingCounts().seconds();
        pass(2500);
        recorder->pauseRecording();
        recorder->pauseRecording(); // once
        EXPECT_TRUE(recorder->isPaused());
        screen->show(100);
        world.advance(7000); // less than the queue holds, should nobody read it meanwhile
        screen->show(200);   // what stands there when it goes on is in it
        recorder->resumeRecording();
        pass(500);
        screen->show(255);
        pass(500);
        stop();
        EXPECT_NEAR(listener.counts.seconds(), 3.5 + begun, 0.5); // the thread is seen a little late
        const auto shown = test::picturesOf(file);
        EXPECT_NEAR(shown.back().time, 3.5 + begun, 1.5);
        for (std::size_t i = 1; i < shown.size(); ++i)
            EXPECT_LT(shown[i].time - shown[i - 1].time, 2.4) << "what stands still is repeated";
        EXPECT_TRUE(std::none_of(shown.begin(), shown.end(), [](const auto &one) {
            return one.grey > 50 && one.grey < 150;
        })) << "what was seen in the pause is not in the movie";
        const auto light = std::find_if(shown.begin(), shown.end(), [](const auto &one) { return one.grey >= 150; });
        ASSERT_NE(light, shown.end());
        EXPECT_NEAR(light->time, 2.5 + begun, 0.5) << "what stands there when it goes on is seen at once";
        EXPECT_TRUE(std::all_of(light, shown.end(), [](const auto &one) { return one.grey >= 150; }))
            << "and nothing that was seen before it";
        EXPECT_GT(shown.back().grey, 230) << "nor that again after what came later";
        EXPECT_NEAR(test::factOf(file, "v", "stream=duration").toDouble(), listener.counts.seconds(), 0.02);
    }
}

TEST_F(ZQScreenRecorderTest, APauseBeforeAnythingWasWrittenAddsNothing) {
    hear();
    start();
    recorder->pauseRecording();
    world.advance(3000);
    recorder->resumeRecording();
    ASSERT_TRUE(eventually([&] {
        world.advance(10);
        return listener.started == 1;
    }));
    const double begun = recorder->recordingCounts().seconds();
    late = 0.3;
    pass(1000);
    stop();
    EXPECT_NEAR(listener.counts.seconds(), 1 + begun, 0.5);
    EXPECT_LT(begun, 0.5);
}

TEST_F(ZQScreenRecorderTest, SoundThatNeverComesIsSilenceAndTheEndIsTold) {
    hear();
    start();
    world.unplugMicrophone();
    ASSERT_TRUE(eventually([&] {
        world.advance(50);
        return listener.started == 1;
    }));
    pass(2000);
    stop();
    EXPECT_FALSE(listener.failure);
    EXPECT_EQ(listener.files, 1);
    EXPECT_EQ(test::factOf(file, "a", "stream=codec_name"), "aac");
    EXPECT_GT(test::factOf(file, "a", "stream=duration").toDouble(), 1.5);
}

TEST_F(ZQScreenRecorderTest, SoundOfMoreChannelsOrHigherRatesThanAacHasIsHeardAsItWas) {
    const struct {
        int channels;
        double rate;
        const char *coded;
    } cases[] = {{4, 48000, "aac,48000,4"}, {3, 48000, "aac,48000,2"}, {2, 192000, "aac,48000,2"}};
    for (const auto &[channels, rate, coded] : cases) {
        SCOPED_TRACE(coded);
        world.unplugMicrophone();
        world.plugMicrophone(
            [rate = rate](std::span<float> samples, int count, std::int64_t position) { // 1000 Hz
                for (std::size_t i = 0; i < samples.size(); ++i)
                    samples[i] = static_cast<float>(
                        0.5 * std::sin(2000 * std::acos(-1) * (position + std::int64_t(i) / count) / rate));
            },
            channels, rate);
        listener.started = listener.ended = 0;
        recorded = 0;
        late = 0.3;
        hear();
        start();
        ASSERT_TRUE(eventually([&] {
            world.advance(10);
            return listener.started == 1;
        }));
        pass(1500);
        stop();
        EXPECT_EQ(test::factOf(file, "a", "stream=codec_name,sample_rate,channels"), coded);
        const std::vector<float> heard = test::soundOf(file);
        ASSERT_GT(heard.size(), 48000u);
        int turns = 0; // within one second
        for (std::size_t i = 12000; i + 1 < 60000 && i + 1 < heard.size(); ++i)
            turns += heard[i] < 0 && heard[i + 1] >= 0 ? 1 : 0;
        EXPECT_NEAR(turns, 1000, 10);
    }
}

TEST_F(ZQScreenRecorderTest, WhereNothingWasWrittenThereIsNoFileAndTheEndIsToldToo) {
    start();
    screen->end({QStringLiteral("gone"), {}});
    recorder->stopRecording();
    ASSERT_TRUE(eventually([&] { return listener.ended == 1; }));
    // The first picture had come, or not.
    EXPECT_EQ(QFileInfo::exists(file), listener.files == 1);
    EXPECT_TRUE(QDir::home().entryList({".movie*"}, QDir::Files | QDir::Hidden).isEmpty());
    EXPECT_FALSE(recorder->isRecording());
}

TEST_F(ZQScreenRecorderTest, ADisplayOfAnotherSizeIsFittedIntoTheMovie) {
    start();
    screen->show(255);
    ASSERT_TRUE(eventually([&] { return listener.started == 1; }));
    world.advance(500);
    screen->resize({128, 48});
    screen->show(255);
    world.advance(500);
    stop();
    EXPECT_EQ(test::factOf(file, "v", "stream=width,height"), "64,48");
    const auto middle = test::picturesOf(file, "64:16:0:16"), top = test::picturesOf(file, "64:8:0:0");
    EXPECT_GT(middle.back().grey, 240);
    EXPECT_LT(top.back().grey, 20) << "black above it";
    EXPECT_GT(top[1].grey, 240) << "but not before";
}

TEST_F(ZQScreenRecorderTest, WhenWritingFailsItStopsSaysWhyAndKeepsWhatWasWritten) {
    std::signal(SIGXFSZ, SIG_IGN);
    hear();
    for (const rlim_t most : {100, 2000, 6000}) {
        SCOPED_TRACE(most);
        const bool wasThere = most > 100;
        if (wasThere)
            test::store(file, "old");
        listener.ended = listener.files = 0;
        const rlimit limit{most, RLIM_INFINITY};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        start();
        for (int i = 0; i < 400 && listener.ended == 0; ++i) {
            screen->show(static_cast<std::uint8_t>(i * 37));
            world.advance(100);
            (void)eventually([&] { return listener.ended > 0; }, 20);
        }
        const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &none), 0);
        ASSERT_EQ(listener.ended, 1);
        EXPECT_EQ(listener.failure->sentence.key(), "NoRoomLeft");
        EXPECT_FALSE(recorder->isRecording());
        if (most < 6000) { // not even the first fragment has room
            EXPECT_EQ(QFileInfo::exists(file), wasThere);
            EXPECT_EQ(test::contents(file), wasThere ? "old" : "");
            EXPECT_EQ(listener.files, 0);
        } else {
            EXPECT_EQ(listener.files, 1);
            EXPECT_GE(test::picturesOf(file).size(), 2u);
        }
        EXPECT_TRUE(QDir::home().entryList({".movie*"}, QDir::Files | QDir::Hidden).isEmpty());
    }
}

TEST_F(ZQScreenRecorderTest, AReleasedOneIsMadeAnew) {
    ZQScreenRecorder *const first = ZQAVRecorderKit::sharedInstance().getScreenRecorder();
    EXPECT_EQ(ZQAVRecorderKit::sharedInstance().getScreenRecorder(), first);
    first->setScreenDisplayId(7);
    RecorderRelease(first);
    EXPECT_EQ(ZQAVRecorderKit::sharedInstance().getScreenRecorder()->screenDisplayId(), 0u);
}

} // namespace cantorel
