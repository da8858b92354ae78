#include "recording/control/RecordingControl.h"

#include "recording/schedule/ScheduleTaskText.h"
#include "recording/schedule/TaskList.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>

namespace cantorel {
namespace {

class RecordingControlTest : public test::RecordingFixture, public test::SessionLog {
public:
    using RecordingFixture::RecordingFixture;

    void SetUp() override {
        AppSettings::setAudioFormat(4);
        AppSettings::setAudioType(1);
        AppSettings::setAutoSkipSilence(false);
        ASSERT_TRUE(commons.journal.claim());
        list.initRecordedList();
    }
    QString state() { return ask(control::kStatus).value("state").toString(); }
    QVariantMap ask(const char *method) {
        const auto answer = control.call(method, {});
        return answer ? answer.value() : QVariantMap{{"refused", answer.failure().sentence.plainEnglish()}};
    }
    bool refuses(const char *method) { return ask(method).contains("refused"); }

    RecordedList list{QDir::homePath() + "/state", *world.clock};
    RecorderCommons commons = commonsIn("state");
    RecordingSession session{*this, list, commons};
    TaskList tasks;
    RecordingControl control{session, list, tasks, RecordingControl::Begins::Any, nullptr};
};

} // namespace

TEST_F(RecordingControlTest, EachStateIsNamedFromTheFirstFramesToTheConvertedFile) {
    EXPECT_EQ(state(), "stopped");
    EXPECT_EQ(ask(control::kStart).value("state"), "starting");
    ASSERT_TRUE(stepUntil([&] { return state() == "recording"; }));
    EXPECT_EQ(ask(control::kPause).value("state"), "paused");
    EXPECT_EQ(ask(control::kPause).value("state"), "recording");
    world.advance(2'000);
    EXPECT_GE(ask(control::kStatus).value("seconds").toDouble(), 1);
    const QVariantMap stopped = ask(control::kStop);
    EXPECT_EQ(stopped.value("state"), "finishing");
    EXPECT_EQ(stopped.value("file"), started.value(0));
    ASSERT_TRUE(stepUntil([&] { return state() == "stopped"; }));
    EXPECT_FALSE(ask(control::kStatus).contains("file"));
}

TEST_F(RecordingControlTest, StartAndStopAskForAStateAndToggleForTheOther) {
    EXPECT_FALSE(refuses(control::kStop));
    EXPECT_TRUE(refuses(control::kPause));
    EXPECT_TRUE(refuses(control::kSplit));
    EXPECT_FALSE(refuses(control::kStart));
    ASSERT_TRUE(stepUntil([&] { return state() == "recording"; }));
    EXPECT_EQ(ask(control::kStart).value("state"), "recording");
    world.advance(1'000);
    // Between two files a toggle ends what is recorded, as a person sees it.
    ask(control::kSplit);
    EXPECT_EQ(state(), "recording");
    EXPECT_EQ(ask(control::kToggle).value("state"), "finishing");
    ASSERT_TRUE(stepUntil([&] { return state() == "stopped"; }));
    EXPECT_EQ(started.size(), 1);
}

TEST_F(RecordingControlTest, AStartThatFailsIsRefusedWithItsReasonAndLeavesNothingShown) {
    AppSettings::setAudioType(0);
    world.backend->loseServer(true);
    const QString refusal = ask(control::kStart).value(QStringLiteral("refused")).toString();
    EXPECT_TRUE(refusal.contains(QStringLiteral("No sound server answers"))) << refusal.toStdString();
    EXPECT_EQ(state(), QStringLiteral("stopped"));
}

TEST_F(RecordingControlTest, TasksThatCannotBeAreRefusedAndStoreNothing) {
    ScheduleTaskInfo good("News", QDateTime(QDate(2099, 7, 1), QTime(8, 0)), QDateTime(QDate(2099, 7, 1), QTime(8, 1)),
                          2, true);
    good._repeatEnabled = good._repeatStopByManually = true;
    const QJsonObject json = jsonOfTask(good);
    const auto add = [&](const QJsonObject &task) {
        return control.call(control::kAddTask, {QString::fromUtf8(QJsonDocument(task).toJson(QJsonDocument::Compact))})
            .ok();
    };
    const std::pair<const char *, QJsonValue> wrong[] = {
        {"name", "/"},  {"from", "2099-02-30 08:00:00"}, {"seconds", 0}, {"seconds", 1e12},
        {"source", 1},  {"weeks", QJsonArray{7}},        {"repeat", -1}, {"repeat", "often"},
        {"daily", true}};
    for (const auto &[key, value] : wrong) {
        QJsonObject task = json;
        task.insert(key, value);
        EXPECT_FALSE(add(task)) << key;
    }
    EXPECT_FALSE(add({}));
    QJsonObject endless = json;
    endless.insert("name", QString(400'000, 'x'));
    EXPECT_FALSE(add(endless));
    EXPECT_TRUE(AppSettings::scheduleTaskList().isEmpty());
    EXPECT_TRUE(add(json));
    tasks.LoadTasks();
    ASSERT_EQ(tasks.tasks().size(), 1u);
    EXPECT_EQ(jsonOfTask(*tasks.tasks()[0]), json);
}

} // namespace cantorel
