#include "recording/control/ScheduledSession.h"

namespace cantorel {

ScheduledSession::ScheduledSession(RecordingSession &session, TaskList &tasks, ScheduleTaskView &view,
                                   foundation::Clock &clock, ScheduleTaskRunner::LocalTime localTime)
    : mSession(session), mSchedule(tasks, *this, view, clock, std::move(localTime)) {
    mSession.tasks = this;
}

void ScheduledSession::onStartRecording() {
    const auto started = mSession.onStartRecording();
    if (!started && !started.failure().sentence.isEmpty()) // Without a sentence the person has cancelled the start.
        Q_EMIT startRefused(started.failure().sentence);
}

foundation::Result<void> ScheduledSession::startTaskRecording(const ScheduleTaskInfo &task) {
    return mSession.startRecording(ExecutedTask{task._taskName, task._repeatEnabled, task._repeatLoopedCount,
                                                static_cast<double>(task._duration)});
}

} // namespace cantorel
