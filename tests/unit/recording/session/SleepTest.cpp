#include "lang/Lang.h"
#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/media/RecordingRepair.h"
#include "recording/session/RecordingSession.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <QDir>

namespace cantorel {
namespace {

// A machine that falls asleep beneath a recording.
class SleepTest : public test::RecordingFixture, public test::SessionLog {
public:
    void SetUp() override {
        AppSettings::setAudioFormat(4);
        AppSettings::setAudioType(1);
        AppSettings::setAutoSkipSilence(false);
        ASSERT_TRUE(commons.journal.claim());
        list.initRecordedList();
    }
    void start() {
        ASSERT_TRUE(session.startRecording().ok());
        ASSERT_TRUE(records(1));
    }
    bool records(int files) {
        return stepUntil([&] { return started.size() == files; });
    }
    void willSleep(bool shutsDown = false) { desktop::InstalledServices::current().sleep->willSleep(shutsDown); }
    void wakes() { desktop::InstalledServices::current().sleep->didWake(); }
    QStringList held() const { return calls->calls().filter("machine"); }
    bool isHeld() const { return !held().isEmpty() && held().constLast() == "hold machine"; }

    std::shared_ptr<desktop::CallRecord> calls = std::make_shared<desktop::CallRecord>();
    desktop::InstalledServices services{desktop::recordedServices(calls)};
    RecordedList list{QDir::homePath() + "/state", *world.clock};
    RecorderCommons commons = commonsIn("state");
    RecordingSession session{*this, list, commons};
};

} // namespace

TEST_F(SleepTest, TheMachineWaitsWhileThereIsAFileToFinishAndForNothingElse) {
    EXPECT_FALSE(isHeld());
    start();
    EXPECT_TRUE(isHeld());
    world.advance(1'000);
    session.splitRecording();
    ASSERT_TRUE(records(2));
    EXPECT_EQ(held().size(), 1); // between two files, too
    session.stopRecording();
    ASSERT_TRUE(stepUntil([&] { return session.isSettled(); }));
    EXPECT_FALSE(isHeld());
    willSleep();
    wakes();
    world.advance(2'000);
    EXPECT_EQ(started.size(), 2);
}

TEST_F(SleepTest, ARecordingIsFinishedBeforeTheSleepAndGoesOnAfterIt) {
    start();
    world.advance(2'000);
    willSleep();
    EXPECT_TRUE(isHeld()); // until the file is whole
    ASSERT_TRUE(stepUntil([&] { return !isHeld(); }));
    EXPECT_FALSE(media::isUnfinished(started[0]));
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    EXPECT_EQ(settled, 0); // Nobody leaves: it is not over.
    wakes();
    ASSERT_TRUE(records(2));
    EXPECT_TRUE(session.isRecording());
    EXPECT_TRUE(isHeld());
    session.stopRecording();
    ASSERT_TRUE(stepUntil([&] { return settled == 1; }));
    EXPECT_EQ(finished.size(), 2u);
    EXPECT_TRUE(failed.isEmpty()) << failed.join(' ').toStdString();
}

TEST_F(SleepTest, StoppedInTheSleepNothingGoesOn) {
    start();
    world.advance(1'000);
    willSleep(true);
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    session.stopRecording(); // as a signal does when the machine shuts down
    EXPECT_TRUE(session.isSettled());
    EXPECT_EQ(settled, 1);
    wakes();
    world.advance(3'000);
    EXPECT_EQ(started.size(), 1);
}

TEST_F(SleepTest, WhatIsPausedSleepsAsItIsAndIsFinishedOnlyForAShutdown) {
    start();
    world.advance(1'000);
    session.pauseRecording();
    willSleep();
    EXPECT_FALSE(isHeld());
    wakes();
    EXPECT_TRUE(session.isPaused());
    EXPECT_TRUE(isHeld());
    session.resumeRecording();
    world.advance(1'000);
    session.pauseRecording();
    willSleep(true);
    ASSERT_TRUE(stepUntil([&] { return !isHeld(); }));
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    EXPECT_GE(finished[0].seconds, 1.5);
}

TEST_F(SleepTest, BeforeTheFirstFramesAndWithinASplitItGoesOnAfterwards) {
    ASSERT_TRUE(session.startRecording().ok());
    willSleep();
    ASSERT_TRUE(stepUntil([&] { return !isHeld(); }));
    wakes();
    ASSERT_TRUE(records(1));
    world.advance(1'000);
    session.splitRecording();
    willSleep();
    ASSERT_TRUE(stepUntil([&] { return !isHeld(); }));
    EXPECT_EQ(started.size(), 1);
    wakes();
    ASSERT_TRUE(records(2));
    EXPECT_TRUE(failed.isEmpty()) << failed.join(' ').toStdString();
}

} // namespace cantorel
