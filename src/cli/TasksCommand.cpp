#include "cli/TasksCommand.h"

#include "cli/Hardware.h"
#include "cli/TasksRun.h"
#include "recording/RecordingJournal.h"
#include "recording/ScheduleCheck.h"
#include "recording/ScheduleTaskInfo.h"
#include "settings/UserDefaultFunctions.h"
#include "util/ToolFile.h"

#include <QJsonArray>
#include <QJsonValue>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <memory>

namespace cantorel {

namespace {

using TaskPtr = std::shared_ptr<ScheduleTaskInfo>;

const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");
constexpr const char *kSources[] = {"system", "mic", "both"};
constexpr qint64 kLongestSeconds = 10LL * 366 * 86'400;

struct AddArguments {
    std::string name, from, source, weeks, repeat;
    qint64 seconds = 0;
    bool daily = false, shutdown = false;
};

QString textOf(const QDateTime &moment) { return moment.toLocalTime().toString(kTimeFormat); }

QJsonValue textOrNull(const QDateTime &moment) { return moment.isValid() ? QJsonValue(textOf(moment)) : QJsonValue(); }

// "YYYY-MM-DD HH:MM:SS"; an hour that the clocks leap over is the one after it.
std::optional<QDateTime> momentFrom(const std::string &text) {
    const QStringList parts = QString::fromStdString(text).split(QLatin1Char(' '));
    if (parts.size() != 2)
        return {};
    const QDate date = QDate::fromString(parts[0], QStringLiteral("yyyy-MM-dd"));
    const QTime time = QTime::fromString(parts[1], QStringLiteral("HH:mm:ss"));
    if (!date.isValid() || !time.isValid())
        return {};
    const QDateTime moment(date, time);
    return moment.isValid() ? moment : QDateTime::fromMSecsSinceEpoch(moment.toMSecsSinceEpoch());
}

// "1,3"; nothing when a part is no weekday.
std::optional<QList<int>> weeksFrom(const std::string &text) {
    QList<int> weeks;
    for (const QString &part : QString::fromStdString(text).split(QLatin1Char(','))) {
        if (part.size() != 1 || part[0] < QLatin1Char('0') || part[0] > QLatin1Char('6'))
            return {};
        if (const int day = part[0].digitValue(); !weeks.contains(day))
            weeks << day;
    }
    return weeks;
}

QJsonObject jsonOf(const ScheduleTaskInfo &task) {
    QJsonArray weeks;
    for (const int day : task.WeeksOn_)
        weeks.append(day);
    const QJsonValue repeat = !task._repeatEnabled         ? QJsonValue()
                              : task._repeatStopByManually ? QJsonValue(QStringLiteral("manual"))
                                                           : QJsonValue(task._repeatTotalCount);
    return {{QStringLiteral("name"), task._taskName},
            {QStringLiteral("from"), textOrNull(task._fromTime)},
            {QStringLiteral("to"), textOrNull(task._toTime)},
            {QStringLiteral("seconds"), task._duration},
            {QStringLiteral("source"), QString::fromLatin1(kSources[std::clamp(task._recordFrom, 0, 2)])},
            {QStringLiteral("daily"), task._daily},
            {QStringLiteral("weeks"), weeks},
            {QStringLiteral("repeat"), repeat},
            {QStringLiteral("looped"), task._repeatLoopedCount},
            {QStringLiteral("shutdown"), task._shutdownAfterRecording}};
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

void show(const CommandSession &session, const ScheduleTaskInfo &task) { session.answer(jsonOf(task), textOf(task)); }

// Changes the list as its only owner.
Outcome change(const std::function<Outcome()> &action) {
    RecordingJournal owner(Hardware::stateFolder());
    if (!owner.claim())
        return Outcome::failed(QStringLiteral("Another Cantorel is running and owns the tasks; stop it, or change them "
                                              "there."));
    ScheduleTaskInfo::LoadTasks();
    return action();
}

Outcome saved() {
    if (ScheduleTaskInfo::SaveTasks())
        return Outcome::done();
    return Outcome::failed(QStringLiteral("The tasks were not saved: \"%1\" cannot be read or written; check its "
                                          "rights, its folder and the free space.")
                               .arg(standardUserDefaults().filePath()));
}

// Fills the task; answers what is wrong with the arguments, or nothing.
QString fill(ScheduleTaskInfo &task, const AddArguments &arguments) {
    task._taskName = QString::fromStdString(arguments.name);
    if (ToolFile::cleanFileName(task._taskName).isEmpty())
        return QStringLiteral("\"%1\" cannot be the name of a file; choose another name.").arg(task._taskName);
    const auto from = momentFrom(arguments.from);
    if (!from)
        return QStringLiteral("\"%1\" is no time; write it as \"2026-12-31 20:15:00\".")
            .arg(QString::fromStdString(arguments.from));
    task._fromTime = *from;
    task._duration = arguments.seconds;
    task._toTime = from->addSecs(arguments.seconds);
    task._recordFrom = static_cast<int>(
        std::distance(std::begin(kSources), std::find(std::begin(kSources), std::end(kSources), arguments.source)));
    task._daily = arguments.daily;
    if (task._daily) {
        const auto weeks = weeksFrom(arguments.weeks);
        if (!weeks)
            return QStringLiteral("\"%1\" are no weekdays; write them as \"1,3\", from 0 for Sunday to 6 for Saturday.")
                .arg(QString::fromStdString(arguments.weeks));
        task.WeeksOn_ = *weeks;
    }
    task._repeatEnabled = !arguments.repeat.empty();
    task._repeatStopByManually = arguments.repeat == "manual";
    if (task._repeatEnabled && !task._repeatStopByManually) {
        bool isNumber = false;
        task._repeatTotalCount = QString::fromStdString(arguments.repeat).toInt(&isNumber);
        if (!isNumber || task._repeatTotalCount < 0)
            return QStringLiteral("\"%1\" is no count of repetitions; write a whole number, or \"manual\".")
                .arg(QString::fromStdString(arguments.repeat));
    }
    task._shutdownAfterRecording = arguments.shutdown;
    return {};
}

Outcome add(const CommandSession &session, const AddArguments &arguments) {
    const auto task = std::make_shared<ScheduleTaskInfo>();
    if (const QString wrong = fill(*task, arguments); !wrong.isEmpty())
        return Outcome::wrongUsage(wrong);
    return change([&] {
        ScheduleTaskInfo::tasks().push_back(task);
        const Outcome outcome = saved();
        if (outcome.status == 0)
            show(session, *task);
        return outcome;
    });
}

Outcome list(const CommandSession &session) {
    ScheduleTaskInfo::LoadTasks();
    for (const TaskPtr &task : ScheduleTaskInfo::tasks())
        show(session, *task);
    return Outcome::done();
}

Outcome removeNamed(const CommandSession &session, const QString &name) {
    return change([&] {
        auto &tasks = ScheduleTaskInfo::tasks();
        const auto kept = std::stable_partition(tasks.begin(), tasks.end(),
                                                [&](const TaskPtr &task) { return task->_taskName != name; });
        const ScheduleTaskInfo::Tasks removed(kept, tasks.end());
        if (removed.empty())
            return Outcome::failed(
                QStringLiteral("There is no task \"%1\"; \"cantorel-cli tasks list\" shows all of them.").arg(name));
        tasks.erase(kept, tasks.end());
        const Outcome outcome = saved();
        if (outcome.status == 0) {
            for (const TaskPtr &task : removed)
                show(session, *task);
        }
        return outcome;
    });
}

// One check on what has just been read, so nothing stored changes.
Outcome next(const CommandSession &session, const QDateTime &now) {
    ScheduleTaskInfo::LoadTasks();
    const ScheduleCheck found = checkTasks(ScheduleTaskInfo::tasks(), nullptr, now);
    QStringList expired;
    for (const TaskPtr &task : found.expired)
        expired << task->_taskName;
    const auto orNull = [&](const QJsonValue &value) { return found.closest ? value : QJsonValue(); };
    const QString closest = found.closest ? found.closest->_taskName : QString();
    QString text = found.closest ? QStringLiteral("%1 starts at %2, in %3 s.")
                                       .arg(closest, textOf(found.start), QString::number(found.secondsToGo()))
                                 : QStringLiteral("No task lies ahead.");
    if (!expired.isEmpty())
        text += QStringLiteral(" Expired: %1.").arg(expired.join(QStringLiteral(", ")));
    session.answer({{QStringLiteral("closest"), orNull(closest)},
                    {QStringLiteral("start"), orNull(textOf(found.start))},
                    {QStringLiteral("secondsToGo"), orNull(found.secondsToGo())},
                    {QStringLiteral("expired"), QJsonArray::fromStringList(expired)}},
                   text);
    return Outcome::done();
}

void addAdding(CLI::App &tasks, CommandSession &session) {
    const auto arguments = std::make_shared<AddArguments>();
    CLI::App *adding = tasks.add_subcommand("add", "Schedules a recording");
    adding->add_option("--name", arguments->name, "The task's name, which its recordings get")->required();
    adding->add_option("--from", arguments->from, "Its start, as \"YYYY-MM-DD HH:MM:SS\" of local time")->required();
    adding->add_option("--seconds", arguments->seconds, "How long it records")
        ->required()
        ->check(CLI::Range(qint64{1}, kLongestSeconds));
    adding->add_option("--source", arguments->source, "system, mic or both")
        ->required()
        ->check(CLI::IsMember({"system", "mic", "both"}));
    CLI::Option *daily = adding->add_flag("--daily", arguments->daily, "On weekdays, at the time of day of its start");
    arguments->weeks = "0,1,2,3,4,5,6";
    adding->add_option("--weeks", arguments->weeks, "The weekdays, 0 for Sunday to 6 for Saturday; without it all")
        ->needs(daily);
    adding->add_option("--repeat", arguments->repeat,
                       "How many recordings it makes in a row; 0 or \"manual\": until it is stopped by hand");
    adding->add_flag("--shutdown", arguments->shutdown, "Shut the computer down when it has finished");
    adding->footer("Example: cantorel-cli tasks add --name News --from \"2026-12-31 20:00:00\" --seconds 900 --source "
                   "system --daily --weeks 1,3");
    adding->callback(
        [&session, arguments] { session.action = [&session, arguments] { return add(session, *arguments); }; });
}

} // namespace

void addTasksCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string name, now;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *tasks = root.add_subcommand("tasks", "Shows and changes the scheduled recordings");
    tasks->require_subcommand(1);
    tasks->footer("Example: cantorel-cli tasks list");
    addAdding(*tasks, session);

    CLI::App *listing = tasks->add_subcommand("list", "All tasks");
    listing->footer("Example: cantorel-cli tasks list --json");
    listing->callback([&session] { session.action = [&session] { return list(session); }; });

    CLI::App *removing = tasks->add_subcommand("remove", "Removes every task of that name");
    removing->add_option("NAME", arguments->name, "The task's name")->required();
    removing->footer("Example: cantorel-cli tasks remove News");
    removing->callback([&session, arguments] {
        session.action = [&session, arguments] {
            return removeNamed(session, QString::fromStdString(arguments->name));
        };
    });

    CLI::App *running = tasks->add_subcommand("run", "Keeps the schedule until Ctrl-C");
    running->footer("Example: cantorel-cli tasks run");
    running->callback([&session] { session.action = [&session] { return TasksRun(session).run(); }; });

    CLI::App *looking = tasks->add_subcommand("next", "What one look at the list finds; changes nothing");
    looking->add_option("--now", arguments->now, "The local time to look at, as \"YYYY-MM-DD HH:MM:SS\"");
    looking->footer("Example: cantorel-cli tasks next --now \"2026-12-31 19:59:00\"");
    looking->callback([&session, arguments] {
        session.action = [&session, arguments] {
            if (arguments->now.empty())
                return next(session, QDateTime::currentDateTime());
            const auto now = momentFrom(arguments->now);
            if (!now)
                return Outcome::wrongUsage(QStringLiteral("\"%1\" is no time; write it as \"2026-12-31 20:15:00\".")
                                               .arg(QString::fromStdString(arguments->now)));
            return next(session, *now);
        };
    });
}

} // namespace cantorel
