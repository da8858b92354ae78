#include "cli/Commands.h"
#include "cli/RunningInstance.h"
#include "cli/TasksRun.h"
#include "recording/control/RecordingControl.h"
#include "recording/schedule/ScheduleCheck.h"
#include "recording/schedule/ScheduleTaskText.h"
#include "recording/schedule/TaskList.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

using TaskPtr = std::shared_ptr<ScheduleTaskInfo>;

struct AddArguments {
    std::string name, from, source, weeks, repeat;
    qint64 seconds = 0;
    bool daily = false, shutdown = false;
};

// "1,3"; null when a part is no weekday.
QJsonValue weeksFrom(const std::string &text) {
    QJsonArray weeks;
    for (const QString &part : QString::fromStdString(text).split(QLatin1Char(','))) {
        if (part.size() != 1 || part[0] < QLatin1Char('0') || part[0] > QLatin1Char('6'))
            return {};
        weeks.append(part[0].digitValue());
    }
    return weeks;
}

QString textOf(const ScheduleTaskInfo &task) {
    QStringList parts{task._taskName};
    parts << (task._daily ? QStringLiteral("%1 (%2)").arg(task.getDailyFromNSString(), task.getWeekOnDesc())
                          : task.getFromTimeNSString());
    parts << task.getDurationNSString() << task.getRecordFromNSString();
    if (task._repeatEnabled)
        parts << (task._repeatTotalCount > 0 ? QStringLiteral("%1 times").arg(task._repeatTotalCount)
                                             : QStringLiteral("until stopped by hand"));
    if (task._shutdownAfterRecording)
        parts << QStringLiteral("shuts down");
    return parts.join(QStringLiteral("; "));
}

void show(const CommandSession &session, const ScheduleTaskInfo &task) {
    session.answer(jsonOfTask(task), textOf(task));
}

const QString kTheTasks = QStringLiteral("the tasks");

// What the arguments say; a failure when they say nothing that can be.
foundation::Result<ScheduleTaskInfo> taskFrom(const AddArguments &arguments) {
    QJsonObject json{{QStringLiteral("name"), QString::fromStdString(arguments.name)},
                     {QStringLiteral("from"), QString::fromStdString(arguments.from)},
                     {QStringLiteral("seconds"), arguments.seconds},
                     {QStringLiteral("source"), QString::fromStdString(arguments.source)},
                     {QStringLiteral("daily"), arguments.daily},
                     {QStringLiteral("shutdown"), arguments.shutdown}};
    if (arguments.daily) {
        const QJsonValue weeks = weeksFrom(arguments.weeks);
        if (weeks.isNull())
            return foundation::Failure{
                QStringLiteral("\"%1\" are no weekdays; write them as \"1,3\", from 0 for Sunday to 6 for Saturday.")
                    .arg(QString::fromStdString(arguments.weeks)),
                {}};
        json.insert(QStringLiteral("weeks"), weeks);
    }
    if (!arguments.repeat.empty()) {
        const QString repeat = QString::fromStdString(arguments.repeat);
        bool isNumber = false;
        const int count = repeat.toInt(&isNumber);
        json.insert(QStringLiteral("repeat"), isNumber ? QJsonValue(count) : QJsonValue(repeat));
    }
    return taskFromJson(json);
}

Outcome add(const CommandSession &session, const AddArguments &arguments) {
    const auto task = taskFrom(arguments);
    if (!task)
        return Outcome::wrongUsage(task.failure().sentence);
    const QByteArray json = QJsonDocument(jsonOfTask(task.value())).toJson(QJsonDocument::Compact);
    return changeOwnedList(
        kTheTasks,
        [&] {
            if (const auto added = TaskList().add(task.value()); !added)
                return Outcome::failed(added.failure().sentence);
            show(session, task.value());
            return Outcome::done();
        },
        control::kAddTask, {QString::fromUtf8(json)}, [&](const QVariantMap &) { show(session, task.value()); });
}

Outcome list(const CommandSession &session) {
    TaskList tasks;
    for (const TaskPtr &task : tasks.tasks())
        show(session, *task);
    return Outcome::done();
}

Outcome removeNamed(const CommandSession &session, const QString &name) {
    TaskList before;
    const auto stored = before.tasks(); // shown as they were
    return changeOwnedList(
        kTheTasks,
        [&] {
            const auto removed = TaskList().removeNamed(name);
            if (!removed)
                return Outcome::failed(removed.failure().sentence);
            for (const TaskPtr &task : removed.value())
                show(session, *task);
            return Outcome::done();
        },
        control::kRemoveTasks, {name},
        [&](const QVariantMap &) {
            for (const TaskPtr &task : stored) {
                if (task->_taskName == name)
                    show(session, *task);
            }
        });
}

// One check on what has just been read, so nothing stored changes.
Outcome next(const CommandSession &session, const QDateTime &now) {
    TaskList tasks;
    const ScheduleCheck found = checkTasks(tasks.tasks(), nullptr, now);
    QStringList expired;
    for (const TaskPtr &task : found.expired)
        expired << task->_taskName;
    const auto orNull = [&](const QJsonValue &value) { return found.closest ? value : QJsonValue(); };
    const QString closest = found.closest ? found.closest->_taskName : QString();
    QString text = found.closest
                       ? QStringLiteral("%1 starts at %2, in %3 s.")
                             .arg(closest, scheduleTimeText(found.start), QString::number(found.secondsToGo()))
                       : QStringLiteral("No task lies ahead.");
    if (!expired.isEmpty())
        text += QStringLiteral(" Expired: %1.").arg(expired.join(QStringLiteral(", ")));
    session.answer({{QStringLiteral("closest"), orNull(closest)},
                    {QStringLiteral("start"), orNull(scheduleTimeText(found.start))},
                    {QStringLiteral("secondsToGo"), orNull(found.secondsToGo())},
                    {QStringLiteral("expired"), QJsonArray::fromStringList(expired)}},
                   text);
    return Outcome::done();
}

void addAdding(CLI::App &tasks, CommandSession &session) {
    const auto arguments = std::make_shared<AddArguments>();
    CLI::App &adding = addVerb(
        tasks, session, "add", "Schedules a recording",
        "tasks add --name News --from \"2026-12-31 20:00:00\" --seconds 900 --source system --daily --weeks 1,3",
        [&session, arguments] { return add(session, *arguments); });
    adding.add_option("--name", arguments->name, "The task's name, which its recordings get")->required();
    adding.add_option("--from", arguments->from, "Its start, as \"YYYY-MM-DD HH:MM:SS\" of local time")->required();
    adding.add_option("--seconds", arguments->seconds, "How long it records")
        ->required()
        ->check(CLI::Range(qint64{1}, kLongestTaskSeconds));
    adding.add_option("--source", arguments->source, "system, mic or both")
        ->required()
        ->check(CLI::IsMember({"system", "mic", "both"}));
    CLI::Option *daily = adding.add_flag("--daily", arguments->daily, "On weekdays, at the time of day of its start");
    arguments->weeks = "0,1,2,3,4,5,6";
    adding.add_option("--weeks", arguments->weeks, "The weekdays, 0 for Sunday to 6 for Saturday; without it all")
        ->needs(daily);
    adding.add_option("--repeat", arguments->repeat,
                      "How many recordings it makes in a row; 0 or \"manual\": until it is stopped by hand");
    adding.add_flag("--shutdown", arguments->shutdown, "Shut the computer down when it has finished");
}

} // namespace

void addTasksCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string name, now;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &tasks = addVerb(root, session, "tasks", "Shows and changes the scheduled recordings", "tasks list");
    addAdding(tasks, session);
    addVerb(tasks, session, "list", "All tasks", "tasks list --json", [&session] { return list(session); });

    CLI::App &removing =
        addVerb(tasks, session, "remove", "Removes every task of that name", "tasks remove News",
                [&session, arguments] { return removeNamed(session, QString::fromStdString(arguments->name)); });
    removing.add_option("NAME", arguments->name, "The task's name")->required();

    addVerb(tasks, session, "run", "Keeps the schedule until Ctrl-C", "tasks run",
            [&session] { return TasksRun(session).run(); });

    CLI::App &looking = addVerb(tasks, session, "next", "What one look at the list finds; changes nothing",
                                "tasks next --now \"2026-12-31 19:59:00\"", [&session, arguments] {
                                    if (arguments->now.empty())
                                        return next(session, QDateTime::currentDateTime());
                                    const auto now = scheduleTimeFrom(QString::fromStdString(arguments->now));
                                    if (!now)
                                        return Outcome::wrongUsage(
                                            QStringLiteral("\"%1\" is no time; write it as \"2026-12-31 20:15:00\".")
                                                .arg(QString::fromStdString(arguments->now)));
                                    return next(session, *now);
                                });
    looking.add_option("--now", arguments->now, "The local time to look at, as \"YYYY-MM-DD HH:MM:SS\"");
}

} // namespace cantorel
