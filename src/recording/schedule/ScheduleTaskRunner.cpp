#include "recording/schedule/ScheduleTaskRunner.h"

#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "settings/AppSettings.h"
#include "util/tools/Tools.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace cantorel {

using namespace std::chrono_literals;
using TaskPtr = std::shared_ptr<ScheduleTaskInfo>;

namespace {

constexpr foundation::SentenceKey kTaskInTheWay("TaskInTheWay", "Name");
constexpr foundation::SentenceKey kTaskNotRecorded("TaskNotRecorded", "Name", "Reason");
constexpr foundation::SentenceKey kTaskSlept("TaskSlept", "Name");
constexpr foundation::SentenceKey kTaskNotRunning("TaskNotRunning", "Name");

constexpr auto kInterval = 1s;
constexpr qint64 kLongestReplay = 10'000; // milliseconds
// A start exactly a second away is not due yet and would be past at the next look, so that one comes a bit sooner.
constexpr qint64 kReplayStep = 999;       // milliseconds
constexpr qint64 kLongestQuiet = 60;      // seconds; the time zone may change meanwhile
constexpr qint64 kWatchedBeforeStart = 2; // seconds
constexpr auto kShutdownCountdown = 30s;

// Texts of the countdown; the number comes first, since names may hold anything.
QString countdownText(const TaskCountdown &countdown) {
    if (countdown.isExecuted)
        return QStringLiteral("%1: %2...").arg(countdown.taskName, Lang::tabRecordStatusRecording());
    const QString text = Tools::strReplace(Lang::toolsScheduleTaskClosestScheduleTask(), QStringLiteral("#seconds#"),
                                           QString::number(countdown.seconds));
    return Tools::strReplace(text, QStringLiteral("#taskname#"), countdown.taskName);
}

std::vector<ScheduleTaskInfo> valuesOf(const ScheduleTaskInfo::Tasks &tasks) {
    std::vector<ScheduleTaskInfo> values;
    values.reserve(tasks.size());
    for (const TaskPtr &task : tasks)
        values.push_back(*task);
    return values;
}

} // namespace

ScheduleTaskRunner::ScheduleTaskRunner(TaskList &tasks, ScheduledRecorder &recorder, ScheduleTaskView &view,
                                       foundation::Clock &clock, LocalTime localTime)
    : mTasks(tasks), mRecorder(recorder), mView(view), mClock(clock), mLocalTime(std::move(localTime)) {}

void ScheduleTaskRunner::initScheduleTaskList() {
    Log(QStringLiteral("initScheduleTaskList start"));
    const auto before = mTasks.tasks();
    mTasks.LoadTasks();
    keepWhatIsKnown(before);
    mQuietUntil = {};
    Log(QStringLiteral("initScheduleTaskList task count: %1").arg(mTasks.tasks().size()));
    if (!mTimer) {
        mLastCheck = mLocalTime().addMSecs(-kReplayStep); // so that the first tick looks at this moment, too
        mTimer = mClock.every(kInterval, [this] { (void)guarded("checkScheduleTask", [this] { tick(); }); });
    }
    Log(QStringLiteral("initScheduleTaskList end"));
}

// Keeps the executed task across a new reading of the list, so that no task starts twice.
void ScheduleTaskRunner::keepWhatIsKnown(const ScheduleTaskInfo::Tasks &before) const {
    for (const TaskPtr &task : mTasks.tasks()) {
        const auto same = std::find_if(before.begin(), before.end(), [&](const TaskPtr &other) {
            return other->_taskName == task->_taskName && other->_daily == task->_daily
                   && (task->_daily || other->_fromTime == task->_fromTime);
        });
        if (same == before.end())
            continue;
        if (*same == m_currentScheduleTaskInfo) {
            mTasks.replace(task, *same);
            continue;
        }
        task->_completed = (*same)->_completed;
        task->awaitedStart = (*same)->awaitedStart;
        task->dealtWithStart = (*same)->dealtWithStart;
    }
}

void ScheduleTaskRunner::tick() {
    const QDateTime now = mLocalTime();
    const QDateTime last = std::exchange(mLastCheck, now);
    const qint64 passed = last.msecsTo(now);
    mSkippedUntil = passed > kLongestReplay ? now.addMSecs(-kLongestReplay) : QDateTime();
    if (passed < 0) // The clock was set back.
        mQuietUntil = {};
    else if (!isQuiet(now)) {
        QDateTime moment = passed > kLongestReplay ? mSkippedUntil : last.addMSecs(kReplayStep);
        for (; moment < now; moment = moment.addMSecs(kReplayStep))
            checkScheduleTask(moment);
    }
    checkScheduleTask(now);
    showCountdown(now);
    tickShutdown();
    // With the look of each second, so that neither sleep nor a clock that is set hides it.
    if (last.toLocalTime().date() != now.toLocalTime().date())
        mView.dayDidChange();
}

// Whether a look at the list would find the same as the last one.
bool ScheduleTaskRunner::isQuiet(const QDateTime &now) const {
    const auto &tasks = mTasks.tasks();
    return !m_currentScheduleTaskInfo && mQuietUntil.isValid() && now < mQuietUntil
           && std::equal(tasks.begin(), tasks.end(), mFoundIn.begin(), mFoundIn.end(),
                         [](const TaskPtr &task, const ScheduleTaskInfo &found) { return *task == found; });
}

void ScheduleTaskRunner::checkScheduleTask(const QDateTime &now) {
    if (isQuiet(now))
        return;
    mQuietUntil = {};
    mFound = {};
    if (const TaskPtr task = m_currentScheduleTaskInfo; task && !task->_completed && task->_repeatEnabled) {
        _execScheduleTask_();
        return;
    }
    const auto &tasks = mTasks.tasks();
    if (tasks.empty())
        return;
    reportMissed(now);
    mFound = checkTasks(tasks, m_currentScheduleTaskInfo.get(), now);
    removeExpired(mFound.expired);
    if (mFound.isDue()) {
        const TaskPtr task = mFound.closest;
        task->dealtWithStart = mFound.start;
        // Before it begins: a program that ends meanwhile does not make the same start again, nor call it missed.
        (void)mTasks.SaveTasks(); // A failure is logged, and the next save tries again.
        // Deliberately not queued. The task is not even executed, lest the other recording end at its length.
        if (mRecorder.isBusy() || m_currentScheduleTaskInfo) {
            refuse(task, mFound.start, kTaskInTheWay(task->_taskName));
            return;
        }
        m_currentScheduleTaskInfo = task;
        mTasks.setCurrentRuningTask(task);
        mStoppedByHand = false;
        task->_completed = false;
        task->_repeatLoopedCount = 0; // A program that ended within the repetitions has stored what it had made.
        mFound = {};
        _execScheduleTask_();
        return;
    }
    mFoundIn = valuesOf(tasks);
    const QDateTime midnight = now.toLocalTime().date().addDays(1).startOfDay();
    mQuietUntil = std::min(now.addSecs(kLongestQuiet), midnight);
    if (mFound.closest)
        mQuietUntil = std::min(mQuietUntil, mFound.start.addSecs(-kWatchedBeforeStart));
}

void ScheduleTaskRunner::_execScheduleTask_() {
    const TaskPtr task = m_currentScheduleTaskInfo;
    if (mRecorder.isBusy() || mAwaitsEnd)
        return;
    AppSettings::setAudioType(task->_recordFrom);
    const auto started = mRecorder.startTaskRecording(*task);
    if (started) {
        mAwaitsEnd = true;
        mLastStart = mClock.now();
        mView.taskStarted(*task);
        return;
    }
    task->_repeatLoopedCount = 0;
    release();
    // A failed start leaves a recording shown, which would refuse all later tasks.
    if (mRecorder.isBusy())
        mRecorder.stopRecording();
    refuse(task, task->dealtWithStart, kTaskNotRecorded(task->_taskName, started.failure().sentence));
}

void ScheduleTaskRunner::refuse(const TaskPtr &task, const QDateTime &start, const foundation::Sentence &sentence) {
    Log(Lang::english(sentence));
    mView.taskMissed(*task, start, sentence);
}

// Starts that were ahead at an earlier look and are past now.
void ScheduleTaskRunner::reportMissed(const QDateTime &now) {
    for (const TaskPtr &task : mTasks.tasks()) {
        const QDateTime start = task->awaitedStart;
        if (!start.isValid() || start > now || start == task->dealtWithStart)
            continue;
        task->dealtWithStart = start;
        const bool wasSkipped = mSkippedUntil.isValid() && start <= mSkippedUntil;
        refuse(task, start, wasSkipped ? kTaskSlept(task->_taskName) : kTaskInTheWay(task->_taskName));
    }
}

void ScheduleTaskRunner::removeExpired(const ScheduleTaskInfo::Tasks &expired) {
    if (expired.empty())
        return;
    for (const TaskPtr &task : expired) {
        const bool wasDealtWith =
            task->_completed || (task->_fromTime.isValid() && task->_fromTime == task->dealtWithStart);
        if (!wasDealtWith)
            refuse(task, task->_fromTime, kTaskNotRunning(task->_taskName));
    }
    mTasks.drop(expired);
}

void ScheduleTaskRunner::taskWasStoppedByHand() { mStoppedByHand = true; }

void ScheduleTaskRunner::taskRecordingDidEnd() {
    const TaskPtr task = m_currentScheduleTaskInfo;
    if (!task || !std::exchange(mAwaitsEnd, false))
        return;
    if (!task->_repeatEnabled) {
        task->_completed = !task->_daily;
        if (!mStoppedByHand && task->_shutdownAfterRecording)
            requestShutdown();
        // The next check would drop it as expired; if the program ended before, the next start took it for missed.
        if (!task->_daily)
            mTasks.drop({task});
        complete();
        return;
    }
    // Raised here, so that a count of N gives N recordings, of which the first has the task's plain name.
    if (!mStoppedByHand)
        task->_repeatLoopedCount = std::min(task->_repeatLoopedCount, std::numeric_limits<int>::max() - 1) + 1;
    const bool isEndless = task->_repeatTotalCount < 1;
    if (!mStoppedByHand && (isEndless || task->_repeatLoopedCount < task->_repeatTotalCount)) {
        task->_completed = false; // The next check executes it again.
        (void)mTasks.SaveTasks(); // A failure is logged, and the next save tries again.
        return;
    }
    task->_completed = true;
    if (!mStoppedByHand && task->_shutdownAfterRecording)
        requestShutdown();
    task->_repeatLoopedCount = 0;
    mTasks.drop(task->_daily ? TaskList::Tasks() : TaskList::Tasks{task});
    complete();
}

void ScheduleTaskRunner::complete() {
    const TaskPtr task = m_currentScheduleTaskInfo;
    release();
    mView.taskEnded(*task);
}

void ScheduleTaskRunner::release() {
    m_currentScheduleTaskInfo.reset();
    mTasks.setCurrentRuningTask(nullptr);
    mStoppedByHand = false;
    mAwaitsEnd = false;
}

foundation::Result<void> ScheduleTaskRunner::skipNextStart() {
    const auto task = mFound.closest;
    if (!task || m_currentScheduleTaskInfo)
        return {}; // It has begun, or is gone.
    const QDateTime before = task->dealtWithStart;
    if (const auto settled = mTasks.settleStart(task, mFound.start); !settled)
        return settled;
    mSkipped = {task, mFound.start, before};
    lookAgain();
    return {};
}

foundation::Result<void> ScheduleTaskRunner::makeSkippedStart() {
    const auto skipped = std::exchange(mSkipped, {});
    if (!skipped.task || skipped.start <= mLocalTime())
        return {};
    const auto settled = mTasks.settleStart(skipped.task, skipped.dealtWithBefore);
    if (!settled)
        mSkipped = skipped;
    lookAgain();
    return settled;
}

void ScheduleTaskRunner::lookAgain() {
    mQuietUntil = {};
    const QDateTime now = mLocalTime();
    checkScheduleTask(now);
    showCountdown(now);
}

void ScheduleTaskRunner::showCountdown(const QDateTime &now) {
    TaskCountdown countdown;
    const auto &tasks = mTasks.tasks();
    if (mSkipped.start <= now || std::find(tasks.begin(), tasks.end(), mSkipped.task) == tasks.end())
        mSkipped = {};
    if (mSkipped.task)
        countdown.skippedName = mSkipped.task->_taskName;
    if (const TaskPtr task = m_currentScheduleTaskInfo) {
        countdown.taskName = task->_taskName;
        const qint64 passed = std::chrono::floor<std::chrono::seconds>(mClock.now() - mLastStart).count();
        countdown.seconds = std::max<qint64>(0, task->_duration - passed);
        countdown.isExecuted = true;
    } else if (mFound.closest) {
        countdown.taskName = mFound.closest->_taskName;
        countdown.seconds = std::max<qint64>(0, now.msecsTo(mFound.start) / 1000);
        countdown.start = mFound.start;
    }
    if (!countdown.taskName.isEmpty())
        countdown.text = countdownText(countdown);
    mView.taskCountdown(countdown);
}

// Shutting down.

void ScheduleTaskRunner::requestShutdown() {
    if (mShutdown == Shutdown::None)
        mShutdown = Shutdown::Waiting;
}

void ScheduleTaskRunner::cancelShutdown() {
    if (mShutdown == Shutdown::None)
        return;
    mShutdown = Shutdown::None;
    mView.shutdownCancelled();
}

void ScheduleTaskRunner::tickShutdown() {
    if (mShutdown == Shutdown::None)
        return;
    // Whatever is recorded or converted meanwhile comes first.
    if (!mRecorder.isSettled() || m_currentScheduleTaskInfo) {
        mShutdown = Shutdown::Waiting;
        return;
    }
    if (mShutdown == Shutdown::Waiting) {
        mShutdown = Shutdown::CountingDown;
        mShutdownDue = mClock.now() + kShutdownCountdown;
    }
    const auto left = std::chrono::ceil<std::chrono::seconds>(mShutdownDue - mClock.now()).count();
    if (left > 0) {
        mView.shutdownCountdown(static_cast<int>(left));
        return;
    }
    mShutdown = Shutdown::None;
    mView.shutdownCountdown(0);
    Tools::ShutdownSystem();
}

} // namespace cantorel
