#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

// One scheduled recording. Plain data; shared by the list and by whoever executes it, since an executed task may have
// left the list. Main thread.
struct ScheduleTaskInfo {
    QString _taskName;
    QDateTime _fromTime; // of a daily task the next start, of which only the time of day counts
    QDateTime _toTime;
    int _recordFrom = 0; // the number of a RecordingSource
    bool _shutdownAfterRecording = false;
    qint64 _duration = 0; // seconds
    bool _daily = false;
    bool _repeatEnabled = false;
    bool _repeatStopByManually = false;
    int _repeatTotalCount = 0;  // below 1: no limit
    int _repeatLoopedCount = 0; // recordings made so far
    QList<int> WeeksOn_;        // of a daily task; 0 Sunday to 6 Saturday

    QDateTime dealtWithStart; // the start that was executed, refused or reported as missed: never executed again

    // Not stored.
    bool _completed = false;
    QDateTime awaitedStart; // the start that a check has seen ahead

    ScheduleTaskInfo() = default;
    // The duration is what lies between the two times.
    ScheduleTaskInfo(const QString &TaskName, const QDateTime &FromTime, const QDateTime &ToTime, int RecordFromDevice,
                     bool ShutdownAfterRecording);
    bool operator==(const ScheduleTaskInfo &) const = default;

    // Texts for a person.
    QString getFromTimeNSString() const; // "yyyy-MM-dd HH:mm:ss", local
    QString getDurationNSString() const; // "hh:mm:ss"
    QString getShutdownNSString() const;
    QString getRecordFromNSString() const;
    QString getDailyFromNSString() const;
    QString getWeekOnDesc() const; // the days of the set, in the order of the week
    // Seven, from Sunday on.
    static QStringList getAllWeeks();

    using Tasks = std::vector<std::shared_ptr<ScheduleTaskInfo>>;
    // These act on the one TaskList that exists; without one they do nothing.
    static void LoadTasks();
    static bool SaveTasks();
    static Tasks tasks();
    static void setCurrentRuningTask(std::shared_ptr<ScheduleTaskInfo> task); // Spelling is fixed.
    static std::shared_ptr<ScheduleTaskInfo> currentRuningTask();             // Spelling is fixed.

    // Days by the calendar of the place where the program runs; 0 is Sunday.
    static int getCurrentWeekday(const QDateTime &now = QDateTime::currentDateTime());
    static bool isWeekInArray(const QList<int> &weeks, const QDateTime &now = QDateTime::currentDateTime());
    static bool isWeekInArray(const QList<int> &weeks, int theWeekday);
    // The time of day on today's date. Invalid for an invalid time.
    static QDateTime getDateTimeFromTimeUseCurrentDate(const QDateTime &time,
                                                       const QDateTime &now = QDateTime::currentDateTime());
    // The next start of a daily task; invalid when its set names no day.
    static QDateTime getDateFromDailyTime(const QDateTime &time, const QList<int> &withWeeks,
                                          const QDateTime &now = QDateTime::currentDateTime());
};

// The item of a keyed archive, and back; nothing for what is no task. Fields of another type get their first value.
QVariant archivedTask(const ScheduleTaskInfo &task);
std::optional<ScheduleTaskInfo> taskFromArchive(const QVariant &archivedTask);

} // namespace cantorel
