#include "lang/Lang.h"
#include "recording/session/RecordManager.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <mutex>

// What lies between two files of one recording: nothing.
namespace cantorel {
namespace {

using Pause = RecordManager::Pause;

class SplitTest : public test::RecordingFixture {
public:
    SplitTest() { manager.delegate = &owner; }
    ~SplitTest() override { manager.clear(); }

    bool start(int source) {
        AppSettings::setAudioType(source);
        auto *recorder = ZQAVRecorderKit::sharedInstance().getAudioRecorder();
        files.emplace_back();
        recorder->setTap([this, file = files.size() - 1](std::span<const float> frames) {
            const std::lock_guard lock(mMutex);
            for (std::size_t i = 0; i < frames.size(); i += 2)
                files[file].push_back(test::stampOf(frames[i]));
        });
        return manager.startRecord(QUrl::fromLocalFile(path(qPrintable(QString::number(files.size())))));
    }
    bool begins() {
        const int before = owner.started;
        return stepUntil([&] { return owner.started > before; });
    }
    // The order of a session: stop, devices back, finished file, recorder released, next start.
    bool stop(bool joined) {
        const int before = owner.finished;
        if (joined)
            manager.joinNextRecording();
        manager.stopRecord();
        EXPECT_EQ(output(), "Built-in Output") << "as seen from outside";
        // Little time shall pass until a thread that has no time has closed the file: what is kept is kept for 10 s.
        int steps = 0;
        const bool ended = test::eventually([&] {
            if (steps++ < 20)
                world.advance(50);
            return owner.finished > before;
        });
        manager.clear();
        return ended && owner.sentence.isEmpty();
    }
    // Frames that are missing (positive) or doubled (negative) between one file and the next.
    std::int64_t gapBefore(std::size_t file) {
        const std::lock_guard lock(mMutex);
        return files[file].front() - files[file - 1].back() - 1;
    }
    void expectUnbroken(std::size_t file) {
        const std::lock_guard lock(mMutex);
        ASSERT_FALSE(files[file].empty());
        for (std::size_t i = 1; i < files[file].size(); ++i)
            ASSERT_EQ(files[file][i], files[file][i - 1] + 1) << "file " << file << " frame " << i;
    }

    test::ManagerLog owner;
    RecordManager manager;
    std::vector<std::vector<std::int64_t>> files;
    std::mutex mMutex;
};

} // namespace

TEST_F(SplitTest, FiftySplitsOfSystemSoundLoseAndDoubleNothingAndAreHeardWithoutAGap) {
    std::vector<float> heard;
    world.backend->setTap("builtin_output", [&](std::span<const float> samples, int, std::int64_t) {
        for (std::size_t i = 0; i < samples.size(); i += 2)
            heard.push_back(samples[i]);
    });
    files.reserve(60);
    ASSERT_TRUE(start(0));
    ASSERT_TRUE(begins());
    world.advance(200);
    const std::size_t routed = heard.size();
    for (int split = 0; split < 50; ++split) {
        world.advance(180 + split);
        ASSERT_TRUE(stop(true));
        world.advance(split); // between one recorder and the next
        ASSERT_TRUE(start(0));
        EXPECT_EQ(AppSettings::getAudioOutputDeviceNameBeforeRecording(), "Built-in Output");
        EXPECT_EQ(output(), "Tessolar_AudioDevice");
        ASSERT_TRUE(begins());
    }
    const std::size_t end = heard.size();
    ASSERT_TRUE(stop(false));
    EXPECT_EQ(chosenOutput(), std::nullopt) << "as without a split";
    for (std::size_t file = 0; file < files.size(); ++file) {
        expectUnbroken(file);
        if (file > 0) {
            EXPECT_EQ(gapBefore(file), 0) << file;
        }
        const auto packets = test::packetsOf(test::contents(path(qPrintable(QString::number(file + 1)))));
        ASSERT_TRUE(packets) << file;
        EXPECT_EQ(packets->size(), (files[file].size() + 1023) / 1024 + 1) << file;
    }
    for (std::size_t i = routed + 1; i < end; ++i)
        ASSERT_EQ(test::stampOf(heard[i]), test::stampOf(heard[i - 1]) + 1) << "heard at " << i;
}

TEST_F(SplitTest, TheMicrophoneAndBothTogetherAreSplitAlike) {
    files.reserve(60);
    for (const int source : {1, 2}) {
        if (source == 2) {
            ASSERT_FALSE(ZQAudioKextKit::createAggregateDevice().isEmpty());
        }
        files.clear();
        ASSERT_TRUE(start(source));
        ASSERT_TRUE(begins());
        world.advance(300);
        ASSERT_TRUE(stop(true));
        ASSERT_TRUE(start(source));
        ASSERT_TRUE(begins());
        world.advance(300);
        ASSERT_TRUE(stop(false));
        // Two stamps that are mixed grow by two.
        const std::lock_guard lock(mMutex);
        EXPECT_EQ(files[1].front() - files[0].back(), source == 2 ? 2 : 1);
    }
}

TEST_F(SplitTest, WhatIsKeptIsGivenUpWhenNoRecordingFollows) {
    const struct {
        const char *what;
        std::function<void(SplitTest &)> end;
    } cases[] = {{"time passes", [](SplitTest &test) { test.world.advance(11000); }},
                 {"a second stop", [](SplitTest &test) { test.manager.stopRecord(); }},
                 {"a source without a device",
                  [](SplitTest &test) {
                      (void)test.start(7);
                      (void)test.stepUntil([&] { return test.owner.finished == 2; });
                      test.owner.sentence.clear();
                  }},
                 {"another device", [](SplitTest &test) {
                      (void)test.start(1);
                      (void)test.begins();
                      (void)test.stop(false);
                  }}};
    files.reserve(60);
    for (const auto &[what, end] : cases) {
        SCOPED_TRACE(what);
        owner.finished = 0;
        ASSERT_TRUE(start(0));
        ASSERT_TRUE(begins());
        ASSERT_TRUE(stop(true));
        EXPECT_EQ(chosenOutput(), "Tessolar_AudioDevice") << "still routed, under the surface";
        end(*this);
        EXPECT_EQ(chosenOutput(), std::nullopt);
        EXPECT_EQ(output(), "Built-in Output");
        manager.clear();
    }
}

TEST_F(SplitTest, ThePersonsChoiceDuringASplitStands) {
    world.backend->plug(hal::EmbeddedBackend::plainDevice("headset", "Headset", 0, 2));
    files.reserve(60);
    ASSERT_TRUE(start(0));
    ASSERT_TRUE(begins());
    ASSERT_TRUE(stop(true));
    world.backend->setConfiguredDefault(hal::Direction::Output, QStringLiteral("headset"), std::nullopt);
    world.system->deliverChanges();
    EXPECT_EQ(output(), "Headset");
    ASSERT_TRUE(start(0));
    ASSERT_TRUE(begins());
    manager.stopRecord();
    EXPECT_EQ(output(), "Headset");
    ASSERT_TRUE(stepUntil([&] { return owner.finished == 2; }));
    EXPECT_EQ(gapBefore(1), 0);
}

// --- Silence ---

TEST_F(SplitTest, TheFramesBeforeASoundThatEndsASilenceAreInTheFileOnce) {
    const struct {
        const char *what;
        int silence; // ms
        std::int64_t skipped;
    } cases[] = {{"long", 3000, 48000 * 3 - 43200}, {"hardly as long as what is kept", 880, 0}, {"short", 300, 0}};
    files.reserve(60);
    for (const auto &[what, silence, skipped] : cases) {
        SCOPED_TRACE(what);
        files.clear();
        owner.finished = 0;
        ASSERT_TRUE(start(1));
        ASSERT_TRUE(begins());
        world.advance(1000);
        manager.pauseRecording(Pause::ForSilence);
        EXPECT_TRUE(manager.isPaused());
        const std::int64_t before = ZQAVRecorderKit::sharedInstance().getAudioRecorder()->recordingCounts().frames;
        world.advance(silence);
        const std::int64_t during = ZQAVRecorderKit::sharedInstance().getAudioRecorder()->recordingCounts().frames;
        EXPECT_EQ(during, before) << "the length stands still";
        manager.resumeRecording();
        world.advance(500);
        const std::int64_t all = ZQAVRecorderKit::sharedInstance().getAudioRecorder()->recordingCounts().frames;
        ASSERT_TRUE(stop(false));
        const std::lock_guard lock(mMutex);
        std::int64_t left = 0;
        for (std::size_t i = 1; i < files[0].size(); ++i) {
            const std::int64_t step = files[0][i] - files[0][i - 1] - 1;
            ASSERT_GE(step, 0) << "doubled at " << i;
            left += step;
        }
        EXPECT_NEAR(static_cast<double>(left), static_cast<double>(skipped), skipped ? 512 : 0);
        EXPECT_EQ(static_cast<std::size_t>((all + 1023) / 1024 * 1024), files[0].size()) << "every frame is counted";
    }
}

TEST_F(SplitTest, APauseByThePersonKeepsNothing) {
    const struct {
        const char *what;
        bool silenceFirst;
    } cases[] = {{"while it is paused for silence", true}, {"alone, and silence changes nothing", false}};
    files.reserve(60);
    for (const auto &[what, silenceFirst] : cases) {
        SCOPED_TRACE(what);
        files.clear();
        ASSERT_TRUE(start(1));
        ASSERT_TRUE(begins());
        world.advance(1000);
        manager.pauseRecording(silenceFirst ? Pause::ForSilence : Pause::ByPerson);
        world.advance(1000);
        manager.pauseRecording(silenceFirst ? Pause::ByPerson : Pause::ForSilence);
        world.advance(1000);
        manager.resumeRecording();
        EXPECT_FALSE(manager.isPaused());
        world.advance(500);
        ASSERT_TRUE(stop(false));
        const std::lock_guard lock(mMutex);
        std::vector<std::int64_t> gaps;
        for (std::size_t i = 1; i < files[0].size(); ++i) {
            if (files[0][i] != files[0][i - 1] + 1)
                gaps.push_back(files[0][i] - files[0][i - 1] - 1);
        }
        ASSERT_EQ(gaps.size(), 1u);
        EXPECT_NEAR(static_cast<double>(gaps.front()), 96000, 512);
    }
}

// The next file begins a moment before the stop, so that a sound that had just begun is in it, and never earlier;
// behind a hole, if one lies in that moment.
TEST_F(SplitTest, ASplitDuringSilenceKeepsTheMomentThatNoticingTakes) {
    const QString uid = QStringLiteral("builtin_microphone");
    files.reserve(60);
    for (const bool hole : {false, true}) {
        files.clear();
        owner.finished = 0;
        ASSERT_TRUE(start(1));
        ASSERT_TRUE(begins());
        world.advance(1000);
        manager.pauseRecording(Pause::ForSilence);
        world.advance(hole ? 2600 : 3000);
        if (hole) {
            world.backend->unplug(uid);
            world.system->deliverChanges();
            world.advance(200);
            world.backend->plug(hal::EmbeddedBackend::plainDevice(uid, QStringLiteral("Built-in Microphone"), 2, 0));
            world.backend->setSource(uid, test::stamp); // from 0 again
            world.system->deliverChanges();
            world.advance(200);
        }
        ASSERT_TRUE(stop(true));
        ASSERT_TRUE(start(1));
        ASSERT_TRUE(begins());
        EXPECT_FALSE(manager.isPaused());
        world.advance(300);
        ASSERT_TRUE(stop(false));
        expectUnbroken(0);
        expectUnbroken(1);
        if (hole)
            EXPECT_EQ(files[1].front(), 0) << "the first frame behind it";
        else
            EXPECT_NEAR(static_cast<double>(gapBefore(1)), 48000 * 2.6, 512);
    }
}

} // namespace cantorel
