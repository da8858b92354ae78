#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/session/RecordingSession.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <QDir>

#include <atomic>
#include <mutex>

namespace cantorel {
namespace {

class Tasks : public QObject, public RecordingSessionTasks {
public:
    void taskWasStoppedByHand() override { told += 'h'; }
    void taskRecordingDidEnd() override { told += 'e'; }
    QByteArray told;
};

class RecordingRulesTest : public test::RecordingFixture {
public:
    RecordingRulesTest() {
        AppSettings::setAudioFormat(4);
        AppSettings::setAutoSkipSilence(false);
        list.initRecordedList();
        silencePlayer();
        mNoise = world.backend->play([this](std::span<float> samples, int, std::int64_t) {
            std::fill(samples.begin(), samples.end(), loud ? 0.3f : 0.0f);
        });
    }

    void start(const std::optional<ExecutedTask> &task = {}) {
        ASSERT_TRUE(session.startRecording(task));
        const auto before = view.started.size();
        // Little time shall pass until a thread that has no time has told its first frames.
        ASSERT_TRUE(test::eventually([&] {
            world.advance(1);
            return view.started.size() > before;
        }));
    }
    // Lets time pass in small steps, as an event loop would; it stands still while a file's thread is to finish it or
    // to tell its first frames.
    void pass(double seconds) {
        for (int step = 0; step < static_cast<int>(seconds * 20 + 0.5); ++step) {
            world.advance(50);
            (void)test::eventually([] { return false; }, 8); // The threads keep pace with five times the time.
            if (step > 2) {
                EXPECT_TRUE(test::eventually([&] {
                    if (session.isRecording() && session.currentFile().path.isEmpty())
                        world.advance(1);
                    return session.isRecording() ? !session.currentFile().path.isEmpty() : session.isSettled();
                }));
            }
        }
    }
    void stop() {
        session.stopRecording();
        ASSERT_TRUE(settles());
    }
    bool settles() {
        return stepUntil([&] { return session.isSettled(); });
    }
    QStringList names() const {
        QStringList names;
        for (const auto &item : list.items())
            names.append(QFileInfo(item->getFileName()).fileName());
        return names;
    }
    double totalSeconds() const {
        double seconds = 0;
        for (const FinishedRecording &recording : view.finished)
            seconds += recording.seconds;
        return seconds;
    }

    std::atomic<bool> loud = true;
    test::SessionLog view;
    RecordedList list{QDir::homePath() + "/state", *world.clock};
    RecorderCommons commons = commonsIn("state");
    RecordingSession session{view, list, commons};

private:
    std::shared_ptr<void> mNoise;
};

} // namespace

TEST_F(RecordingRulesTest, APeriodSplitsAtItsWholeSecondAndLosesNoFrame) {
    AppSettings::setIsAutoSplitEverySeconds(true);
    AppSettings::setAutoSplitEverySeconds(3);
    const auto began = world.clock->now();
    start();
    pass(2.9);
    EXPECT_EQ(view.started.size(), 1);
    pass(8);
    const double passed = static_cast<double>((world.clock->now() - began).count()) / 1e9;
    stop();
    EXPECT_TRUE(view.failed.isEmpty()) << view.failed.join(' ').toStdString();
    ASSERT_EQ(view.finished.size(), 4u);
    for (std::size_t i = 0; i + 1 < view.finished.size(); ++i)
        EXPECT_NEAR(view.finished[i].seconds, 3.0, 0.55) << i; // It is looked at twice a second.
    // A block of the coder at the end is all that may be more.
    EXPECT_NEAR(totalSeconds(), passed, 0.15);
    EXPECT_EQ(names(), (QStringList{"Track1.wav", "Track2.wav", "Track3.wav", "Track4.wav"}));
    EXPECT_EQ(output(), "Built-in Output");
    EXPECT_EQ(chosenOutput(), std::nullopt);
    EXPECT_EQ(view.settled, 1);
}

TEST_F(RecordingRulesTest, AStopBetweenTwoFilesOfASplitEndsItAll) {
    start();
    pass(1);
    session.splitRecording();
    stop();
    pass(1);
    EXPECT_EQ(view.finished.size(), 1u);
    EXPECT_EQ(view.started.size(), 1);
    EXPECT_EQ(output(), "Built-in Output");
}

// The next file could not begin: whatever wants to split waits for the device as the recording does.
TEST_F(RecordingRulesTest, WhileTheDeviceIsAwayNothingIsSplit) {
    AppSettings::setAudioType(1);
    for (const bool byHand : {false, true}) {
        SCOPED_TRACE(byHand);
        view = {};
        AppSettings::setIsAutoSplitEverySeconds(!byHand);
        AppSettings::setAutoSplitEverySeconds(60);
        const auto began = world.clock->now();
        start();
        pass(2.8);
        world.unplugMicrophone();
        AppSettings::setAutoSplitEverySeconds(2); // due at once
        if (byHand)
            session.splitRecording();
        pass(3);
        EXPECT_TRUE(session.isRecording());
        EXPECT_EQ(view.started.size(), 1);
        EXPECT_EQ(view.devices, "l");
        EXPECT_EQ(view.lostDevice, "Built-in Microphone");
        world.plugMicrophone();
        pass(1.5);
        EXPECT_EQ(view.devices, "lb");
        EXPECT_EQ(view.started.size(), 2) << "made up for";
        const double passed = static_cast<double>((world.clock->now() - began).count()) / 1e9;
        stop();
        EXPECT_TRUE(view.failed.isEmpty()) << view.failed.join(' ').toStdString();
        ASSERT_EQ(view.finished.size(), 2u);
        EXPECT_NEAR(totalSeconds(), passed, 0.2) << "and what is missing is silence";
        EXPECT_EQ(view.lostFrames, 0) << "which is told as an absence, and not as lost frames";
    }
}

TEST_F(RecordingRulesTest, WhatGoesWrongIsSaidInTheLanguageInForce) {
    AppSettings::setAudioType(1);
    RecorderPanel panel;
    RecorderCommons others = commonsIn("watched");
    RecordingSession watched(panel, list, others);
    world.unplugMicrophone();
    const auto refused = watched.startRecording();
    ASSERT_FALSE(refused);
    panel.setSentence(refused.failure().sentence);
    EXPECT_EQ(panel.sentence(), Lang::english(refused.failure().sentence));
    Lang::ChangeLanguage("German");
    EXPECT_EQ(panel.sentence(), Lang::text("sentenceNoMicrophone")) << "live";
    panel.recordingFailed({refused.failure().sentence, "/music/a.m4a"});
    EXPECT_EQ(panel.sentence(), Lang::text("sentenceNoMicrophone") + " (/music/a.m4a)");
}

// The clock runs away from the coder: more than the queue holds is lost, and told where it happens.
TEST_F(RecordingRulesTest, LostFramesAreToldWithTheLevelsAndInAll) {
    AppSettings::setAudioType(1);
    RecorderPanel panel;
    const auto marks = [&] {
        std::size_t marks = 0;
        for (std::size_t i = 0; i < panel.history().size(); ++i)
            marks += panel.history().column(i).mark == SoundHistory::Mark::LostFrames;
        return marks;
    };
    std::mutex coder;
    std::atomic<bool> holdsOne = false;
    ZQAVRecorderKit::sharedInstance().getAudioRecorder()->setTap([&](std::span<const float>) {
        holdsOne = true;
        const std::lock_guard lock(coder);
        holdsOne = false;
    });
    RecorderCommons others = commonsIn("watched");
    RecordingSession watched(panel, list, others);
    ASSERT_TRUE(watched.startRecording());
    ASSERT_TRUE(stepUntil([&] { return panel.display().seconds >= 2; }));
    EXPECT_EQ(marks(), 0u);
    EXPECT_EQ(panel.display().lostFrames, 0);
    {
        const std::lock_guard stands(coder);
        ASSERT_TRUE(stepUntil([&] { return holdsOne.load(); })) << "and takes nothing more from the queue";
        world.advance(40'000);
    }
    EXPECT_GT(marks(), 0u);
    EXPECT_EQ(panel.history().column(panel.history().size() - 1).mark, SoundHistory::Mark::LostFrames);
    const qint64 shown = panel.display().lostFrames;
    EXPECT_GT(shown, 48000);
    EXPECT_GE(static_cast<qint64>(marks() + 2) * 4800, shown) << "everywhere where it was";
    EXPECT_LT(marks() + 60, panel.history().size()) << "and not before";
    EXPECT_TRUE(panel.sentence().contains("frames")) << panel.sentence().toStdString();
    std::optional<FinishedRecording> finished;
    QObject::connect(&panel, &RecorderPanel::finished, &panel,
                     [&](const FinishedRecording &recording) { finished = recording; });
    watched.stopRecording();
    EXPECT_EQ(panel.display().seconds, 0) << "at once, not once the file is whole";
    ASSERT_TRUE(stepUntil([&] { return watched.isSettled(); }));
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->lostFrames, finished->droppedFrames);
    EXPECT_GE(finished->lostFrames, shown);
    EXPECT_TRUE(panel.sentence().contains(QString::number(finished->lostFrames)));
    ASSERT_TRUE(watched.startRecording());
    EXPECT_EQ(panel.sentence(), QString());
    ASSERT_TRUE(stepUntil([&] { return panel.display().seconds >= 1; }));
    EXPECT_EQ(panel.display().lostFrames, 0) << "each file has its own";
    watched.stopRecording();
    ASSERT_TRUE(stepUntil([&] { return watched.isSettled(); }));
}

TEST_F(RecordingRulesTest, ADeviceThatGoesBetweenTwoFilesIsWaitedFor) {
    AppSettings::setAudioType(1);
    for (const bool comesBack : {true, false}) {
        SCOPED_TRACE(comesBack);
        view = {};
        start();
        pass(1);
        session.splitRecording();
        world.unplugMicrophone();
        ASSERT_TRUE(stepUntil([&] { return view.devices == "l"; }));
        world.advance(3000);
        EXPECT_TRUE(session.isRecording() && !session.isSettled());
        EXPECT_TRUE(view.controls.startShowsStop);
        EXPECT_TRUE(view.failed.isEmpty());
        world.plugMicrophone();
        if (comesBack) {
            ASSERT_TRUE(stepUntil([&] { return view.started.size() == 2; }));
            EXPECT_EQ(view.devices, "lb");
            pass(1);
        }
        stop();
        world.advance(3000);
        EXPECT_FALSE(session.isRecording()) << "who has stopped it does not wait";
        EXPECT_TRUE(view.failed.isEmpty());
        EXPECT_EQ(view.finished.size(), comesBack ? 2u : 1u);
    }
}

// The counter adds up all silence: 1 s, then sound, then 2 s.
TEST_F(RecordingRulesTest, SilenceSplitsAfterSoMuchInAllNotInOne) {
    AppSettings::setAutoSkipSilence(true);
    AppSettings::setAutoSplitAudioFile(true);
    AppSettings::setAutoSplitSeconds(3000);
    start();
    pass(2);
    loud = false;
    pass(1);
    loud = true;
    pass(2);
    loud = false;
    pass(1.5);
    EXPECT_EQ(view.finished.size() + static_cast<std::size_t>(session.pendingConversions()), 0u) << "2.5 s of 3";
    pass(1.5);
    loud = true;
    pass(1);
    EXPECT_EQ(view.started.size(), 2);
    stop();
    EXPECT_EQ(view.finished.size(), 2u);
}

TEST_F(RecordingRulesTest, SilenceIsSkippedAndWhatComesBeforeASoundIsKept) {
    AppSettings::setAutoSkipSilence(true);
    std::mutex mutex;
    std::vector<float> heard;
    ZQAVRecorderKit::sharedInstance().getAudioRecorder()->setTap([&](std::span<const float> samples) {
        const std::lock_guard lock(mutex);
        for (std::size_t i = 0; i < samples.size(); i += 2)
            heard.push_back(samples[i]);
    });
    start();
    pass(2);
    loud = false;
    pass(4); // No more than the queue holds, for time flies here.
    EXPECT_EQ(view.pauses, "s");
    EXPECT_TRUE(session.ispausedBySilence());
    loud = true;
    pass(2);
    EXPECT_EQ(view.pauses, "sr");
    stop();
    EXPECT_NEAR(totalSeconds(), 5, 0.8) << "of 8 s, 4 of them loud";
    // The silence right before the sound that ended the pause is in the file, the first loud frame follows it.
    const auto isLoud = [](float sample) { return sample != 0; };
    const auto last = std::find_if(heard.rbegin(), heard.rend(), isLoud);
    const auto first = std::find_if_not(last, heard.rend(), isLoud);
    EXPECT_NEAR(static_cast<double>(first - last) / 48000, 2, 0.06) << "not one loud frame is missing";
    const auto silence = std::find_if(first, heard.rend(), isLoud);
    EXPECT_GE(static_cast<double>(silence - first) / 48000, 0.5) << "and the half second before them";
}

TEST_F(RecordingRulesTest, PauseWhilePausedBySilenceIsThePersons) {
    AppSettings::setAutoSkipSilence(true);
    start();
    pass(1);
    loud = false;
    pass(2);
    ASSERT_TRUE(session.ispausedBySilence());
    session.onPauseRecording();
    EXPECT_TRUE(session.isPaused());
    EXPECT_FALSE(session.ispausedBySilence());
    EXPECT_TRUE(view.controls.pauseShowsResume);
    loud = true;
    pass(2);
    EXPECT_TRUE(session.isPaused()) << "sound alone does not resume it";
    session.onPauseRecording();
    EXPECT_FALSE(session.isPaused());
    EXPECT_EQ(view.pauses, "spr");
    stop();
}

// Neither silence nor the split button makes a file that nobody has resumed.
TEST_F(RecordingRulesTest, WhatThePersonHasPausedIsSplitOnceItIsResumed) {
    AppSettings::setAutoSkipSilence(true);
    AppSettings::setAutoSplitAudioFile(true);
    AppSettings::setAutoSplitSeconds(1000);
    start();
    pass(2);
    session.pauseRecording();
    loud = false;
    pass(3);
    session.splitRecording();
    loud = true;
    pass(1);
    EXPECT_TRUE(session.isPausedByUser() && session.isPaused());
    EXPECT_EQ(view.started.size(), 1);
    session.resumeRecording();
    pass(1.5);
    EXPECT_EQ(view.started.size(), 2) << "the button is made up for";
    stop();
    EXPECT_NEAR(totalSeconds(), 3.5, 0.4);
}

// A press of the control ends what is shown to go on, and begins after what is ending, be it empty.
TEST_F(RecordingRulesTest, APressWhileAFileClosesIsNotLost) {
    start();
    pass(1);
    session.splitRecording();
    EXPECT_FALSE(session.isRecording());
    EXPECT_TRUE(session.isBusy());
    ASSERT_TRUE(session.onStartRecording());
    ASSERT_TRUE(settles());
    EXPECT_EQ(view.started.size(), 1) << "between two files it is a stop";
    ASSERT_TRUE(session.startRecording());
    session.stopRecording(); // before the first frames
    EXPECT_FALSE(session.isBusy());
    ASSERT_TRUE(session.onStartRecording());
    EXPECT_TRUE(session.isBusy());
    ASSERT_TRUE(stepUntil([&] { return view.started.size() == 2; })) << view.failed.join(' ').toStdString();
    stop();
}

TEST_F(RecordingRulesTest, TheWordOfSilenceEndsWithTheFirstSoundAndWithTheRecording) {
    RecorderPanel panel;
    RecorderCommons others = commonsIn("watched");
    RecordingSession watched(panel, list, others);
    for (const bool isHeard : {true, false}) {
        loud = false;
        ASSERT_TRUE(watched.startRecording());
        ASSERT_TRUE(stepUntil([&] { return !panel.sentence().isEmpty(); }));
        EXPECT_TRUE(panel.sentence().contains("Built-in Output")) << "as the window calls it";
        loud = isHeard;
        if (isHeard) {
            EXPECT_TRUE(stepUntil([&] { return panel.sentence().isEmpty(); }));
        }
        watched.stopRecording();
        EXPECT_EQ(panel.sentence(), QString());
        ASSERT_TRUE(stepUntil([&] { return watched.isSettled(); }));
    }
}

TEST_F(RecordingRulesTest, WhatIsTooShortIsFilteredWithItsItem) {
    const struct {
        bool on;
        int shortest;
        double seconds;
        bool kept;
    } cases[] = {{true, 3, 1, false}, {true, 1, 1.5, true}, {true, 0, 0.5, true}, {false, 60, 0.5, true}};
    qsizetype kept = 0, filtered = 0;
    for (const auto &[on, shortest, seconds, isKept] : cases) {
        SCOPED_TRACE(shortest);
        AppSettings::setAutoFilterAudioFile(on);
        AppSettings::setAutoFilterSeconds(shortest);
        start();
        pass(seconds);
        stop();
        (isKept ? kept : filtered) += 1;
        EXPECT_EQ(static_cast<qsizetype>(view.finished.size()), kept);
        EXPECT_EQ(view.filtered.size(), filtered);
        EXPECT_EQ(static_cast<qsizetype>(list.items().size()), kept);
    }
    EXPECT_FALSE(QFile::exists(view.filtered.first()));
    EXPECT_EQ(AppSettings::recordNameBaseOn(), 5) << "each had a number";
}

TEST_F(RecordingRulesTest, ATaskIsNamedCountedAndEndedAtItsLengthOverItsFiles) {
    Tasks tasks;
    session.tasks = &tasks;
    AppSettings::setIsAutoSplitEverySeconds(true);
    AppSettings::setAutoSplitEverySeconds(2);
    const ExecutedTask news{"../News", true, 2, 5};
    start(news);
    pass(9);
    ASSERT_TRUE(settles());
    EXPECT_EQ(tasks.told, "e") << "once, for all its files";
    EXPECT_GE(totalSeconds(), 5);
    EXPECT_LE(totalSeconds(), 6.6) << "whole seconds of the last file, looked at twice a second";
    EXPECT_EQ(names(), (QStringList{"..News(2).wav", "..News(2)(1).wav", "..News(2)(2).wav"}).mid(0, names().size()))
        << "each is free for the recording and for what becomes of it";
    EXPECT_GE(names().size(), 2);
    // By hand.
    start(news);
    ASSERT_TRUE(session.onStartRecording());
    ASSERT_TRUE(settles());
    EXPECT_EQ(tasks.told, "ehe");
}

} // namespace cantorel
