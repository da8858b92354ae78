#pragma once

#include "platform/foundation/Result.h"
#include "recording/schedule/ScheduleTaskInfo.h"

#include <QJsonObject>

namespace cantorel {

// What a task may record at most.
inline constexpr qint64 kLongestTaskSeconds = 10LL * 366 * 86'400;

// "YYYY-MM-DD HH:MM:SS" of local time, and back; nothing for other texts. An hour that the clocks leap over is the one
// after it.
QString scheduleTimeText(const QDateTime &moment);
std::optional<QDateTime> scheduleTimeFrom(const QString &text);

// A task as programs and scripts see it: "name", "from", "to", "seconds", "source", "daily", "weeks", "repeat" (a
// number, "manual" or null), "looped", "shutdown".
QJsonObject jsonOfTask(const ScheduleTaskInfo &task);
// A new task; "to" and "looped" are not looked at, and what is missing is as in a task that is made once. A failure is
// one sentence on what is wrong.
foundation::Result<ScheduleTaskInfo> taskFromJson(const QJsonObject &json);

} // namespace cantorel
