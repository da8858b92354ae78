#include "recording/control/ScheduledSession.h"

namespace cantorel {

ScheduledSession::ScheduledSession(RecordingSession &session, MovieSession *movies, TaskList &tasks,
                                   ScheduleTaskView &view, foundation::Clock &clock,
                                   ScheduleTaskRunner::LocalTime localTime)
    : mSession(session), mMovies(movies), mSchedule(tasks, *this, view, clock, std::move(localTime)) {
    mSession.tasks = this;
}

void ScheduledSession::onStartRecording() {
    if (recordsMovie())
        return mMovies->stop();
    const bool isMovie = mMovies && mMovies->isWanted() && !mSession.isBusy();
    const auto started = isMovie ? mMovies->start() : mSession.onStartRecording();
    if (!started && !started.failure().sentence.isEmpty()) // Without a sentence the person has cancelled the start.
        Q_EMIT startRefused(started.failure().sentence);
}

void ScheduledSession::onPauseRecording() {
    if (recordsMovie())
        mMovies->onPause();
    else
        mSession.onPauseRecording();
}

void ScheduledSession::stopByHand() {
    if (mMovies)
        mMovies->stop();
    mSession.stopByHand();
}

void ScheduledSession::stopRecording() {
    if (mMovies)
        mMovies->stop();
    mSession.stopRecording();
}

foundation::Result<void> ScheduledSession::startTaskRecording(const ScheduleTaskInfo &task) {
    return mSession.startRecording(ExecutedTask{task._taskName, task._repeatEnabled, task._repeatLoopedCount,
                                                static_cast<double>(task._duration)});
}

} // namespace cantorel
