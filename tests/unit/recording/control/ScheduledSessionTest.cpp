#include "recording/control/ScheduledSession.h"

#include "lang/Lang.h"
#include "platform/desktop/recorded/RecordedServices.h"
#include "tests/unit/recording/RecordingFixture.h"
#include "util/Asker.h"

#include <QDir>

namespace cantorel {
namespace {

using namespace std::chrono_literals;

class ScheduledSessionTest : public test::RecordingFixture, public test::SessionLog, public ScheduleTaskView {
public:
    using RecordingFixture::RecordingFixture;

    void recordingStarted(const QString &file, const QString &) override { started << QFileInfo(file).fileName(); }
    void recordingConverting(const QString &) override {
        if (onConverting)
            std::exchange(onConverting, {})();
    }
    void taskEnded(const ScheduleTaskInfo &task) override { ended << task._taskName; }
    void taskMissed(const ScheduleTaskInfo &, const QDateTime &, const foundation::Sentence &sentence) override {
        missed << Lang::english(sentence);
    }

    QDateTime now() const {
        return QDateTime(QDate(2026, 7, 12), QTime(8, 0), Qt::UTC)
            .addMSecs(std::chrono::duration_cast<std::chrono::milliseconds>(world.clock->now()).count());
    }
    std::shared_ptr<ScheduleTaskInfo> add(const char *name, int inSeconds, int seconds) {
        const QDateTime from = now().addSecs(inSeconds);
        return tasks.add(ScheduleTaskInfo(name, from, from.addSecs(seconds), 1, false)).value();
    }
    void SetUp() override {
        AppSettings::setAudioFormat(4);
        ASSERT_TRUE(commons.journal.claim());
        list.initRecordedList();
        scheduled.schedule().initScheduleTaskList();
    }

    std::shared_ptr<desktop::CallRecord> calls = std::make_shared<desktop::CallRecord>();
    desktop::InstalledServices services{desktop::recordedServices(calls)};
    QStringList ended, missed;
    std::function<void()> onConverting; // once
    RecordedList list{QDir::homePath() + "/state", *world.clock};
    RecorderCommons commons = commonsIn("state");
    RecordingSession session{*this, list, commons};
    TaskList tasks;
    ScheduledSession scheduled{session, nullptr, tasks, *this, *world.clock, [this] { return now(); }};
};

} // namespace

TEST_F(ScheduledSessionTest, ATaskRecordsItsLengthUnderItsNameAsOftenAsItShall) {
    const auto task = add("News", 2, 3);
    task->_repeatEnabled = true;
    task->_repeatTotalCount = 2;
    task->_shutdownAfterRecording = true;
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 2 && !ended.isEmpty(); }));
    EXPECT_EQ(started, (QStringList{"News.m4a", "News(1).m4a"}));
    for (const FinishedRecording &recording : finished) {
        EXPECT_GE(recording.seconds, 3.0);
        EXPECT_LT(recording.seconds, 4.5);
    }
    EXPECT_EQ(list.items().size(), 2u);
    EXPECT_EQ(ended, QStringList{"News"});
    EXPECT_TRUE(tasks.tasks().empty());
    EXPECT_EQ(AppSettings::getAudioType(), 1);
    EXPECT_TRUE(stepUntil([&] { return calls->calls().filter("shut down").size() == 1; }));
}

TEST_F(ScheduledSessionTest, ARecordingByHandIsNeitherCutNorNamedByATaskThatFallsDue) {
    AppSettings::setAudioType(1);
    scheduled.onStartRecording();
    ASSERT_TRUE(stepUntil([&] { return started.size() == 1; }));
    add("News", 2, 1);
    world.advance(8'000);
    EXPECT_TRUE(session.isRecording());
    EXPECT_EQ(missed.size(), 1);
    scheduled.onStartRecording();
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    EXPECT_GE(finished[0].seconds, 8.0);
    EXPECT_TRUE(ended.isEmpty());
}

TEST_F(ScheduledSessionTest, StoppedByHandARepeatedTaskEnds) {
    add("News", 2, 60)->_repeatEnabled = true;
    ASSERT_TRUE(stepUntil([&] { return started.size() == 1; }));
    world.advance(1'000);
    scheduled.onStartRecording(); // the start control ends it
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    EXPECT_EQ(ended, QStringList{"News"});
    world.advance(5'000);
    EXPECT_EQ(started.size(), 1);
}

// The person's own recording between two repetitions is the person's own.
TEST_F(ScheduledSessionTest, StoppingAnotherRecordingBetweenTwoRepetitionsEndsNoTask) {
    const auto task = add("News", 2, 3);
    task->_repeatEnabled = true;
    task->_repeatTotalCount = 3;
    onConverting = [&] { // The task's next one is not begun yet.
        scheduled.onStartRecording();
    };
    ASSERT_TRUE(stepUntil([&] { return started.size() == 2; }));
    world.advance(2'000);
    scheduled.onStartRecording();
    ASSERT_TRUE(stepUntil([&] { return !ended.isEmpty(); }));
    EXPECT_EQ(started, (QStringList{"News.m4a", "Track2.m4a", "News(1).m4a", "News(2).m4a"}));
}

TEST_F(ScheduledSessionTest, ATaskThatFallsDueWhileAFileClosesRecordsItsWholeLengthAfterIt) {
    AppSettings::setAudioType(1);
    scheduled.onStartRecording();
    ASSERT_TRUE(stepUntil([&] { return started.size() == 1; }));
    world.advance(4'000);
    add("News", 2, 3);
    world.advance(400); // The next look but one finds it.
    scheduled.onStartRecording();
    for (int look = 0; look < 20 && session.phase() == SessionPhase::Closing; ++look)
        world.clock->advance(100ms); // without the event loop that tells of the closed file
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 2; })) << missed.join(' ').toStdString();
    EXPECT_EQ(started.value(1), "News.m4a");
    EXPECT_GE(finished[1].seconds, 3.0);
    EXPECT_EQ(ended, QStringList{"News"});
}

// Names every file by hand, and lets happen what happens while the question stands there.
TEST_F(ScheduledSessionTest, ATaskThatFallsDueWhileANameIsChosenIsRecorded) {
    struct : Asker {
        void tell(const QString &, const QString &, AlertStyle, QObject *) override {}
        int ask(const QString &, const QString &, const QStringList &choices, QObject *) override {
            return static_cast<int>(choices.size()) - 1;
        }
        QString askForNewFile(const QString &name, const QString &) override {
            meanwhile();
            return name + "/Mine.m4a";
        }
        std::function<void()> meanwhile;
    } asker;
    const InstalledAsker installed(asker);
    AppSettings::setIsAutoGenFileName(false);
    AppSettings::setAudioType(1);
    asker.meanwhile = [&] {
        EXPECT_FALSE(session.startRecording()) << "one question at a time";
        session.stopRecording();
    };
    EXPECT_FALSE(session.startRecording());
    EXPECT_TRUE(session.isSettled()) << "called off";
    add("News", 2, 3);
    asker.meanwhile = [&] { ASSERT_TRUE(stepUntil([&] { return started.size() == 1; })); };
    const auto overtaken = session.startRecording();
    ASSERT_FALSE(overtaken);
    EXPECT_FALSE(overtaken.failure().sentence.isEmpty());
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    EXPECT_GE(finished[0].seconds, 3.0);
    EXPECT_EQ(started, QStringList{"News.m4a"});
    EXPECT_EQ(ended, QStringList{"News"});
}

TEST_F(ScheduledSessionTest, ATaskThatCannotBeginIsReportedAndTheNextOneRuns) {
    add("System", 2, 2)->_recordFrom = 0;
    add("Mic", 5, 2);
    world.backend->loseServer(true);
    ASSERT_TRUE(stepUntil([&] { return missed.size() == 1; }));
    EXPECT_TRUE(missed[0].contains(QStringLiteral("No sound server answers"))) << missed[0].toStdString();
    world.backend->loseServer(false);
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    EXPECT_EQ(started, QStringList{QStringLiteral("Mic.m4a")});
    EXPECT_FALSE(session.isRecording());
}

} // namespace cantorel
