#include "recording/control/ListRequests.h"

#include "settings/UserDefaultFunctions.h"

#include <QFile>

#include <algorithm>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

Failure refusal(const QString &sentence) { return {sentence, sentence}; }

// The item, if it is listed and nothing is being done with its file.
Result<RecordedAudioInfo *> idleItem(const RecordedList &list, const QString &file) {
    RecordedAudioInfo *item = list.itemWithFile(file);
    if (!item)
        return refusal(
            QStringLiteral("\"%1\" is not in the list; \"cantorel-cli library list\" shows what is.").arg(file));
    if (item->isInUse())
        return refusal(
            QStringLiteral("\"%1\" is still being recorded or converted; try again when that has ended.").arg(file));
    return item;
}

// Takes the tasks as they were before when they can't be stored.
Result<void> saveTasks(ScheduleTaskInfo::Tasks before) {
    if (ScheduleTaskInfo::SaveTasks())
        return {};
    ScheduleTaskInfo::tasks() = std::move(before);
    return refusal(QStringLiteral("The tasks were not saved: \"%1\" cannot be read or written; check its rights, its "
                                  "folder and the free space.")
                       .arg(standardUserDefaults().filePath()));
}

} // namespace

Result<QString> renameRecording(RecordedList &list, const QString &file, const QString &name) {
    const auto item = idleItem(list, file);
    if (!item)
        return item.failure();
    if (const auto renamed = list.rename(*item.value(), name); !renamed)
        return renamed.failure();
    return item.value()->getFileName();
}

Result<void> removeRecording(RecordedList &list, const QString &file, bool deletesFile) {
    const auto item = idleItem(list, file);
    if (!item)
        return item.failure();
    if (deletesFile && !QFile::remove(file))
        return refusal(QStringLiteral("\"%1\" can't be deleted; check the rights of its folder.").arg(file));
    const std::size_t place = list.indexOf(*item.value());
    const RecordedAudioFields fields = item.value()->fields();
    list.remove(*item.value());
    if (list.unsaved().isEmpty())
        return {};
    const QString why = list.unsaved();
    if (!deletesFile)
        list.insert(place, fields);
    return refusal(why);
}

Result<void> addTask(const ScheduleTaskInfo &task) {
    const auto before = ScheduleTaskInfo::tasks();
    ScheduleTaskInfo::tasks().push_back(std::make_shared<ScheduleTaskInfo>(task));
    return saveTasks(before);
}

Result<ScheduleTaskInfo::Tasks> removeTasks(const QString &name, const ScheduleTaskInfo *executed) {
    const auto before = ScheduleTaskInfo::tasks();
    ScheduleTaskInfo::Tasks kept, removed;
    for (const auto &task : before)
        (task->_taskName == name ? removed : kept).push_back(task);
    if (removed.empty())
        return refusal(
            QStringLiteral("There is no task \"%1\"; \"cantorel-cli tasks list\" shows all of them.").arg(name));
    if (std::any_of(removed.begin(), removed.end(), [&](const auto &task) { return task.get() == executed; }))
        return refusal(QStringLiteral("The task \"%1\" is being recorded; end it first: cantorel-cli stop").arg(name));
    ScheduleTaskInfo::tasks() = std::move(kept);
    if (const auto saved = saveTasks(before); !saved)
        return saved.failure();
    return removed;
}

} // namespace cantorel
