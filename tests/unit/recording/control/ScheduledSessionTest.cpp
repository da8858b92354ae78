#include "recording/control/ScheduledSession.h"

#include "lang/Lang.h"
#include "platform/desktop/recorded/RecordedServices.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <QDir>

namespace cantorel {
namespace {

using namespace std::chrono_literals;

class ScheduledSessionTest : public test::RecordingFixture, public RecordingSessionView, public ScheduleTaskView {
public:
    using RecordingFixture::RecordingFixture;

    void recordingStarted(const QString &file, const QString &) override { started << QFileInfo(file).fileName(); }
    void recordingFinished(const FinishedRecording &recording) override { finished.push_back(recording); }
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
        ScheduleTaskInfo::tasks().push_back(
            std::make_shared<ScheduleTaskInfo>(QString::fromUtf8(name), from, from.addSecs(seconds), 1, false));
        return ScheduleTaskInfo::tasks().back();
    }
    void SetUp() override {
        AppSettings::setAudioFormat(4);
        ASSERT_TRUE(session.claim());
        list.initRecordedList();
        scheduled.schedule().initScheduleTaskList();
    }

    std::shared_ptr<desktop::CallRecord> calls = std::make_shared<desktop::CallRecord>();
    desktop::InstalledServices services{desktop::recordedServices(calls)};
    QStringList started, ended, missed;
    std::vector<FinishedRecording> finished;
    RecordedList list{QDir::homePath() + QStringLiteral("/state"), *world.clock};
    RecordingSession session{*this, list, QDir::homePath() + QStringLiteral("/state")};
    ScheduledSession scheduled{session, *this, *world.clock, [this] { return now(); }};
};

struct ScheduledWithoutVirtualDevice : ScheduledSessionTest {
    ScheduledWithoutVirtualDevice() : ScheduledSessionTest(test::EmbeddedWorld::Virtual::Missing) {}
};

} // namespace

TEST_F(ScheduledSessionTest, ATaskRecordsItsLengthUnderItsNameAsOftenAsItShall) {
    const auto task = add("News", 2, 3);
    task->_repeatEnabled = true;
    task->_repeatTotalCount = 2;
    task->_shutdownAfterRecording = true;
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 2 && !ended.isEmpty(); }));
    EXPECT_EQ(started, (QStringList{QStringLiteral("News.m4a"), QStringLiteral("News(1).m4a")}));
    for (const FinishedRecording &recording : finished) {
        EXPECT_GE(recording.seconds, 3.0);
        EXPECT_LT(recording.seconds, 4.5);
    }
    EXPECT_EQ(list.items().size(), 2u);
    EXPECT_EQ(ended, QStringList{QStringLiteral("News")});
    EXPECT_TRUE(ScheduleTaskInfo::tasks().empty());
    EXPECT_EQ(AppSettings::getAudioType(), 1);
    EXPECT_TRUE(stepUntil([&] { return calls->calls().filter(QStringLiteral("shut down")).size() == 1; }));
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
    EXPECT_EQ(ended, QStringList{QStringLiteral("News")});
    world.advance(5'000);
    EXPECT_EQ(started.size(), 1);
}

TEST_F(ScheduledWithoutVirtualDevice, ATaskThatCannotBeginIsReportedAndTheNextOneRuns) {
    add("System", 2, 2)->_recordFrom = 0;
    add("Mic", 5, 2);
    ASSERT_TRUE(stepUntil([&] { return finished.size() == 1; }));
    ASSERT_EQ(missed.size(), 1);
    EXPECT_TRUE(missed[0].contains(QStringLiteral("driver install"))) << missed[0].toStdString();
    EXPECT_EQ(started, QStringList{QStringLiteral("Mic.m4a")});
    EXPECT_FALSE(session.isRecording());
}

} // namespace cantorel
