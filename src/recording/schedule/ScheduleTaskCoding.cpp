#include "platform/foundation/KeyedArchiver.h"
#include "recording/schedule/ScheduleTaskInfo.h"

#include <algorithm>
#include <limits>

namespace cantorel {

namespace {

using foundation::ArchivedObject;

const QString kClassName = QStringLiteral("ScheduleTaskInfo");
// The keys are those of stored settings; two differ from the names of their fields.
const QString kTaskName = QStringLiteral("_taskName");
const QString kFromTime = QStringLiteral("_fromTime");
const QString kToTime = QStringLiteral("_toTime");
const QString kRecordFrom = QStringLiteral("_recordFrom");
const QString kShutdown = QStringLiteral("_shutdown");
const QString kDuration = QStringLiteral("_duration");
const QString kDaily = QStringLiteral("_daily");
const QString kRepeatEnabled = QStringLiteral("_repeatEnabled");
const QString kRepeatStopByManually = QStringLiteral("_repeatStopByManually");
const QString kRepeatTotalCount = QStringLiteral("_repeatTotalCount");
const QString kRepeatLoopedCount = QStringLiteral("_repeatLoopedCount");
const QString kWeeksOn = QStringLiteral("_weeksOn");
// Beside the fixed ones, and only where there is such a start.
const QString kDealtWithStart = QStringLiteral("_dealtWithStart");

bool isInteger(const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

// Reads the fields of an object; a value of another type, or out of range, counts as missing.
class Fields {
public:
    explicit Fields(const ArchivedObject &object) : mValues(object.values) {}

    QString text(const QString &key) const { return ofType(key, QMetaType::QString).toString(); }
    QDateTime date(const QString &key) const { return ofType(key, QMetaType::QDateTime).toDateTime(); }
    bool truth(const QString &key) const { return ofType(key, QMetaType::Bool).toBool(); }
    qint64 integer(const QString &key, qint64 most) const {
        const QVariant value = mValues.value(key);
        const qint64 number = isInteger(value) ? value.toLongLong() : 0;
        return number >= 0 && number <= most ? number : 0;
    }
    int count(const QString &key, int most = std::numeric_limits<int>::max()) const {
        return static_cast<int>(integer(key, most));
    }
    QList<int> numbers(const QString &key) const {
        QList<int> numbers;
        for (const QVariant &item : ofType(key, QMetaType::QVariantList).toList()) {
            if (isInteger(item))
                numbers << static_cast<int>(std::clamp<qint64>(item.toLongLong(), -1, 100));
        }
        return numbers;
    }

private:
    QVariant ofType(const QString &key, QMetaType::Type type) const {
        const QVariant value = mValues.value(key);
        return value.typeId() == type ? value : QVariant();
    }

    const foundation::ArchivedValues &mValues;
};

} // namespace

QVariant archivedTask(const ScheduleTaskInfo &task) {
    QVariantList weeks;
    for (const int day : task.WeeksOn_)
        weeks << day;
    const auto date = [](const QDateTime &moment) { return moment.isValid() ? QVariant(moment) : QVariant(); };
    ArchivedObject object{kClassName,
                          {{kTaskName, task._taskName},
                           {kFromTime, date(task._fromTime)},
                           {kToTime, date(task._toTime)},
                           {kRecordFrom, task._recordFrom},
                           {kShutdown, task._shutdownAfterRecording},
                           {kDuration, task._duration},
                           {kDaily, task._daily},
                           {kRepeatEnabled, task._repeatEnabled},
                           {kRepeatStopByManually, task._repeatStopByManually},
                           {kRepeatTotalCount, task._repeatTotalCount},
                           {kRepeatLoopedCount, task._repeatLoopedCount},
                           {kWeeksOn, weeks}}};
    if (task.dealtWithStart.isValid())
        object.values[kDealtWithStart] = task.dealtWithStart;
    return QVariant::fromValue(object);
}

std::optional<ScheduleTaskInfo> taskFromArchive(const QVariant &archivedTask) {
    const auto *object = archivedTask.metaType() == QMetaType::fromType<ArchivedObject>()
                             ? static_cast<const ArchivedObject *>(archivedTask.constData())
                             : nullptr;
    if (!object || object->className != kClassName)
        return {};
    constexpr int kLastSource = 2;
    constexpr qint64 kLongest = qint64{100} * 366 * 86'400; // seconds
    const Fields fields(*object);
    ScheduleTaskInfo task;
    task._taskName = fields.text(kTaskName);
    task._fromTime = fields.date(kFromTime);
    task._toTime = fields.date(kToTime);
    task._recordFrom = fields.count(kRecordFrom, kLastSource);
    task._shutdownAfterRecording = fields.truth(kShutdown);
    task._duration = fields.integer(kDuration, kLongest);
    task._daily = fields.truth(kDaily);
    task._repeatEnabled = fields.truth(kRepeatEnabled);
    task._repeatStopByManually = fields.truth(kRepeatStopByManually);
    task._repeatTotalCount = fields.count(kRepeatTotalCount);
    task._repeatLoopedCount = fields.count(kRepeatLoopedCount);
    task.WeeksOn_ = fields.numbers(kWeeksOn);
    task.dealtWithStart = fields.date(kDealtWithStart);
    return task;
}

} // namespace cantorel
