#include "lang/Lang.h"
#include "platform/foundation/KeyedArchiver.h"
#include "platform/foundation/SearchPaths.h"
#include "recording/schedule/TaskList.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QMap>
#include <QSet>

#include <gtest/gtest.h>
#include <time.h>

namespace cantorel {
namespace {

using foundation::ArchivedObject;

void liveIn(const char *zone) {
    qputenv("TZ", zone);
    ::tzset();
}

QDateTime local(const char *text) { return QDateTime::fromString(text, "yyyy-MM-dd HH:mm:ss"); }

std::string shown(const QDateTime &moment) {
    return moment.isValid() ? moment.toLocalTime().toString("yyyy-MM-dd HH:mm:ss").toStdString() : std::string("none");
}

std::string next(const char *time, const QList<int> &weeks, const char *now) {
    return shown(ScheduleTaskInfo::getDateFromDailyTime(local(time), weeks, local(now)));
}

TEST(ScheduleRule, AWalkFromAPassedStartDeliberatelyPassesOverSunday) {
    // 2026-07-11 is a Saturday.
    EXPECT_EQ(next("2026-01-01 08:00:00", {6, 0, 3}, "2026-07-11 09:00:00"), "2026-07-15 08:00:00");
    EXPECT_EQ(next("2026-01-01 08:00:00", {6, 0, 3}, "2026-07-12 07:00:00"), "2026-07-12 08:00:00")
        << "found on the day";
    EXPECT_EQ(next("2026-01-01 08:00:00", {0, 3}, "2026-07-11 09:00:00"), "2026-07-12 08:00:00") << "the other walk";
    EXPECT_EQ(next("2026-01-01 08:00:00", {1, 3}, "2026-07-13 09:00:00"), "2026-07-15 08:00:00");
    EXPECT_EQ(next("2026-01-01 08:00:00", {6, 7}, "2026-07-11 09:00:00"), "2026-07-12 08:00:00") << "tested as 7";
    EXPECT_EQ(next("2026-01-01 00:00:00", {6, 0}, "2026-07-11 23:59:59"), "2026-07-18 00:00:00")
        << "no moment of the Sunday lies before its midnight";
}

TEST(ScheduleRule, WalksEndWhateverTheSet) {
    EXPECT_EQ(next("2026-01-01 08:00:00", {2}, "2026-07-14 07:59:59"), "2026-07-14 08:00:00");
    EXPECT_EQ(next("2026-01-01 08:00:00", {2}, "2026-07-14 08:00:00"), "2026-07-14 08:00:00") << "not passed yet";
    EXPECT_EQ(next("2026-01-01 08:00:00", {2}, "2026-07-14 08:00:01"), "2026-07-21 08:00:00");
    EXPECT_EQ(next("2026-01-01 08:00:00", {0}, "2026-07-12 09:00:00"), "2026-07-19 08:00:00");
    EXPECT_EQ(next("2026-01-01 08:00:00", {}, "2026-07-12 09:00:00"), "none");
    EXPECT_EQ(next("2026-01-01 08:00:00", {7, -1, 99}, "2026-07-12 09:00:00"), "none");
    EXPECT_EQ(next("not a time", {0, 1, 2, 3, 4, 5, 6}, "2026-07-12 09:00:00"), "none");
}

TEST(ScheduleRule, OnDaysOfClockChangesTheTimeOfDayIsWhatThePersonExpects) {
    liveIn("Europe/Berlin");
    const struct {
        const char *time, *now;
        QList<int> weeks;
        const char *expected;
        qint64 utcOffset;
    } cases[] = {
        // Forward on Sunday 2026-03-29, 02:00 to 03:00; back on Sunday 2026-10-25, 03:00 to 02:00.
        {"2026-01-05 08:00:00", "2026-03-28 09:00:00", {6, 1}, "2026-03-30 08:00:00", 7200},
        {"2026-01-05 08:00:00", "2026-10-24 09:00:00", {6, 1}, "2026-10-26 08:00:00", 3600},
        {"2026-07-05 08:00:00", "2026-03-29 00:30:00", {0}, "2026-03-29 08:00:00", 7200},
        {"2026-01-05 02:30:00", "2026-03-29 00:30:00", {0}, "2026-03-29 03:30:00", 7200}, // leapt over
        {"2026-07-05 02:30:00", "2026-10-25 00:30:00", {0}, "2026-10-25 02:30:00", 7200}, // the first of two
    };
    for (const auto &c : cases) {
        const QDateTime start = ScheduleTaskInfo::getDateFromDailyTime(local(c.time), c.weeks, local(c.now));
        EXPECT_EQ(shown(start), c.expected) << c.now;
        EXPECT_EQ(start.toLocalTime().offsetFromUtc(), c.utcOffset) << c.now;
    }
    const QDateTime secondTime = QDateTime(QDate(2026, 10, 25), QTime(0, 30), Qt::UTC).addSecs(3600 + 60);
    EXPECT_EQ(shown(ScheduleTaskInfo::getDateFromDailyTime(local("2026-07-05 02:30:00"), {0}, secondTime)),
              "2026-11-01 02:30:00")
        << "an hour that comes twice starts a task once";
}

// Clocks that change at midnight, by half an hour, by two hours, and not at all.
TEST(ScheduleRule, InEveryZoneADailyTaskHasOneStartADate) {
    for (const char *zone : {"Africa/Cairo", "Asia/Beirut", "Australia/Lord_Howe", "Antarctica/Troll",
                             "America/New_York", "Asia/Kathmandu"}) {
        for (const QTime timeOfDay : {QTime(0, 30), QTime(1, 45), QTime(2, 15), QTime(23, 59, 59)}) {
            liveIn(zone);
            const QDateTime time(QDate(2026, 2, 2), timeOfDay);
            QDateTime now(QDate(2026, 3, 1), QTime(0, 0), Qt::UTC);
            QMap<QDate, QSet<qint64>> starts;
            int moved = 0;
            for (int step = 0; step < 300 * 48; ++step, now = now.addSecs(1800)) {
                const QDateTime start =
                    ScheduleTaskInfo::getDateFromDailyTime(time, {0, 1, 2, 3, 4, 5, 6}, now).toLocalTime();
                // The walk passes over Sunday, so a start is at most two days away.
                ASSERT_GE(start, now) << zone;
                ASSERT_LE(now.secsTo(start), 2 * 86'400 + 7200) << zone;
                if (auto &ofDate = starts[start.date()]; !ofDate.contains(start.toSecsSinceEpoch())) {
                    ofDate << start.toSecsSinceEpoch();
                    moved += start.time() != timeOfDay ? 1 : 0;
                }
            }
            for (auto it = starts.cbegin(); it != starts.cend(); ++it)
                EXPECT_EQ(it->size(), 1) << zone << " " << it.key().toString(Qt::ISODate).toStdString();
            EXPECT_LE(moved, 1) << zone << ": only where the clocks leap over it";
            EXPECT_GE(starts.size(), 299) << zone;
        }
    }
}

ScheduleTaskInfo fullTask() {
    ScheduleTaskInfo task("Größe \"1\"/..", local("2026-07-12 08:00:00"), local("2026-07-12 09:30:00"), 2, true);
    task._daily = task._repeatEnabled = task._repeatStopByManually = true;
    task._repeatTotalCount = 3;
    task._repeatLoopedCount = 2;
    task.WeeksOn_ = {1, 3};
    return task;
}

TEST(ScheduleTaskInfo, IsStoredUnderItsFixedKeysAndReadAgain) {
    ScheduleTaskInfo task = fullTask();
    EXPECT_EQ(task._duration, 5400);
    const auto object = archivedTask(task).value<ArchivedObject>();
    EXPECT_EQ(object.className, "ScheduleTaskInfo");
    EXPECT_EQ(object.values.keys().join(' '),
              QStringLiteral("_daily _duration _fromTime _recordFrom _repeatEnabled _repeatLoopedCount "
                             "_repeatStopByManually _repeatTotalCount _shutdown _taskName _toTime _weeksOn"));
    task._completed = true;
    task.dealtWithStart = task.awaitedStart = task._fromTime;
    TaskList list;
    ASSERT_TRUE(list.add(task).ok() && list.add({}).ok());
    ScheduleTaskInfo::LoadTasks();
    ASSERT_EQ(ScheduleTaskInfo::tasks().size(), 2u);
    ScheduleTaskInfo stored = fullTask();
    stored.dealtWithStart = stored._fromTime;
    EXPECT_EQ(*ScheduleTaskInfo::tasks()[0], stored) << "what is not stored starts anew";
    EXPECT_EQ(*ScheduleTaskInfo::tasks()[1], ScheduleTaskInfo());
}

TEST(ScheduleTaskInfo, ValuesOfWrongTypesOrOutOfRangeAreTheFirstValues) {
    const QVariant object = QVariant::fromValue(ArchivedObject{"other", {}});
    const QVariantList bad{QVariant(),
                           true,
                           -1,
                           1e300,
                           "x",
                           QByteArray("x"),
                           QVariantList{"x", object},
                           QVariantMap{{"x", 1}},
                           object,
                           std::numeric_limits<qint64>::min(),
                           std::numeric_limits<qint64>::max(),
                           std::numeric_limits<quint64>::max()};
    const QStringList keys = archivedTask({}).value<ArchivedObject>().values.keys();
    for (const QString &key : keys) {
        for (const QVariant &value : bad) {
            auto changed = archivedTask({}).value<ArchivedObject>();
            changed.values[key] = value;
            const auto archive = foundation::unarchivedObject(foundation::archivedData(QVariant::fromValue(changed)));
            ASSERT_TRUE(archive);
            auto task = taskFromArchive(*archive);
            ASSERT_TRUE(task) << key.toStdString();
            // Where the type fits, the value may.
            task->_daily = task->_repeatEnabled = task->_repeatStopByManually = task->_shutdownAfterRecording = false;
            task->_taskName.clear();
            EXPECT_EQ(*task, ScheduleTaskInfo()) << key.toStdString() << " " << value.typeName();
        }
    }
    EXPECT_FALSE(taskFromArchive(object));
    EXPECT_FALSE(taskFromArchive(QVariant()));
    EXPECT_TRUE(taskFromArchive(QVariant::fromValue(ArchivedObject{"ScheduleTaskInfo", {}})));
}

TEST(ScheduleTaskInfo, ADamagedArchiveIsCopiedAsideAndStaysUntilTheNextSave) {
    const QString key = setting::kScheduleTaskList;
    const QByteArray damaged = foundation::archivedData(QVariantList{archivedTask(fullTask())}).left(200);
    ASSERT_TRUE(ZQUserDefaultSetValue_Object(damaged, key));
    testing::internal::CaptureStderr();
    TaskList list;
    list.LoadTasks();
    const QString told = QString::fromStdString(testing::internal::GetCapturedStderr());
    EXPECT_TRUE(ScheduleTaskInfo::tasks().empty());
    EXPECT_EQ(told.count('\n'), 1) << told.toStdString();
    EXPECT_EQ(AppSettings::getFromUserDefaults_Data(key), damaged);
    const QString copy = foundation::stateFolder() + "/cantorel/scheduleTaskList.damaged";
    EXPECT_EQ(test::contents(copy), damaged);
    EXPECT_TRUE(list.add(fullTask()).ok());
    EXPECT_EQ(AppSettings::scheduleTaskList().size(), 1);
    EXPECT_EQ(test::contents(copy), damaged);
}

} // namespace
} // namespace cantorel
