#pragma once

#include "platform/foundation/Result.h"
#include "recording/library/RecordedList.h"
#include "recording/schedule/ScheduleTaskInfo.h"

namespace cantorel {

// Changes to recordings and tasks as a person names them, on the command line or from another program. Only for the
// owner of the lists; the change is on the disk when they return. A failure is one sentence, and nothing has changed
// then. file: an absolute path.

// The new path.
foundation::Result<QString> renameRecording(RecordedList &list, const QString &file, const QString &name);
foundation::Result<void> removeRecording(RecordedList &list, const QString &file, bool deletesFile);

foundation::Result<void> addTask(const ScheduleTaskInfo &task);
// Every one of that name, which are answered. executed: can't be removed; may be null.
foundation::Result<ScheduleTaskInfo::Tasks> removeTasks(const QString &name, const ScheduleTaskInfo *executed);

} // namespace cantorel
