#include "capture/ZQAVRecorderKit.h"
#include "lang/Lang.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <cstdlib>
#include <mutex>

namespace cantorel {
namespace {

using test::contents;
using test::packetsOf;
using test::store;

const QString kMicrophone = "Built-in Microphone";

// Writes down what it is told.
class Listener : public QObject, public ZQAVRecorderDelegate {
public:
    void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url) override {
        started.push_back(url.toLocalFile());
    }
    void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url, const media::RecordingCounts &,
                                                const std::optional<foundation::Failure> &failure) override {
        finished.push_back(url.toLocalFile());
        failures.push_back(failure ? Lang::english(failure->sentence) : QString());
    }
    void captureUpdateAudioLevel(ZQAVRecorder &, float value) override { levels.push_back(value); }
    void captureDeviceLost(ZQAVRecorder &) override { ++lost; }
    void captureDeviceBack(ZQAVRecorder &) override { ++back; }

    std::vector<QString> started, finished, failures;
    std::vector<float> levels;
    int lost = 0;
    int back = 0;
};

class ZQAudioRecorderTest : public testing::Test {
protected:
    void SetUp() override {
        for (const media::CaptureDevice &device : media::captureAudioDevices()) {
            if (device.localizedName == kMicrophone)
                mMicrophone = device;
        }
        ASSERT_TRUE(mMicrophone);
        mWorld.backend->setSource(mMicrophone->uniqueID, test::stamp);
        mRecorder = ZQAVRecorderKit::sharedInstance().getAudioRecorder();
        ASSERT_TRUE(mRecorder);
        mRecorder->delegate = &mListener;
        mRecorder->setTap([this](std::span<const float> frames) {
            const std::lock_guard lock(mTapMutex);
            mTapped.insert(mTapped.end(), frames.begin(), frames.end());
        });
    }
    void TearDown() override {
        RecorderRelease(mRecorder);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    template <class Condition> bool eventually(Condition condition) {
        const QDeadlineTimer deadline(20000);
        while (!condition() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return condition();
    }
    // Manual time, in steps small enough for the writing thread to keep up.
    void advance(int milliseconds) {
        for (int done = 0; done < milliseconds; done += 100)
            mWorld.advance(std::min(100, milliseconds - done));
    }
    QString path(const char *name) const { return mFolder.filePath(name); }
    void start(const char *name) { mRecorder->startRecording(QUrl::fromLocalFile(path(name)), nullptr); }
    bool finished(std::size_t count = 1) {
        return eventually([&] { return mListener.finished.size() >= count; });
    }
    void stop() {
        mRecorder->stopRecording();
        ASSERT_TRUE(finished());
    }
    // The stamps of the frames handed to the coder must follow one another.
    void expectUnbroken(std::size_t frames) {
        const std::lock_guard lock(mTapMutex);
        ASSERT_EQ(mTapped.size(), frames * 2);
        for (std::size_t i = 1; i < frames; ++i)
            ASSERT_EQ(test::stampOf(mTapped[2 * i]), test::stampOf(mTapped[2 * i - 2]) + 1) << "at frame " << i;
    }
    std::int64_t frames() const { return mRecorder->recordingCounts().frames; }

    test::EmbeddedWorld mWorld;
    QTemporaryDir mFolder;
    Listener mListener;
    std::optional<media::CaptureDevice> mMicrophone;
    ZQAudioRecorder *mRecorder = nullptr;
    std::mutex mTapMutex;
    std::vector<float> mTapped;
};

TEST_F(ZQAudioRecorderTest, EveryFrameReachesTheCoderOnceAndTheFileIsWhole) {
    store(path("a.m4a"), "an older file");
    mRecorder->setAudioDevice(mMicrophone);
    start("a.m4a");
    EXPECT_TRUE(mRecorder->isRecording());
    advance(2900);
    EXPECT_EQ(mRecorder->recordingDuration(), 2.0) << "whole seconds";
    ASSERT_TRUE(eventually([&] { return !mListener.started.empty(); }));
    const std::int64_t asked = frames();
    mRecorder->stopRecording();
    EXPECT_FALSE(mRecorder->isRecording());
    advance(500); // what comes after the stop completes a block of the coder, no more
    ASSERT_TRUE(finished());
    const std::int64_t captured = frames();
    EXPECT_EQ(captured, (asked + 1023) / 1024 * 1024);
    expectUnbroken(static_cast<std::size_t>(captured));
    EXPECT_EQ(mListener.started, std::vector<QString>{path("a.m4a")});
    EXPECT_EQ(mListener.finished, std::vector<QString>{path("a.m4a")});
    EXPECT_EQ(mListener.failures, std::vector<QString>{QString()});
    EXPECT_EQ(mRecorder->recordingCounts().droppedFrames, 0);
    EXPECT_EQ(mRecorder->recordedFileSize(), QFileInfo(path("a.m4a")).size());
    const auto packets = packetsOf(contents(path("a.m4a")));
    ASSERT_TRUE(packets);
    EXPECT_EQ(packets->size(), static_cast<std::size_t>(captured / 1024 + 1)) << "and one of priming";
}

TEST_F(ZQAudioRecorderTest, StoppedDeviceDoesNotHoldUpTheEnd) {
    mRecorder->setAudioDevice(mMicrophone);
    start("a.m4a");
    mWorld.advance(500);
    while (frames() % 1024 == 0)
        mWorld.advance(5);
    const std::int64_t captured = frames();
    mRecorder->stopRecording(); // and no cycle comes any more
    ASSERT_TRUE(finished());
    EXPECT_EQ(frames(), captured);
    expectUnbroken(static_cast<std::size_t>(captured));
}

TEST_F(ZQAudioRecorderTest, PauseLeavesOutWhatIsHeardMeanwhile) {
    mRecorder->setAudioDevice(mMicrophone);
    mRecorder->resumeRecording();
    mRecorder->pauseRecording();
    EXPECT_FALSE(mRecorder->isPaused()) << "nothing is recorded";
    start("a.m4a");
    mRecorder->resumeRecording();
    advance(1000);
    mRecorder->pauseRecording();
    mRecorder->pauseRecording();
    EXPECT_TRUE(mRecorder->isPaused());
    const std::int64_t first = frames();
    advance(700);
    EXPECT_EQ(frames(), first);
    mRecorder->resumeRecording();
    EXPECT_FALSE(mRecorder->isPaused());
    advance(1000);
    const std::int64_t all = frames();
    EXPECT_GT(all, first);
    stop();
    ASSERT_EQ(mTapped.size(), static_cast<std::size_t>(all) * 2);
    int gaps = 0;
    for (std::size_t i = 2; i < mTapped.size(); i += 2)
        gaps += test::stampOf(mTapped[i]) != test::stampOf(mTapped[i - 2]) + 1;
    EXPECT_EQ(gaps, 1);
}

// A recording that follows another at once begins with the frame behind the other's last.
TEST_F(ZQAudioRecorderTest, TwoFilesOfASplitAreNeighbours) {
    mRecorder->setAudioDevice(mMicrophone);
    start("a.m4a");
    advance(1300);
    const std::int64_t first = frames();
    start("b.m4a");
    advance(900);
    const std::int64_t second = frames();
    mRecorder->stopRecording();
    ASSERT_TRUE(finished(2));
    EXPECT_EQ(mListener.failures, (std::vector<QString>{{}, {}}));
    const std::lock_guard lock(mTapMutex);
    EXPECT_EQ(mTapped.size(), static_cast<std::size_t>(first + second) * 2);
}

TEST_F(ZQAudioRecorderTest, DeviceOfTheSameNameKeepsTheInput) {
    mRecorder->setAudioDevice(mMicrophone);
    media::CaptureDevice namesake = *mMicrophone;
    namesake.uniqueID = "another";
    mRecorder->setAudioDevice(namesake);
    EXPECT_EQ(mRecorder->currentAudioDevice(), mMicrophone);
    mRecorder->setAudioDevice({});
    EXPECT_EQ(mRecorder->currentAudioDevice(), std::nullopt);
    mRecorder->setAudioDevice(media::CaptureDevice{4711, "x", "gone"});
    EXPECT_EQ(mRecorder->currentAudioDevice(), std::nullopt) << "a device that cannot be opened is not added";
}

TEST_F(ZQAudioRecorderTest, LevelIsToldWhetherOrNotAnythingIsRecorded) {
    mRecorder->setIsShowAudioLevel(true);
    advance(100);
    ASSERT_EQ(mListener.levels.size(), 1u);
    EXPECT_TRUE(std::isnan(mListener.levels.back())) << "without channels";
    mRecorder->setAudioDevice(mMicrophone);
    mListener.levels.clear();
    advance(300);
    ASSERT_EQ(mListener.levels.size(), 3u);
    EXPECT_GE(mListener.levels.back(), 20 * std::pow(10, -4) - 1e-6) << "the floor is -80 dB";
    mRecorder->setIsShowAudioLevel(false);
    mListener.levels.clear();
    advance(300);
    EXPECT_TRUE(mListener.levels.empty());
}

TEST_F(ZQAudioRecorderTest, FailuresAreToldOnceByTheDelegate) {
    const struct {
        const char *what;
        const char *file;
        bool device;
    } cases[] = {{"no device", "a.m4a", false}, {"no folder", "missing/a.m4a", true}};
    for (const auto &[what, file, device] : cases) {
        SCOPED_TRACE(what);
        mListener.finished.clear();
        mListener.failures.clear();
        mRecorder->setAudioDevice(device ? mMicrophone : std::nullopt);
        EXPECT_TRUE(mRecorder->startRecording(QUrl::fromLocalFile(path(file)), nullptr));
        ASSERT_TRUE(finished());
        EXPECT_FALSE(mListener.failures.front().isEmpty());
        EXPECT_FALSE(mRecorder->isRecording());
        mRecorder->stopRecording();
        advance(300);
        QCoreApplication::processEvents();
        EXPECT_EQ(mListener.finished.size(), 1u);
    }
}

TEST_F(ZQAudioRecorderTest, FullDiskEndsTheRecordingAndKeepsWhatWasWritten) {
    mRecorder->setAudioDevice(mMicrophone);
    const rlimit limit{60000, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    start("a.m4a");
    ASSERT_TRUE(eventually([&] {
        mWorld.advance(50);
        return !mListener.finished.empty();
    }));
    EXPECT_TRUE(mListener.failures.front().contains("no room left"));
    EXPECT_FALSE(mRecorder->isRecording());
    const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    if (media::isUnfinished(path("a.m4a"))) {
        ASSERT_TRUE(media::repairUnfinished(path("a.m4a"), path("a.m4a")));
    }
    const auto packets = packetsOf(contents(path("a.m4a")));
    ASSERT_TRUE(packets);
    EXPECT_GT(packets->size(), 20u);
}

TEST_F(ZQAudioRecorderTest, DeviceThatVanishesIsToldAndTheRecordingStaysOpen) {
    mRecorder->setAudioDevice(mMicrophone);
    start("a.m4a");
    advance(1000);
    const std::int64_t before = frames();
    mWorld.backend->unplug(mMicrophone->uniqueID);
    ASSERT_TRUE(eventually([&] { return mListener.lost == 1; }));
    EXPECT_TRUE(mRecorder->isRecording());
    stop();
    EXPECT_EQ(mListener.failures, std::vector<QString>{QString()});
    EXPECT_EQ(frames(), before);
    EXPECT_TRUE(packetsOf(contents(path("a.m4a"))));
}

TEST_F(ZQAudioRecorderTest, ARecordingEndsWholeBeforeTheDiskIsFull) {
    mRecorder->setAudioDevice(mMicrophone);
    const auto room = media::freeBytes(path("not/there/yet"));
    ASSERT_TRUE(room);
    mRecorder->setDiskReserve(*room * 2);
    start("a.m4a");
    ASSERT_TRUE(eventually([&] {
        mWorld.advance(50);
        return !mListener.finished.empty();
    }));
    EXPECT_TRUE(mListener.failures.front().contains("nearly full"));
    EXPECT_FALSE(mRecorder->isRecording());
    const auto packets = packetsOf(contents(path("a.m4a")));
    ASSERT_TRUE(packets);
    EXPECT_GT(packets->size(), 1u);
    const double seconds = static_cast<double>(packets->size()) * 1024 / 48000;
    EXPECT_LT(static_cast<double>(QFileInfo(path("a.m4a")).size()),
              2000 + 1.3 * seconds * media::recordingBytesPerSecond(48000))
        << "what is promised about the room left";
}

// What the device did not bring is silence of the same length, wherever a pause or the end of a file lies.
TEST_F(ZQAudioRecorderTest, HolesAreFilledWithSilenceOfTheirTrueLength) {
    // Each sign with the milliseconds that follow it: - away, + back, s stalled, b brings again, p paused, q paused for
    // silence, r resumed, a space for nothing.
    const struct {
        const char *what, *events; // in all four seconds
        double filled;             // seconds
        double length;
    } cases[] = {{"away for two seconds", "-2000+2000", 2, 6},
                 {"there without bringing anything for two seconds", "s1100 900b2000", 2, 6},
                 {"away twice", "-1000+1000-1000+1000", 2, 6},
                 {"away when it ends", " 2000-2000", 0, 4},
                 {"paused while away", "-500p1500+1000r1000", 0, 3},
                 {"resumed while away", "-0p2000r1000+1000", 1, 4},
                 {"away while paused for silence", "q0-2000+500r1500", 0, 4}};
    const auto happens = [this](char sign) {
        switch (sign) {
        case '-':
            return mWorld.unplugMicrophone();
        case '+':
            return mWorld.plugMicrophone(test::stamp);
        case 's':
        case 'b':
            return mWorld.backend->stall(mMicrophone->uniqueID, sign == 's');
        case 'p':
            return mRecorder->pauseRecording();
        case 'q':
            return mRecorder->pauseRecording(media::AudioFileOutput::Pause::ForSilence);
        case 'r':
            return mRecorder->resumeRecording();
        default:
            return;
        }
    };
    for (const auto &[what, events, filled, length] : cases) {
        SCOPED_TRACE(what);
        mListener.finished.clear();
        mTapped.clear();
        mRecorder->setAudioDevice(mMicrophone);
        start("a.m4a");
        advance(2000);
        for (const char *event = events; *event;) {
            const char sign = *event++;
            const int lost = mListener.lost;
            happens(sign);
            if (sign == 'b')
                mWorld.system->deliverChanges();
            char *next = nullptr;
            advance(static_cast<int>(std::strtol(event, &next, 10)));
            event = next;
            if (sign == 's') {
                mWorld.system->deliverChanges();
                EXPECT_EQ(mListener.lost, lost + 1) << "within a second";
            }
        }
        stop();
        const std::lock_guard lock(mTapMutex);
        std::size_t silent = 0;
        for (std::size_t i = 0; i < mTapped.size(); i += 2)
            silent += mTapped[i] == 0;
        EXPECT_NEAR(static_cast<double>(silent) / 48000, filled, 0.011);
        EXPECT_EQ(static_cast<std::int64_t>(silent), mRecorder->recordingCounts().filledFrames);
        EXPECT_NEAR(static_cast<double>(mTapped.size()) / 96000, length, 0.025);
        EXPECT_EQ(static_cast<std::int64_t>(mTapped.size() / 2), frames());
        EXPECT_EQ(mRecorder->recordingCounts().droppedFrames, 0);
        if (filled > 0) {
            EXPECT_NEAR(mRecorder->recordingCounts().secondsAway, 1.5, 0.55);
        }
        mRecorder->setAudioDevice({});
        mWorld.unplugMicrophone();
        mWorld.plugMicrophone(test::stamp);
    }
}

// However often it goes, however short it is away, and however its cycles and our blocks meet: nothing adds up.
TEST_F(ZQAudioRecorderTest, ADeviceThatComesAndGoesLeavesARecordingOfItsTrueLength) {
    for (const std::uint32_t cycleFrames : {160u, 470u, 512u, 1000u}) {
        SCOPED_TRACE(cycleFrames);
        const auto replug = [&](int away) {
            mWorld.backend->unplug(mMicrophone->uniqueID);
            mWorld.system->deliverChanges();
            mWorld.advance(away);
            auto device = hal::EmbeddedBackend::plainDevice(mMicrophone->uniqueID, kMicrophone, 2, 0);
            device.record.cycleFrames = cycleFrames;
            mWorld.backend->plug(device);
            mWorld.system->deliverChanges();
        };
        replug(0);
        mListener.finished.clear();
        mTapped.clear();
        mRecorder->setAudioDevice(mMicrophone);
        start("a.m4a");
        int length = 0; // ms
        for (int i = 0; i < 40; ++i) {
            const int there = 97 + i % 11, away = 2 + i % 8 * 3;
            advance(there);
            replug(away);
            length += there + away;
        }
        mRecorder->stopRecording();
        ASSERT_TRUE(finished());
        EXPECT_NEAR(static_cast<double>(mTapped.size()) / 96, length, 50);
        mRecorder->setAudioDevice({});
    }
}

// The level of all is the mean over their channels, to which a silent source counts; each one's own is not.
TEST_F(ZQAudioRecorderTest, ASilentSourceTakesNothingFromTheLevelOfTheOther) {
    const QString system = "Tessolar_AudioDevice";
    ASSERT_NE(test::EmbeddedWorld::makeAggregate({mMicrophone->uniqueID, system}), 0u);
    for (const media::CaptureDevice &device : media::captureAudioDevices())
        if (device.localizedName == "Both")
            mRecorder->setAudioDevice(device);
    mRecorder->setIsShowAudioLevel(true);
    for (const auto &[microphone, played] : {std::pair{0.0f, 1.0f}, std::pair{1.0f, 0.0f}}) {
        mWorld.backend->setSource(mMicrophone->uniqueID, test::constant(microphone));
        const auto program = mWorld.backend->play(test::constant(played), system);
        advance(500);
        const std::vector<float> levels = mRecorder->sourceLevels();
        ASSERT_EQ(levels.size(), 2u);
        const float floor = 20 * std::pow(10.0f, -4);
        EXPECT_NEAR(levels[0], std::max(20 * microphone, floor), 0.01) << "the microphone's";
        EXPECT_NEAR(levels[1], std::max(20 * played, floor), 0.01) << "the system's";
        EXPECT_LT(mListener.levels.back(), 10);
    }
}

// One of two sources that goes leaves the other in the file: its own place is silent until it is back, and counted.
TEST_F(ZQAudioRecorderTest, ASourceThatIsAwayEndsNotTheOther) {
    const QString system = "Tessolar_AudioDevice";
    ASSERT_NE(test::EmbeddedWorld::makeAggregate({mMicrophone->uniqueID, system}), 0u);
    mWorld.backend->setSource(mMicrophone->uniqueID, test::constant(0.25f));
    const auto program = mWorld.backend->play(test::constant(0.5f), system);
    for (const media::CaptureDevice &device : media::captureAudioDevices()) {
        if (device.localizedName == "Both")
            mRecorder->setAudioDevice(device);
    }
    start("a.m4a");
    advance(1000);
    mWorld.unplugMicrophone();
    EXPECT_EQ(mListener.lost, 1);
    advance(2000);
    mWorld.plugMicrophone(test::constant(0.25f));
    EXPECT_NEAR(mRecorder->recordingCounts().secondsAway, 2, 0.1);
    advance(1000);
    stop();
    EXPECT_EQ(mListener.failures, std::vector<QString>{QString()});
    const std::lock_guard lock(mTapMutex);
    EXPECT_NEAR(static_cast<double>(mTapped.size()) / 96000, 4, 0.025);
    const auto alone = std::count(mTapped.begin(), mTapped.end(), 0.5f) / 2;
    EXPECT_NEAR(static_cast<double>(alone) / 48000, 2, 0.025);
    EXPECT_EQ(std::count(mTapped.begin(), mTapped.end(), 0.75f) / 2 + alone, mTapped.size() / 2);
    EXPECT_NEAR(static_cast<double>(mRecorder->recordingCounts().filledFrames), static_cast<double>(alone), 1024);
}

// Nothing is recorded at a wrong pitch: the file ends with the last frame of the old rate, and the next recording has
// the new one.
TEST_F(ZQAudioRecorderTest, AnotherSampleRateOrOtherChannelsEndTheRecordingWithASentence) {
    const auto replug = [this](double rate, int channels) {
        mWorld.backend->unplug(mMicrophone->uniqueID);
        mWorld.system->deliverChanges();
        advance(300);
        mWorld.plugMicrophone(test::stamp, channels, rate);
    };
    const struct {
        const char *what;
        std::function<void()> change;
        double rate;
    } cases[] = {
        {"while it runs",
         [&] {
             ASSERT_TRUE(mWorld.backend->setSampleRate(mMicrophone->uniqueID, 44100));
             mWorld.system->deliverChanges();
         },
         44100},
        {"when it comes back", [&] { replug(96000, 2); }, 96000},
        {"to one channel", [&] { replug(96000, 1); }, 96000},
    };
    for (const auto &[what, change, rate] : cases) {
        SCOPED_TRACE(what);
        mListener.finished.clear();
        mListener.failures.clear();
        mTapped.clear();
        mRecorder->setAudioDevice(mMicrophone);
        start("a.m4a");
        advance(1000);
        const std::int64_t before = frames();
        change();
        advance(600);
        ASSERT_TRUE(finished());
        EXPECT_FALSE(mListener.failures.front().isEmpty());
        EXPECT_TRUE(mListener.failures.front().contains(kMicrophone));
        EXPECT_FALSE(mRecorder->isRecording());
        EXPECT_EQ(frames(), before);
        expectUnbroken(static_cast<std::size_t>(before));
        EXPECT_TRUE(packetsOf(contents(path("a.m4a"))));
        // The next one is right.
        mListener.finished.clear();
        mTapped.clear();
        start("b.m4a");
        advance(1000);
        EXPECT_NEAR(static_cast<double>(frames()), rate, 0.03 * rate);
        stop();
        EXPECT_EQ(mListener.failures.back(), QString());
        mRecorder->setAudioDevice({});
    }
}

// A server makes a device piece by piece: what is not yet right when it comes back is no reason to end.
TEST_F(ZQAudioRecorderTest, ADeviceThatIsRightAgainSoonIsRecordedOnWithItsHole) {
    const auto replug = [this](double rate) {
        mWorld.backend->unplug(mMicrophone->uniqueID);
        mWorld.system->deliverChanges();
        hal::SoftwareDevice device = hal::EmbeddedBackend::plainDevice(mMicrophone->uniqueID, kMicrophone, 2, 0);
        device.record.sampleRate = rate;
        if (rate != 48000)
            device.record.cycleFrames = 1 << 20; // it brings nothing yet
        mWorld.backend->plug(device);
        mWorld.backend->setSource(mMicrophone->uniqueID, test::stamp);
        mWorld.system->deliverChanges();
    };
    mRecorder->setAudioDevice(mMicrophone);
    start("a.m4a");
    advance(1000);
    mWorld.unplugMicrophone();
    advance(500);
    replug(44100);
    advance(200);
    replug(48000);
    advance(1500);
    EXPECT_TRUE(mRecorder->isRecording());
    stop();
    EXPECT_EQ(mListener.failures, std::vector<QString>{QString()});
    EXPECT_NEAR(static_cast<double>(frames()), 3.2 * 48000, 1500);
    EXPECT_EQ(mTapped.size(), static_cast<std::size_t>(frames()) * 2);
}

// The coder is not asked while the clock runs away: more than the queue holds is lost, and counted to the frame.
TEST_F(ZQAudioRecorderTest, OverrunIsCounted) {
    mRecorder->setAudioDevice(mMicrophone);
    start("a.m4a");
    mWorld.advance(60000);
    const std::int64_t accepted = frames();
    const std::int64_t dropped = mRecorder->recordingCounts().droppedFrames;
    EXPECT_GT(dropped, 0);
    EXPECT_NEAR(static_cast<double>(accepted + dropped), 60 * 48000, 2 * 512);
    stop();
    EXPECT_EQ(mTapped.size(), static_cast<std::size_t>(accepted) * 2);
}

TEST_F(ZQAudioRecorderTest, ReleasedRecorderIsFollowedByAFreshOne) {
    mRecorder->setAudioDevice(mMicrophone);
    RecorderRelease(mRecorder);
    auto *fresh = ZQAVRecorderKit::sharedInstance().getAudioRecorder();
    EXPECT_NE(fresh, mRecorder);
    EXPECT_EQ(fresh->currentAudioDevice(), std::nullopt);
    RecorderRelease(mRecorder);
    EXPECT_EQ(ZQAVRecorderKit::sharedInstance().getAudioRecorder(), fresh) << "only the current one is given up";
    mRecorder = fresh;
}

} // namespace
} // namespace cantorel
