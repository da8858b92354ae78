#pragma once

#include "platform/foundation/Result.h"
#include "recording/schedule/ScheduleTaskInfo.h"

#include <QObject>

namespace cantorel {

// The scheduled tasks of the person. Every change by somebody is on the disk before the call that makes it returns, or
// has not happened. The static operations of ScheduleTaskInfo act on the list that lives. Owned by the application or a
// command, one at a time; main thread.
class TaskList : public QObject {
    Q_OBJECT

public:
    using Task = std::shared_ptr<ScheduleTaskInfo>;
    using Tasks = ScheduleTaskInfo::Tasks;

    TaskList();
    ~TaskList() override;
    static TaskList *current();

    // Reads the stored list; a damaged one is copied aside, and the list starts empty.
    void LoadTasks();
    // Stores the whole list; it is on the disk when this returns. False when that failed; the log says why.
    bool SaveTasks();
    // Read from the store when they are first wanted.
    const Tasks &tasks() &;

    foundation::Result<Task> add(const ScheduleTaskInfo &task);
    // Puts what a person has changed in the place of a task, whose start that is dealt with stays so. One that has left
    // the list meanwhile is added. A task that is recorded now is not changed.
    foundation::Result<Task> change(const Task &task, const ScheduleTaskInfo &to);
    // Tasks that are recorded now are not removed.
    foundation::Result<void> remove(const Task &task);
    foundation::Result<Tasks> removeNamed(const QString &name);
    // The start is not made any more, whoever looks at the task; an invalid one is none.
    foundation::Result<void> settleStart(const Task &task, const QDateTime &start);
    // One object in the place of another that says the same.
    void replace(const Task &task, const Task &by);
    // What is over, whether it can be stored now or with the next save.
    void drop(const Tasks &tasks);

    void setCurrentRuningTask(Task task) { mRunning = std::move(task); } // Spelling is fixed.
    const Task &currentRuningTask() const { return mRunning; }           // Spelling is fixed.

Q_SIGNALS:
    // Tasks were added or removed, by this program or another.
    void changed();

private:
    foundation::Result<void> take(Tasks tasks);

    Tasks mTasks;
    Task mRunning;
    bool mIsLoaded = false;
};

} // namespace cantorel
