#pragma once

#include "recording/schedule/ScheduleTaskInfo.h"

namespace cantorel {

// What one look at the list finds.
struct ScheduleCheck {
    std::shared_ptr<ScheduleTaskInfo> closest; // null: no task lies ahead
    QDateTime start;                           // of the closest
    qint64 millisecondsToGo = 0;
    ScheduleTaskInfo::Tasks expired; // their start is over, and they have no other

    qint64 secondsToGo() const { return millisecondsToGo / 1000; }
    bool isDue() const { return closest && millisecondsToGo < 1000; }
};

// Looks at the list as at the moment. Daily tasks get their next start and end; nothing else changes, save that starts
// are held in UTC. executed: is never expired; may be null.
ScheduleCheck checkTasks(const ScheduleTaskInfo::Tasks &tasks, const ScheduleTaskInfo *executed, const QDateTime &now);

} // namespace cantorel
