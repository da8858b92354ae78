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
    Q_OBJECT

public:
    // All outlive it.
    ScheduledSession(
        RecordingSession &session, TaskList &tasks, ScheduleTaskView &view, foundation::Clock &clock,
        ScheduleTaskRunner::LocalTime localTime = [] { return QDateTime::currentDateTime(); });

    ScheduleTaskRunner &schedule() { return mSchedule; }

    // The start control and its hot key.
    void onStartRecording() override;
    // Ends the recording with all that would follow it; a task counts as stopped by hand.
    void stopByHand() { mSession.stopByHand(); }

Q_SIGNALS:
    // One sentence on why the start control or its hot key could not begin a recording.
    void startRefused(const foundation::Sentence &sentence);

private:
    bool isRecording() const override { return mSession.isRecording(); }
    bool isBusy() const override { return mSession.isBusy(); }
    foundation::Result<void> startTaskRecording(const ScheduleTaskInfo &task) override;
    void stopRecording() override { mSession.stopRecording(); }
    void onPauseRecording() override { mSession.onPauseRecording(); }
    bool isSettled() const override { return mSession.isSettled(); }

    void taskWasStoppedByHand() override { mSchedule.taskWasStoppedByHand(); }
    void taskRecordingDidEnd() override { mSchedule.taskRecordingDidEnd(); }

    RecordingSession &mSession;
    ScheduleTaskRunner mSchedule;
};

} // namespace cantorel
