#include "recording/control/ScheduledSession.h"

namespace cantorel {

ScheduledSession::ScheduledSession(RecordingSession &session, ScheduleTaskView &view, foundation::Clock &clock,
                                   ScheduleTaskRunner::LocalTime localTime)
    : mSession(session), mSchedule(*this, view, clock, std::move(localTime)) {
    mSession.tasks = this;
}

void ScheduledSession::onStartRecording() {
    const auto started = mSession.onStartRecording();
    if (!started && trouble && !started.failure().sentence.isEmpty()) // Empty when the person has changed their mind.
        trouble(started.failure().sentence);
}

foundation::Result<void> ScheduledSession::startTaskRecording(const ScheduleTaskInfo &task) {
    mSession.setExecutedTask(ExecutedTask{task._taskName, task._repeatEnabled, task._repeatLoopedCount,
                                          static_cast<double>(task._duration)});
    return mSession.startRecording();
}

void ScheduledSession::taskRecordingDidEnd() {
    // What the person records before the task's next recording is the person's own.
    releaseTask();
    mSchedule.taskRecordingDidEnd();
}

} // namespace cantorel
