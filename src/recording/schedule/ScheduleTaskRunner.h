#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"
#include "recording/schedule/ScheduleCheck.h"
#include "recording/schedule/TaskList.h"

#include <functional>
#include <memory>

namespace cantorel {

// What the schedule needs to know and to do of recordings.
class ScheduledRecorder {
public:
    virtual ~ScheduledRecorder() = default;

    // Something is recorded, or will be in a moment, started by a task or by hand.
    virtual bool isBusy() const = 0;
    // Begins a recording that belongs to the task, with the source of the settings, and ends it at the task's length.
    // Where a file is still being finished, begins after that.
    virtual foundation::Result<void> startTaskRecording(const ScheduleTaskInfo &task) = 0;
    virtual void stopRecording() = 0;
    // Nothing is recorded, written or converted.
    virtual bool isSettled() const = 0;
};

// What the schedule shows, once a second.
struct TaskCountdown {
    QString taskName;   // empty: no task lies ahead
    qint64 seconds = 0; // to the start, or to the end of the one that is executed
    bool isExecuted = false;
    QDateTime start; // of one that lies ahead
    QString text;
    QString skippedName; // of a task whose start, which lies ahead, was skipped
};

// Shows the schedule; implemented by each face. Main thread. All optional.
class ScheduleTaskView {
public:
    virtual ~ScheduleTaskView() = default;

    virtual void taskCountdown(const TaskCountdown &) {}
    virtual void taskStarted(const ScheduleTaskInfo &) {}
    // The task has made all its recordings, or was stopped by hand.
    virtual void taskEnded(const ScheduleTaskInfo &) {}
    // A start that did not become a recording, and one sentence why.
    virtual void taskMissed(const ScheduleTaskInfo &, const QDateTime & /*start*/, const foundation::Sentence &) {}
    // Every second until the computer is shut down; the person can cancel it.
    virtual void shutdownCountdown(int /*secondsLeft*/) {}
    virtual void shutdownCancelled() {}
    // It is another day, by the local time of the machine.
    virtual void dayDidChange() {}
};

// Starts what is due, settles what has ended, and shuts the computer down afterwards if the task asks for it. Looks at
// the list once a second, by the local time of the machine, and never starts a start twice whatever the clock does.
// Owned by the application or a command; main thread.
class ScheduleTaskRunner {
public:
    using LocalTime = std::function<QDateTime()>;
    // All outlive the runner.
    ScheduleTaskRunner(
        TaskList &tasks, ScheduledRecorder &recorder, ScheduleTaskView &view, foundation::Clock &clock,
        LocalTime localTime = [] { return QDateTime::currentDateTime(); });

    // Reads the stored list and starts the timer; later calls only read the list again.
    void initScheduleTaskList();

    // The task being recorded; null if there is none.
    std::shared_ptr<ScheduleTaskInfo> currentScheduleTask() const { return m_currentScheduleTaskInfo; }

    // The person has ended the recording of the executed task.
    void taskWasStoppedByHand();
    // A recording of the executed task is over. Nothing happens when none is executed.
    void taskRecordingDidEnd();

    // The start that lies ahead is not made, and its task stays. That is on the disk before this returns, or the start
    // is made.
    foundation::Result<void> skipNextStart();
    // Takes that back until the start is over.
    foundation::Result<void> makeSkippedStart();

    // Shuts the computer down half a minute after all recordings and conversions have ended.
    void requestShutdown();
    void cancelShutdown();
    bool isShutdownRequested() const { return mShutdown != Shutdown::None; }

private:
    enum class Shutdown { None, Waiting, CountingDown };

    void keepWhatIsKnown(const ScheduleTaskInfo::Tasks &before) const;
    void tick();
    void lookAgain();
    void checkScheduleTask(const QDateTime &now);
    bool isQuiet(const QDateTime &now) const;
    void _execScheduleTask_();
    void refuse(const std::shared_ptr<ScheduleTaskInfo> &task, const QDateTime &start,
                const foundation::Sentence &sentence);
    void reportMissed(const QDateTime &now);
    void removeExpired(const ScheduleTaskInfo::Tasks &expired);
    void complete();
    void release();
    void showCountdown(const QDateTime &now);
    void tickShutdown();

    TaskList &mTasks;
    ScheduledRecorder &mRecorder;
    ScheduleTaskView &mView;
    foundation::Clock &mClock;
    const LocalTime mLocalTime;
    std::unique_ptr<foundation::Timer> mTimer;
    std::shared_ptr<ScheduleTaskInfo> m_currentScheduleTaskInfo;
    bool mStoppedByHand = false;
    bool mAwaitsEnd = false;                  // of a recording of the executed task
    foundation::Clock::Duration mLastStart{}; // of one of its recordings
    QDateTime mLastCheck;
    QDateTime mSkippedUntil; // the schedule was not looked at from the last check but one until then
    ScheduleCheck mFound;    // by the last check
    // What that check looked at, and until when it would find the same again.
    std::vector<ScheduleTaskInfo> mFoundIn;
    QDateTime mQuietUntil;
    struct {
        std::shared_ptr<ScheduleTaskInfo> task; // null for none
        QDateTime start, dealtWithBefore;
    } mSkipped;
    Shutdown mShutdown = Shutdown::None;
    foundation::Clock::Duration mShutdownDue{};
};

} // namespace cantorel
