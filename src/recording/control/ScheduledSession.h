#pragma once

#include "platform/foundation/Sentence.h"
#include "recording/control/RecordingHotkeys.h"
#include "recording/schedule/ScheduleTaskRunner.h"
#include "recording/session/MovieSession.h"
#include "recording/session/RecordingSession.h"

#include <QObject>

namespace cantorel {

// A session that tasks and hot keys start and end as well as the person, and that of movies, which the person starts
// where a movie is wanted: one of both records at a time. Owned by the application or a command; main
// thread.
class ScheduledSession : public QObject,
                         public ScheduledRecorder,
                         public RecordingSessionTasks,
                         public RecordingHotkeyActions {
    Q_OBJECT

public:
    // All outlive it. movies: null where sound alone is recorded.
    ScheduledSession(
        RecordingSession &session, MovieSession *movies, TaskList &tasks, ScheduleTaskView &view,
        foundation::Clock &clock,
        ScheduleTaskRunner::LocalTime localTime = [] { return QDateTime::currentDateTime(); });

    ScheduleTaskRunner &schedule() { return mSchedule; }

    // The start control and its hot key.
    void onStartRecording() override;
    void onPauseRecording() override;
    // Ends the recording with all that would follow it; a task counts as stopped by hand.
    void stopByHand();

    MovieSession *movies() const { return mMovies; }
    // Of what is recorded.
    RecordingSource source() const { return recordsMovie() ? mMovies->source() : mSession.currentFile().source; }
    bool recordsMovie() const { return mMovies && mMovies->isRecording(); }
    // A movie or sound is recorded, or will be in a moment.
    bool isBusy() const override { return mSession.isBusy() || recordsMovie(); }
    // Nothing is recorded, finished, started again, converted or repaired.
    bool isSettled() const override { return mSession.isSettled() && (!mMovies || mMovies->isSettled()); }

Q_SIGNALS:
    // One sentence on why the start control or its hot key could not begin a recording.
    void startRefused(const foundation::Sentence &sentence);

private:
    bool isRecording() const override { return mSession.isRecording() || recordsMovie(); }
    foundation::Result<void> startTaskRecording(const ScheduleTaskInfo &task) override;
    void stopRecording() override;

    void taskWasStoppedByHand() override { mSchedule.taskWasStoppedByHand(); }
    void taskRecordingDidEnd() override { mSchedule.taskRecordingDidEnd(); }

    RecordingSession &mSession;
    MovieSession *const mMovies;
    ScheduleTaskRunner mSchedule;
};

} // namespace cantorel
