#include "recording/schedule/ScheduleTaskRunner.h"

#include "lang/Lang.h"
#include "platform/desktop/recorded/RecordedServices.h"
#include "platform/hal/embedded/DeviceClock.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>
#include <time.h>

namespace cantorel {
namespace {

using namespace std::chrono_literals;

QString stamp(const QDateTime &moment) { return moment.toLocalTime().toString("MM-dd HH:mm"); }

// A recorder and a face that note what happens, on a clock whose hands can be moved.
class ScheduleTaskRunnerTest : public testing::Test, public ScheduledRecorder, public ScheduleTaskView {
protected:
    ScheduleTaskRunnerTest() {
        qputenv("TZ", "Europe/Berlin");
        ::tzset();
        services = std::make_unique<desktop::InstalledServices>(desktop::recordedServices(calls));
    }

    bool isBusy() const override { return recording; }
    foundation::Result<void> startTaskRecording(const ScheduleTaskInfo &task) override {
        if (!startFailure.isEmpty()) {
            recording = failureLeavesRecordingShown;
            return foundation::Failure{startFailure, startFailure};
        }
        recording = true;
        ends = now().addSecs(task._duration);
        const QString count =
            task._repeatLoopedCount > 0 ? QStringLiteral("(%1)").arg(task._repeatLoopedCount) : QString();
        events << QStringLiteral("%1 start %2%3 %4")
                      .arg(stamp(now().addMSecs(999)), task._taskName, count)
                      .arg(AppSettings::getAudioType());
        return {};
    }
    void stopRecording() override {
        recording = false;
        events << "stop";
    }
    bool isSettled() const override { return !recording && settled; }

    void taskCountdown(const TaskCountdown &shown) override { countdown = shown; }
    void taskEnded(const ScheduleTaskInfo &task) override { events << QStringLiteral("end %1").arg(task._taskName); }
    void taskMissed(const ScheduleTaskInfo &task, const QDateTime &start, const foundation::Sentence &why) override {
        const QString sentence = Lang::english(why);
        EXPECT_TRUE(sentence.endsWith('.'));
        const char *reason = sentence.contains("slept")         ? "slept"
                             : sentence.contains("not running") ? "not running"
                             : sentence.contains("another")     ? "another"
                                                                : "failed";
        events << QStringLiteral("%1 missed %2: %3").arg(stamp(start), task._taskName, reason).trimmed();
    }
    void shutdownCountdown(int secondsLeft) override { shutdownShown << secondsLeft; }
    void dayDidChange() override { ++days; }

    QDateTime now() const {
        return startOfTime.addMSecs(std::chrono::duration_cast<std::chrono::milliseconds>(clock.now()).count()
                                    + handsMoved);
    }
    void begin(const char *moment) {
        startOfTime = QDateTime::fromString(moment, "yyyy-MM-dd HH:mm:ss").toUTC();
        runner.initScheduleTaskList();
    }
    // A second passes; a recording that has its length ends.
    void second() {
        clock.advance(1s);
        if (recording && ends.isValid() && now() >= ends)
            endRecording();
    }
    void endRecording() {
        recording = false;
        ends = {};
        runner.taskRecordingDidEnd();
    }
    void pass(qint64 seconds) {
        for (; seconds > 0; --seconds)
            second();
    }
    std::shared_ptr<ScheduleTaskInfo> add(const char *name, const char *from, qint64 seconds, QList<int> weeks = {}) {
        const QDateTime start = QDateTime::fromString(from, "yyyy-MM-dd HH:mm:ss");
        ScheduleTaskInfo task(name, start, start.addSecs(seconds), 1, false);
        task._daily = !weeks.isEmpty();
        task.WeeksOn_ = std::move(weeks);
        return tasks.add(task).value();
    }
    std::shared_ptr<ScheduleTaskInfo> repeated(int count, const char *from, qint64 seconds, QList<int> weeks = {}) {
        const auto task = add("a", from, seconds, std::move(weeks));
        task->_repeatEnabled = true;
        task->_repeatTotalCount = count;
        return task;
    }
    std::string told() { return std::exchange(events, {}).join("; ").toStdString(); }
    static QStringList storedNames() {
        TaskList stored;
        QStringList names;
        for (const auto &task : stored.tasks())
            names << task->_taskName;
        return names;
    }

    std::shared_ptr<desktop::CallRecord> calls = std::make_shared<desktop::CallRecord>();
    std::unique_ptr<desktop::InstalledServices> services;
    hal::ManualClock clock;
    QDateTime startOfTime;
    qint64 handsMoved = 0; // milliseconds
    QStringList events;
    QList<int> shutdownShown;
    int days = 0; // that were told
    TaskCountdown countdown;
    QString startFailure;
    bool failureLeavesRecordingShown = false;
    bool recording = false, settled = true;
    QDateTime ends;
    TaskList tasks;
    ScheduleTaskRunner runner{tasks, *this, *this, clock, [this] { return now(); }};
};

TEST_F(ScheduleTaskRunnerTest, ATaskThatIsChangedIsNeitherLostNorStartedTwice) {
    begin("2026-03-02 10:00:00");
    const QList<int> everyDay{0, 1, 2, 3, 4, 5, 6};
    const auto task = add("a", "2026-03-02 10:00:10", 5, everyDay);
    ScheduleTaskInfo longer(*task);
    longer._duration = 7;
    longer.dealtWithStart = longer.awaitedStart = {}; // as somebody writes it
    pass(12);
    EXPECT_FALSE(tasks.change(task, longer)) << "it is recorded now";
    pass(10);
    EXPECT_EQ(told(), "03-02 10:00 start a 1; end a");
    const auto changed = tasks.change(task, longer);
    ASSERT_TRUE(changed);
    handsMoved = -20'000;
    pass(30);
    EXPECT_EQ(told(), "") << "the clock was set back before a start that is dealt with";
    ScheduleTaskInfo moved(longer);
    moved._fromTime = now().addSecs(20);
    const auto again = tasks.change(changed.value(), moved);
    ASSERT_TRUE(again);
    pass(40);
    EXPECT_EQ(told(), "03-02 10:00 start a 1; end a");
    ASSERT_TRUE(tasks.remove(again.value()));
    ASSERT_TRUE(tasks.change(again.value(), moved)) << "removed elsewhere meanwhile";
    EXPECT_EQ(storedNames(), QStringList{"a"});
}

TEST_F(ScheduleTaskRunnerTest, AOneTimeTaskRunsOnceAndLeavesTheStoredList) {
    begin("2026-07-12 07:59:00");
    add("a", "2026-07-12 08:00:00", 60);
    pass(50);
    EXPECT_EQ(countdown.taskName, "a");
    EXPECT_EQ(countdown.seconds, 10);
    EXPECT_EQ(countdown.text, "Next task: a in 10 s");
    pass(10);
    EXPECT_EQ(told(), "07-12 08:00 start a 1");
    EXPECT_EQ(AppSettings::getAudioType(), 1);
    EXPECT_EQ(ScheduleTaskInfo::currentRuningTask(), runner.currentScheduleTask());
    EXPECT_TRUE(countdown.isExecuted);
    pass(70);
    EXPECT_EQ(told(), "end a");
    EXPECT_FALSE(runner.currentScheduleTask());
    EXPECT_TRUE(storedNames().isEmpty());
    pass(86'400);
    EXPECT_EQ(told(), "");
    EXPECT_EQ(countdown.taskName, QString());
}

TEST_F(ScheduleTaskRunnerTest, AStartIsFoundWhereverTheTicksFallBetweenTheSeconds) {
    for (const int fraction : {0, 1, 499, 500, 999}) {
        handsMoved = fraction;
        tasks.drop(tasks.tasks());
        begin("2026-07-12 07:59:55");
        startOfTime = startOfTime.addMSecs(-std::chrono::duration_cast<std::chrono::milliseconds>(clock.now()).count());
        add("a", "2026-07-12 08:00:00", 1);
        pass(8);
        EXPECT_EQ(told(), "07-12 08:00 start a 1; end a") << fraction;
    }
}

TEST_F(ScheduleTaskRunnerTest, OfTwoTasksOfOneSecondTheFirstInTheListWinsAndTheOtherIsReported) {
    begin("2026-07-12 07:59:50");
    add("first", "2026-07-12 08:00:00", 5)->_fromTime = now().addMSecs(10'400);
    add("second", "2026-07-12 08:00:00", 5);
    add("daily", "2026-07-12 08:00:00", 5, {0});
    pass(20);
    EXPECT_EQ(told(), "07-12 08:00 start first 1; 07-12 08:00 missed second: another; "
                      "07-12 08:00 missed daily: another; end first");
    EXPECT_EQ(tasks.tasks().size(), 1u);
}

TEST_F(ScheduleTaskRunnerTest, ATaskDueDuringAManualRecordingIsRefusedAndLetGo) {
    begin("2026-07-12 07:59:50");
    add("a", "2026-07-12 08:00:00", 5);
    recording = true;
    pass(60);
    EXPECT_EQ(told(), "07-12 08:00 missed a: another");
    EXPECT_FALSE(runner.currentScheduleTask()) << "the manual recording would be cut at the task's length";
    EXPECT_TRUE(recording);
    runner.taskRecordingDidEnd(); // of the manual one
    EXPECT_EQ(told(), "");
    EXPECT_TRUE(tasks.tasks().empty());
}

TEST_F(ScheduleTaskRunnerTest, RepetitionsCountAsTheyShould) {
    const struct {
        int total;
        int stopAt; // the recording that is stopped by hand; 0: none
        bool daily;
        const char *told;
    } cases[] = {
        {3, 0, false, "08:00 start a 1; start a(1) 1; start a(2) 1; end a"},
        {1, 0, false, "08:00 start a 1; end a"},
        {2, 0, true, "08:00 start a 1; start a(1) 1; end a"},
        {0, 3, false, "08:00 start a 1; start a(1) 1; start a(2) 1; end a"},
        {5, 2, false, "08:00 start a 1; start a(1) 1; end a"},
        {5, 2, true, "08:00 start a 1; start a(1) 1; end a"},
    };
    for (const auto &c : cases) {
        tasks.drop(tasks.tasks());
        handsMoved = -std::chrono::duration_cast<std::chrono::milliseconds>(clock.now()).count();
        begin("2026-07-12 07:59:58");
        const auto task = repeated(c.total, "2026-07-12 08:00:00", 10, c.daily ? QList<int>{0} : QList<int>{});
        int started = 0;
        for (int i = 0; i < 100; ++i) {
            second();
            const auto now = static_cast<int>(events.filter("start").size());
            if (now != std::exchange(started, now) && now == c.stopAt) {
                runner.taskWasStoppedByHand();
                endRecording();
            }
        }
        QString events = QString::fromStdString(told());
        events.remove("07-12 ").replace("; 08:00 start", "; start");
        EXPECT_EQ(events.toStdString(), c.told) << c.total;
        EXPECT_EQ(task->_repeatLoopedCount, 0);
        EXPECT_EQ(tasks.tasks().size(), c.daily ? 1u : 0u);
        EXPECT_EQ(storedNames().size(), c.daily ? 1 : 0);
    }
}

TEST_F(ScheduleTaskRunnerTest, ARepeatedTaskWaitsForTheEndOfItsFileAndForManualRecordings) {
    begin("2026-07-12 07:59:58");
    const auto task = add("a", "2026-07-12 08:00:00", 5);
    task->_repeatEnabled = true;
    pass(4);
    recording = false; // stopped; its file is still being closed
    ends = {};
    pass(5);
    EXPECT_EQ(told(), "07-12 08:00 start a 1");
    runner.taskRecordingDidEnd();
    recording = true; // by hand, before the next check
    pass(5);
    EXPECT_EQ(told(), "");
    recording = false;
    pass(2);
    EXPECT_EQ(told(), "07-12 08:00 start a(1) 1");
}

TEST_F(ScheduleTaskRunnerTest, TheLoopedCountIsStoredAtEveryEnd) {
    begin("2026-07-12 07:59:58");
    const auto task = repeated(3, "2026-07-12 08:00:00", 5);
    pass(10);
    tasks.LoadTasks();
    ASSERT_EQ(tasks.tasks().size(), 1u);
    EXPECT_EQ(tasks.tasks()[0]->_repeatLoopedCount, 1);
}

TEST_F(ScheduleTaskRunnerTest, ADailyTaskThatACrashCutShortMakesAllItsRecordingsTheNextDay) {
    const auto task = repeated(3, "2026-07-12 08:00:00", 5, {0, 1});
    task->_repeatLoopedCount = 2; // as a killed program has stored it
    ASSERT_TRUE(tasks.SaveTasks());
    begin("2026-07-13 07:59:50");
    pass(60);
    EXPECT_EQ(told(), "07-13 08:00 start a 1; 07-13 08:00 start a(1) 1; 07-13 08:00 start a(2) 1; end a");
}

TEST_F(ScheduleTaskRunnerTest, AStartInTheProgramsFirstSecondIsKept) {
    for (const int milliseconds : {1, 400, 999}) {
        tasks.drop(tasks.tasks());
        add("a", "2026-07-12 08:00:00", 5);
        ASSERT_TRUE(tasks.SaveTasks());
        startOfTime = QDateTime(QDate(2026, 7, 12), QTime(8, 0)).addMSecs(-milliseconds).toUTC();
        startOfTime = startOfTime.addMSecs(-std::chrono::duration_cast<std::chrono::milliseconds>(clock.now()).count());
        ScheduleTaskRunner fresh(tasks, *this, *this, clock, [this] { return now(); });
        fresh.initScheduleTaskList();
        clock.advance(1s);
        EXPECT_EQ(events.filter("start a").size(), 1) << milliseconds << told();
        recording = false;
        fresh.taskRecordingDidEnd();
        told();
    }
}

TEST_F(ScheduleTaskRunnerTest, AJourneyThroughTimeZonesStartsNothingTwiceAndLosesNothing) {
    begin("2026-07-12 07:59:50");
    add("daily", "2026-07-12 08:00:00", 5, {0, 1, 2, 3, 4, 5, 6});
    add("once", "2026-07-12 12:00:00", 5);
    for (const char *zone : {"America/New_York", "Asia/Tokyo", "Pacific/Apia", "Europe/Berlin", "UTC"}) {
        pass(1'800);
        qputenv("TZ", zone);
        ::tzset();
    }
    pass(86'400 + 9'000 - 120);
    const QStringList starts = events.filter("start");
    EXPECT_EQ(starts.filter("once").size(), 1);
    EXPECT_EQ(starts.filter("daily").size(), 2);
    EXPECT_TRUE(events.filter("missed").isEmpty()) << told();
}

TEST_F(ScheduleTaskRunnerTest, ALateTickReplaysTenSecondsAndWhatWasSleptThroughIsReported) {
    begin("2026-07-12 07:59:50");
    add("a", "2026-07-12 08:00:00", 5);
    pass(1);
    handsMoved += 17'000; // 8 seconds late
    pass(1);
    EXPECT_EQ(told(), "07-12 08:00 start a 1");
    pass(10);
    EXPECT_EQ(told(), "end a");
    add("b", "2026-07-12 09:00:00", 5);
    add("daily", "2026-07-12 09:00:00", 5, {0, 1});
    pass(1);
    handsMoved += 7'200'000;
    pass(3);
    EXPECT_EQ(told(), "07-12 09:00 missed b: slept; 07-12 09:00 missed daily: slept");
    EXPECT_EQ(countdown.taskName, "daily");
}

TEST_F(ScheduleTaskRunnerTest, AClockThatIsSetBackStartsNothingTwice) {
    begin("2026-07-12 07:59:50");
    add("daily", "2026-07-12 08:00:00", 5, {0, 1});
    const auto once = add("once", "2026-07-12 08:10:00", 5);
    pass(700);
    EXPECT_EQ(told(), "07-12 08:00 start daily 1; end daily; 07-12 08:10 start once 1; end once");
    handsMoved -= 1'800'000;
    pass(3600);
    EXPECT_EQ(told(), "");
    pass(86'400);
    EXPECT_EQ(told(), "07-13 08:00 start daily 1; end daily");
}

TEST_F(ScheduleTaskRunnerTest, AClockSetBackDuringARecordingDoesNotStartItAgain) {
    begin("2026-07-12 07:59:50");
    add("once", "2026-07-12 08:00:00", 100'000);
    pass(20);
    EXPECT_EQ(told(), "07-12 08:00 start once 1");
    handsMoved -= 60'000;
    pass(5);
    endRecording();
    pass(120);
    EXPECT_EQ(told(), "end once");
}

TEST_F(ScheduleTaskRunnerTest, WhatWasDueWhileNothingRanIsReportedAndForgotten) {
    add("old", "2026-07-11 08:00:00", 5);
    add("daily", "2026-07-11 08:00:00", 5, {6});
    add("never", "not a time", 5);
    ASSERT_TRUE(tasks.SaveTasks());
    begin("2026-07-12 07:00:00");
    pass(1);
    EXPECT_EQ(told(), "07-11 08:00 missed old: not running; missed never: not running");
    EXPECT_EQ(storedNames(), QStringList{"daily"});
}

TEST_F(ScheduleTaskRunnerTest, AProgramThatEndsWithinAStartNeitherMakesItAgainNorCallsItMissed) {
    add("Daily", "2026-07-06 08:00:00", 600, {0, 1, 2, 3, 4, 5, 6});
    add("Once", "2026-07-06 09:00:00", 600);
    ASSERT_TRUE(tasks.SaveTasks());
    std::optional<TaskList> read;
    const auto restart = [&](const char *moment) {
        recording = false;
        ends = {};
        auto again =
            std::make_unique<ScheduleTaskRunner>(read.emplace(), *this, *this, clock, [this] { return now(); });
        startOfTime = QDateTime::fromString(moment, "yyyy-MM-dd HH:mm:ss").toUTC();
        handsMoved = -std::chrono::duration_cast<std::chrono::milliseconds>(clock.now()).count();
        again->initScheduleTaskList();
        return again;
    };
    {
        const auto first = restart("2026-07-06 07:59:55");
        pass(10);
        EXPECT_EQ(told(), "07-06 08:00 start Daily 1");
    }
    {
        const auto second = restart("2026-07-06 07:59:58"); // The clock was set back meanwhile.
        pass(3600);
        EXPECT_EQ(told(), "");
        pass(5);
        EXPECT_EQ(told(), "07-06 09:00 start Once 1");
    }
    {
        const auto third = restart("2026-07-06 09:05:00");
        pass(60);
        EXPECT_EQ(told(), "");
        EXPECT_EQ(storedNames(), QStringList{"Daily"});
    }
    const auto fourth = restart("2026-07-07 07:59:58");
    pass(5);
    EXPECT_EQ(told(), "07-07 08:00 start Daily 1");
}

TEST_F(ScheduleTaskRunnerTest, AStartThatFailsIsToldAndHindersNoLaterTask) {
    begin("2026-07-12 07:59:58");
    add("a", "2026-07-12 08:00:00", 5)->_repeatEnabled = true;
    add("b", "2026-07-12 08:01:00", 5);
    startFailure = "There is no microphone.";
    failureLeavesRecordingShown = true;
    pass(10);
    EXPECT_EQ(told(), "stop; 07-12 08:00 missed a: failed");
    EXPECT_FALSE(runner.currentScheduleTask());
    startFailure.clear();
    pass(60);
    EXPECT_EQ(told(), "07-12 08:01 start b 1; end b");
}

TEST_F(ScheduleTaskRunnerTest, ReadingTheListAnewKeepsTheExecutedTaskAndTheTimer) {
    begin("2026-07-12 07:59:58");
    const auto task = repeated(2, "2026-07-12 08:00:00", 60);
    ASSERT_TRUE(tasks.SaveTasks());
    pass(10);
    testing::internal::CaptureStderr();
    runner.initScheduleTaskList();
    const QString log = QString::fromStdString(testing::internal::GetCapturedStderr());
    for (const char *line :
         {"initScheduleTaskList start\n", "initScheduleTaskList task count: 1\n", "initScheduleTaskList end\n"})
        EXPECT_TRUE(log.contains(line)) << line;
    pass(200);
    EXPECT_EQ(told(), "07-12 08:00 start a 1; 07-12 08:01 start a(1) 1; end a");
    EXPECT_TRUE(storedNames().isEmpty());
}

TEST_F(ScheduleTaskRunnerTest, TheComputerIsShutDownAfterConversionsAndACountdown) {
    begin("2026-07-12 07:59:58");
    add("a", "2026-07-12 08:00:00", 5)->_shutdownAfterRecording = true;
    settled = false;
    pass(60);
    EXPECT_TRUE(shutdownShown.isEmpty()) << "a conversion runs";
    settled = true;
    pass(30);
    ASSERT_EQ(shutdownShown.size(), 30);
    EXPECT_EQ(shutdownShown.constFirst(), 30);
    EXPECT_TRUE(calls->calls().isEmpty());
    pass(1);
    EXPECT_EQ(calls->calls().value(0), "execute tell application \"Finder\" to shut down");
    pass(60);
    EXPECT_EQ(calls->calls().size(), 1);
}

TEST_F(ScheduleTaskRunnerTest, ACountdownIsCancelledByThePersonAndBeginsAnewAfterARecording) {
    begin("2026-07-12 07:59:58");
    add("a", "2026-07-12 08:00:00", 5)->_shutdownAfterRecording = true;
    pass(20);
    ASSERT_FALSE(shutdownShown.isEmpty());
    recording = true; // by hand
    pass(60);
    EXPECT_TRUE(calls->calls().isEmpty());
    recording = false;
    shutdownShown.clear();
    pass(1);
    EXPECT_EQ(shutdownShown, QList<int>{30});
    runner.cancelShutdown();
    pass(100);
    EXPECT_TRUE(calls->calls().isEmpty());
    EXPECT_FALSE(runner.isShutdownRequested());
}

TEST_F(ScheduleTaskRunnerTest, StoppedByHandItDoesNotShutDown) {
    begin("2026-07-12 07:59:58");
    add("a", "2026-07-12 08:00:00", 5)->_shutdownAfterRecording = true;
    pass(4);
    runner.taskWasStoppedByHand();
    endRecording();
    pass(100);
    EXPECT_TRUE(shutdownShown.isEmpty());
}

TEST_F(ScheduleTaskRunnerTest, AStartThatIsSkippedIsNotMadeAfterARestartEitherAndItsTaskStays) {
    begin("2026-03-02 10:00:00");
    add("daily", "2026-03-02 10:00:10", 5, {0, 1, 2, 3, 4, 5, 6});
    pass(2);
    ASSERT_TRUE(runner.skipNextStart());
    EXPECT_EQ(countdown.skippedName, "daily");
    EXPECT_EQ(stamp(countdown.start), "03-03 10:00") << "the next day's";
    ASSERT_TRUE(runner.makeSkippedStart());
    EXPECT_EQ(stamp(countdown.start), "03-02 10:00") << "taken back";
    ASSERT_TRUE(runner.skipNextStart());
    {
        TaskList stored;
        ScheduleTaskRunner after(stored, *this, *this, clock, [this] { return now(); });
        after.initScheduleTaskList();
        pass(30);
    }
    pass(1);
    EXPECT_EQ(countdown.skippedName, "") << "it is too late to take it back";
    ASSERT_TRUE(runner.makeSkippedStart());
    EXPECT_EQ(told(), "");
    handsMoved += 86'400'000 - 40'000;
    pass(30);
    EXPECT_EQ(told().substr(0, 22), "03-03 10:00 start dail");

    add("once", "2026-03-04 12:00:00", 5);
    handsMoved = 0;
    startOfTime = QDateTime(QDate(2026, 3, 4), QTime(11, 59, 40)).toUTC().addMSecs(-clock.now() / 1ms);
    pass(1);
    ASSERT_TRUE(runner.skipNextStart());
    EXPECT_TRUE(storedNames().contains("once"));
    pass(100);
    EXPECT_FALSE(told().find("once") != std::string::npos) << "neither made nor missed";
    EXPECT_FALSE(storedNames().contains("once")) << "it has no other start";
}

TEST_F(ScheduleTaskRunnerTest, ANewDayIsToldOnceWhateverTheClockAndTheMachineDid) {
    begin("2026-03-02 23:59:50");
    pass(5);
    EXPECT_EQ(days, 0);
    pass(10);
    EXPECT_EQ(days, 1);
    handsMoved = 3 * 86'400'000; // it slept
    pass(5);
    EXPECT_EQ(days, 2);
    handsMoved = 0; // and its clock was wrong
    pass(5);
    EXPECT_EQ(days, 3);
}

TEST_F(ScheduleTaskRunnerTest, ANameCannotPretendToBeAPlaceholder) {
    begin("2026-07-12 07:59:50");
    add("#seconds# #taskname#", "2026-07-12 08:00:00", 5);
    pass(1);
    EXPECT_EQ(countdown.text, "Next task: #seconds# #taskname# in 9 s");
}

// Ten days around a change of the clocks, second by second.
class ScheduleDays : public ScheduleTaskRunnerTest, public testing::WithParamInterface<const char *> {};

TEST_P(ScheduleDays, EveryStartComesOnceAtItsTimeOfDay) {
    begin(GetParam());
    const QDateTime from = now().toLocalTime();
    constexpr int kDays = 10;
    add("morning", "2026-01-01 08:00:00", 600, {1, 2, 3, 4, 5});
    add("night", "2026-01-01 02:30:00", 600, {0, 1, 2, 3, 4, 5, 6});
    add("sunday", "2026-01-01 20:15:00", 600, {0});
    QStringList expected;
    for (int day = 0; day < kDays; ++day) {
        const QDate date = from.date().addDays(day);
        const auto expect = [&](const char *name, const QTime &time) {
            expected << QStringLiteral("%1 start %2 1").arg(QDateTime(date, time).toString("MM-dd HH:mm"), name);
            expected << QStringLiteral("end %1").arg(name);
        };
        const bool isLeapt = date == QDate(2026, 3, 29);
        const int weekday = date.dayOfWeek() % 7;
        expect("night", isLeapt ? QTime(3, 30) : QTime(2, 30));
        if (weekday >= 1 && weekday <= 5)
            expect("morning", QTime(8, 0));
        if (weekday == 0)
            expect("sunday", QTime(20, 15));
    }
    const QDateTime until = QDateTime(from.date().addDays(kDays), QTime(0, 0));
    pass(from.secsTo(until));
    EXPECT_EQ(events, expected);
}

INSTANTIATE_TEST_SUITE_P(AroundClockChanges, ScheduleDays,
                         testing::Values("2026-03-24 00:00:00", "2026-10-20 00:00:00"));

} // namespace
} // namespace cantorel
