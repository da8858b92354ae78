#pragma once

#include "app/start/Hardware.h"
#include "app/start/SignalWatch.h"
#include "cli/RecordingEvents.h"
#include "platform/foundation/Sentence.h"
#include "recording/control/RecordingControl.h"
#include "recording/control/ScheduledSession.h"
#include "recording/library/RecordedList.h"

#include <QEventLoop>

#include <memory>

namespace cantorel {

// One run of "tasks run": keeps the schedule, answers the hot keys, and ends by a signal once what was recorded is
// whole. Main thread.
class TasksRun : public QObject, public RecordingEvents, public ScheduleTaskView {
public:
    explicit TasksRun(const CommandSession &command);

    Outcome run();

private:
    Outcome start();
    void signalled();

    void recordingSettled() override;
    void taskStarted(const ScheduleTaskInfo &task) override;
    void taskEnded(const ScheduleTaskInfo &task) override;
    void taskMissed(const ScheduleTaskInfo &task, const QDateTime &start,
                    const foundation::Sentence &sentence) override;
    void shutdownCountdown(int secondsLeft) override;

    SignalWatch mSignals;
    std::unique_ptr<Hardware> mHardware;
    std::unique_ptr<RecordedList> mList;
    TaskList mTasks;
    std::unique_ptr<RecorderCommons> mCommons;
    std::unique_ptr<RecordingSession> mSession;
    std::unique_ptr<ScheduledSession> mScheduled;
    std::unique_ptr<RecordingHotkeys> mHotkeys;
    std::unique_ptr<RecordingControl> mControl;
    QEventLoop mLoop;
    int mSignalCount = 0;
};

} // namespace cantorel
