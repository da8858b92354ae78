#include "recording/schedule/ScheduleCheck.h"

namespace cantorel {

namespace {

// Where clocks leap over a daily task's time of day, that start is moved; it is not stored, since it would be the time
// of day of all later ones.
void moveToNextStart(ScheduleTaskInfo &task, const QDateTime &start) {
    const auto secondOfDay = [](const QTime &time) { return time.msecsSinceStartOfDay() / 1000; };
    if (secondOfDay(start.toLocalTime().time()) != secondOfDay(task._fromTime.toLocalTime().time()))
        return;
    task._fromTime = start;
    task._toTime = start.addSecs(task._duration);
}

} // namespace

ScheduleCheck checkTasks(const ScheduleTaskInfo::Tasks &tasks, const ScheduleTaskInfo *executed, const QDateTime &now) {
    ScheduleCheck result;
    for (const auto &task : tasks) {
        // A start is a moment, as it is stored: one that followed the time zone would wander with it until the next
        // load.
        task->_fromTime = task->_fromTime.toUTC();
        QDateTime start = task->_fromTime;
        if (task->_daily) {
            const auto startAfter = [&](const QDateTime &moment) {
                return ScheduleTaskInfo::getDateFromDailyTime(task->_fromTime, task->WeeksOn_, moment).toUTC();
            };
            start = startAfter(now);
            if (start.isValid() && start == task->dealtWithStart) // skipped, or behind before the clock was set back
                start = startAfter(start.addSecs(1));
            if (start.isValid())
                moveToNextStart(*task, start);
        }
        const bool isOver = !start.isValid() || start <= now || (task->_completed && !task->_daily);
        if (isOver) {
            if (task.get() != executed && !task->_daily)
                result.expired.push_back(task);
            continue;
        }
        task->awaitedStart = start;
        // A clock that was set back makes a start lie ahead that is behind.
        if (start == task->dealtWithStart || task.get() == executed)
            continue;
        const qint64 toGo = now.msecsTo(start);
        // Deliberate: whole seconds are compared, so of two tasks of one second the first in the list wins.
        if (!result.closest || toGo / 1000 < result.secondsToGo()) {
            result.closest = task;
            result.start = start;
            result.millisecondsToGo = toGo;
        }
    }
    return result;
}

} // namespace cantorel
