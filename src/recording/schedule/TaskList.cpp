#include "recording/schedule/TaskList.h"

#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/StoredList.h"
#include "settings/UserDefaultFunctions.h"

#include <algorithm>
#include <utility>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kTasksNotSaved("TasksNotSaved", "FileName");

TaskList *living = nullptr;

Failure refusal(const QString &sentence) { return {sentence, sentence}; }

Failure isBeingRecorded(const QString &name) {
    return refusal(QStringLiteral("The task \"%1\" is being recorded; end it first: cantorel-cli stop").arg(name));
}

} // namespace

TaskList::TaskList() {
    if (!living)
        living = this;
}

TaskList::~TaskList() {
    if (living == this)
        living = nullptr;
}

TaskList *TaskList::current() { return living; }

void TaskList::LoadTasks() {
    mTasks =
        loadStoredList<Task>(QString::fromLatin1(setting::kScheduleTaskList),
                             foundation::stateFolder() + QStringLiteral("/cantorel"),
                             [](const QVariant &archived) -> std::optional<Task> {
                                 const auto task = taskFromArchive(archived);
                                 return task ? std::optional(std::make_shared<ScheduleTaskInfo>(*task)) : std::nullopt;
                             })
            .items;
    mIsLoaded = true;
}

bool TaskList::SaveTasks() {
    QVariantList list;
    for (const Task &task : tasks())
        list << archivedTask(*task);
    AppSettings::setScheduleTaskList(list);
    // The setter has written already; what it could not write is tried again here.
    return standardUserDefaults().synchronize();
}

const TaskList::Tasks &TaskList::tasks() & {
    if (!mIsLoaded)
        LoadTasks();
    return mTasks;
}

// Keeps the list as it was where the new one can't be stored.
Result<void> TaskList::take(Tasks tasks) {
    std::swap(mTasks, tasks);
    if (!SaveTasks()) {
        std::swap(mTasks, tasks);
        return Failure{kTasksNotSaved(standardUserDefaults().filePath()), QStringLiteral("the tasks were not saved")};
    }
    Q_EMIT changed();
    return {};
}

Result<TaskList::Task> TaskList::add(const ScheduleTaskInfo &task) {
    Tasks all = tasks();
    all.push_back(std::make_shared<ScheduleTaskInfo>(task));
    const Task added = all.back();
    if (const auto taken = take(std::move(all)); !taken)
        return taken.failure();
    return added;
}

Result<TaskList::Task> TaskList::change(const Task &task, const ScheduleTaskInfo &to) {
    if (task == mRunning)
        return isBeingRecorded(task->_taskName);
    Tasks all = tasks();
    const auto place = std::find(all.begin(), all.end(), task);
    if (place == all.end())
        return add(to);
    const Task changed = *place = std::make_shared<ScheduleTaskInfo>(to);
    changed->dealtWithStart = task->dealtWithStart; // or it would be made again where the clock is set back
    if (const auto taken = take(std::move(all)); !taken)
        return taken.failure();
    return changed;
}

Result<void> TaskList::remove(const Task &task) {
    if (task == mRunning)
        return isBeingRecorded(task->_taskName);
    Tasks kept = tasks();
    std::erase(kept, task);
    return take(std::move(kept));
}

Result<TaskList::Tasks> TaskList::removeNamed(const QString &name) {
    Tasks kept, removed;
    for (const Task &task : tasks())
        (task->_taskName == name ? removed : kept).push_back(task);
    if (removed.empty())
        return refusal(
            QStringLiteral("There is no task \"%1\"; \"cantorel-cli tasks list\" shows all of them.").arg(name));
    if (std::find(removed.begin(), removed.end(), mRunning) != removed.end())
        return isBeingRecorded(name);
    if (const auto taken = take(std::move(kept)); !taken)
        return taken.failure();
    return removed;
}

Result<void> TaskList::settleStart(const Task &task, const QDateTime &start) {
    if (std::find(tasks().begin(), tasks().end(), task) == tasks().end())
        return {}; // It has left the list meanwhile.
    const QDateTime before = std::exchange(task->dealtWithStart, start);
    const auto taken = take(tasks());
    if (!taken)
        task->dealtWithStart = before;
    return taken;
}

void TaskList::replace(const Task &task, const Task &by) { std::replace(mTasks.begin(), mTasks.end(), Task(task), by); }

void TaskList::drop(const Tasks &over) {
    std::erase_if(mTasks, [&](const Task &task) { return std::find(over.begin(), over.end(), task) != over.end(); });
    (void)SaveTasks(); // A failure is logged, and the next save tries again.
    Q_EMIT changed();
}

// The static operations.

void ScheduleTaskInfo::LoadTasks() {
    if (TaskList *list = TaskList::current())
        list->LoadTasks();
}

bool ScheduleTaskInfo::SaveTasks() {
    TaskList *list = TaskList::current();
    return list && list->SaveTasks();
}

ScheduleTaskInfo::Tasks ScheduleTaskInfo::tasks() {
    TaskList *list = TaskList::current();
    return list ? list->tasks() : Tasks();
}

void ScheduleTaskInfo::setCurrentRuningTask(std::shared_ptr<ScheduleTaskInfo> task) {
    if (TaskList *list = TaskList::current())
        list->setCurrentRuningTask(std::move(task));
}

std::shared_ptr<ScheduleTaskInfo> ScheduleTaskInfo::currentRuningTask() {
    TaskList *list = TaskList::current();
    return list ? list->currentRuningTask() : nullptr;
}

} // namespace cantorel
