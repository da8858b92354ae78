#include "recording/schedule/ScheduleTaskText.h"

#include "lang/Lang.h"
#include "settings/RecordingSource.h"
#include "util/ToolFile.h"

#include <QJsonArray>

#include <algorithm>
#include <iterator>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kTaskName("TaskName", "Name");
constexpr foundation::SentenceKey kTaskLength("TaskLength", "Count");
constexpr foundation::SentenceKey kTaskWeekday("TaskWeekday");

const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");
const QString kManual = QStringLiteral("manual");
constexpr int kSaturday = 6;

QJsonValue textOrNull(const QDateTime &moment) {
    return moment.isValid() ? QJsonValue(scheduleTimeText(moment)) : QJsonValue();
}

Failure wrong(const foundation::Sentence &sentence) { return {sentence, Lang::english(sentence)}; }

Result<QList<int>> weeksFrom(const QJsonArray &json) {
    QList<int> weeks;
    for (const auto &value : json) {
        const int day = value.toInt(-1);
        if (day < 0 || day > kSaturday)
            return wrong(QStringLiteral("The weekdays of a task are numbers from 0 for Sunday to 6 for Saturday."));
        if (!weeks.contains(day))
            weeks << day;
    }
    return weeks;
}

} // namespace

QString scheduleTimeText(const QDateTime &moment) { return moment.toLocalTime().toString(kTimeFormat); }

std::optional<QDateTime> scheduleTimeFrom(const QString &text) {
    const QStringList parts = text.split(QLatin1Char(' '));
    if (parts.size() != 2)
        return {};
    const QDate date = QDate::fromString(parts[0], QStringLiteral("yyyy-MM-dd"));
    const QTime time = QTime::fromString(parts[1], QStringLiteral("HH:mm:ss"));
    if (!date.isValid() || !time.isValid())
        return {};
    const QDateTime moment(date, time);
    return moment.isValid() ? moment : QDateTime::fromMSecsSinceEpoch(moment.toMSecsSinceEpoch());
}

QJsonObject jsonOfTask(const ScheduleTaskInfo &task) {
    QJsonArray weeks;
    for (const int day : task.WeeksOn_)
        weeks.append(day);
    const QJsonValue repeat = !task._repeatEnabled         ? QJsonValue()
                              : task._repeatStopByManually ? QJsonValue(kManual)
                                                           : QJsonValue(task._repeatTotalCount);
    return {
        {QStringLiteral("name"), task._taskName},
        {QStringLiteral("from"), textOrNull(task._fromTime)},
        {QStringLiteral("to"), textOrNull(task._toTime)},
        {QStringLiteral("seconds"), task._duration},
        {QStringLiteral("source"), nameOf(recordingSource(task._recordFrom).value_or(RecordingSource::SystemSound))},
        {QStringLiteral("daily"), task._daily},
        {QStringLiteral("weeks"), weeks},
        {QStringLiteral("repeat"), repeat},
        {QStringLiteral("looped"), task._repeatLoopedCount},
        {QStringLiteral("shutdown"), task._shutdownAfterRecording}};
}

Result<ScheduleTaskInfo> taskFromJson(const QJsonObject &json) {
    const auto text = [&](const char *key) { return json.value(QLatin1String(key)).toString(); };
    ScheduleTaskInfo task;
    task._taskName = text("name");
    if (ToolFile::cleanFileName(task._taskName).isEmpty())
        return wrong(kTaskName(task._taskName));
    const auto from = scheduleTimeFrom(text("from"));
    if (!from)
        return wrong(QStringLiteral("\"%1\" is no time; write it as \"2026-12-31 20:15:00\".").arg(text("from")));
    task._fromTime = *from;
    task._duration = json.value(QLatin1String("seconds")).toInteger();
    if (task._duration < 1 || task._duration > kLongestTaskSeconds)
        return wrong(kTaskLength(QString::number(kLongestTaskSeconds)));
    task._toTime = from->addSecs(task._duration);
    const auto source = recordingSourceNamed(text("source"));
    if (!source)
        return wrong(QStringLiteral("\"%1\" is no source; it is system, mic or both.").arg(text("source")));
    task._recordFrom = static_cast<int>(*source);
    task._daily = json.value(QLatin1String("daily")).toBool();
    const auto weeks = weeksFrom(json.value(QLatin1String("weeks")).toArray());
    if (!weeks)
        return weeks.failure();
    if (task._daily && weeks.value().isEmpty())
        return wrong(kTaskWeekday());
    task.WeeksOn_ = weeks.value();
    const QJsonValue repeat = json.value(QLatin1String("repeat"));
    task._repeatEnabled = !repeat.isUndefined() && !repeat.isNull();
    task._repeatStopByManually = repeat == QJsonValue(kManual);
    if (task._repeatEnabled && !task._repeatStopByManually) {
        task._repeatTotalCount = repeat.toInt(-1);
        if (task._repeatTotalCount < 0)
            return wrong(QStringLiteral("\"%1\" is no count of repetitions; write a whole number, or \"manual\".")
                             .arg(repeat.toVariant().toString()));
    }
    task._shutdownAfterRecording = json.value(QLatin1String("shutdown")).toBool();
    return task;
}

} // namespace cantorel
