#pragma once

#include "platform/foundation/Sentence.h"
#include "recording/control/RecordingHotkeys.h"
#include "recording/schedule/ScheduleTaskRunner.h"
#include "recording/session/RecordingSession.h"

#include <QObject>

namespace cantorel {

// A session that tasks and hot keys start and end as well as the person. Owned by the application or a command; main
// thread.
class ScheduledSession : public QObject,
                         public ScheduledRecorder,
                         public RecordingSessionTasks,
                         public RecordingHotkeyActions {
public:
    // All outlive it.
    ScheduledSession(
        RecordingSession &session, ScheduleTaskView &view, foundation::Clock &clock,
        ScheduleTaskRunner::LocalTime localTime = [] { return QDateTime::currentDateTime(); });

    ScheduleTaskRunner &schedule() { return mSchedule; }

    // Told one sentence why a hot key could not begin a recording. May be empty.
    std::function<void(const foundation::Sentence &)> trouble;

    // The start control and its hot key.
    void onStartRecording() override;
    // Ends what is recorded for good: a task's recording counts as stopped by hand.
    void stopByHand() { mSession.stopByHand(); }

private:
    bool isRecording() const override { return mSession.isRecording(); }
    foundation::Result<void> startTaskRecording(const ScheduleTaskInfo &task) override;
    void stopRecording() override { mSession.stopRecording(); }
    void onPauseRecording() override { mSession.onPauseRecording(); }
    void releaseTask() override { mSession.setExecutedTask(std::nullopt); }
    bool isSettled() const override { return mSession.isSettled(); }

    void taskWasStoppedByHand() override { mSchedule.taskWasStoppedByHand(); }
    void taskRecordingDidEnd() override;

    RecordingSession &mSession;
    ScheduleTaskRunner mSchedule;
};

} // namespace cantorel
