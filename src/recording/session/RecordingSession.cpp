#include "recording/session/RecordingSession.h"

#include "log/GuardedAction.h"
#include "recording/library/RecordedList.h"

#include <utility>

namespace cantorel {

using foundation::Failure;
using foundation::Result;
using Phase = SessionPhase;

namespace {

constexpr foundation::SentenceKey kStateFolder("StateFolder");
constexpr foundation::SentenceKey kNotStarted("NotStarted");

} // namespace

RecordingSession::RecordingSession(RecordingSessionView &view, RecordedList &list, RecorderCommons &commons)
    : mView(view),
      mList(list),
      mClock(commons.clock),
      mJournal(commons.journal),
      mLeftovers(view, list, mJournal),
      mConditions(mJournal, view),
      mFiles(view, list, mJournal, [this] { settle(); }),
      mSleep(
          commons.sleep, [this](bool shutsDown) { machineWillSleep(shutsDown); }, [this] { machineDidWake(); }) {}

RecordingSession::~RecordingSession() {
    if (mRecordManager) {
        mRecordManager->stopRecord();
        mRecordManager->clear();
    }
}

bool RecordingSession::isSettled() const {
    return (mPhase == Phase::Idle || mPhase == Phase::Naming) && pendingConversions() == 0
           && !mLeftovers.isRecovering();
}

void RecordingSession::settle() {
    if (!isSettled())
        return;
    recordingControlsDidChange();
    mView.recordingSettled();
}

// Starting.

Result<void> RecordingSession::onStartRecording() {
    if (!isBusy())
        return startRecording();
    stopByHand();
    return {};
}

Result<void> RecordingSession::startRecording(const std::optional<ExecutedTask> &task) {
    if (mRecordManager && mRecordManager->isRecording()) {
        stopRecording(); // The control toggles.
        return {};
    }
    if (mPhase == Phase::Closing || mPhase == Phase::Following) {
        if (mNext == AfterFile::Nothing) {
            mNext = AfterFile::Start;
            mNextTask = task;
        }
        return {};
    }
    FileUnderWay file;
    file.task = task;
    return start(std::move(file));
}

Result<void> RecordingSession::start(FileUnderWay file) {
    const auto path = mConditions.meet(file, mPhase);
    if (!path)
        return path.failure();
    if (!mJournal.begin(path.value()))
        return Failure{kStateFolder(), QStringLiteral("the journal could not be written")};
    // A filtered recording of this name may still wait to be deleted.
    mList.removeInvalidFile(path.value());
    if (!mRecordManager) {
        mRecordManager = std::make_unique<RecordManager>();
        mRecordManager->delegate = this;
    }
    mTimerRestart.reset();
    const bool wasAwaited = mFile.deviceIsAway;
    mFile = std::move(file);
    mFile.device = RecordManager::getAudioDeviceNameWithAudioDeviceType(static_cast<int>(mFile.source));
    if (wasAwaited)
        mView.recordingDeviceBack(mFile.device);
    mRestarts.began(mClock.now());
    const bool started = mRecordManager->startRecord(QUrl::fromLocalFile(path.value()));
    mPhase = started ? Phase::Starting : Phase::Refused;
    mRunning.reset();
    if (started) {
        Log(QStringLiteral("will start record succ"));
        mSleep.hold();
        mRunning.reset(new RunningRecording({*this, mView, *mRecordManager, mClock, mSilence, mFile}));
    } else {
        mRecordManager->stopRecord();
        mRecordManager->clear();
        mJournal.end(path.value());
    }
    recordingControlsDidChange();
    if (!started)
        return Failure{kNotStarted(), QStringLiteral("startRecord answered false")};
    return {};
}

// What follows a file that was split, slept over or interrupted belongs to its task.
void RecordingSession::startNext() {
    FileUnderWay file;
    if (std::exchange(mNext, AfterFile::Nothing) == AfterFile::Start) {
        endTask();
        mFile.task = std::exchange(mNextTask, {});
    }
    file.task = mFile.task;
    file.taskSecondsBefore = mFile.taskSecondsBefore;
    const auto started = start(std::move(file));
    if (started || isWriting()) // Another one was begun while a name was chosen.
        return;
    if (!mConditions.lackedDevice()) {
        end({started.failure().sentence, mRestarts.kept()});
        return;
    }
    // A device that has gone between two files is waited for as within one.
    if (!mFile.deviceIsAway)
        deviceIsAway(true);
    restartAfter(Restarts::interval());
}

void RecordingSession::restartAfter(foundation::Clock::Duration wait) {
    mPhase = Phase::WaitingToRestart;
    recordingControlsDidChange();
    mTimerRestart = mClock.after(wait, [this] { (void)guarded("startAgain", [this] { startNext(); }); });
}

// Ending.

void RecordingSession::stopByHand() {
    if (mFile.task || mNextTask)
        tasks->taskWasStoppedByHand();
    stopRecording();
}

void RecordingSession::stopRecording() {
    switch (mPhase) {
    case Phase::Idle:
        return;
    case Phase::Naming:
        mPhase = Phase::Idle; // The question for the name then finds that nothing shall begin.
        return;
    case Phase::Starting:
    case Phase::Writing:
        close(AfterFile::Nothing);
        return;
    case Phase::Closing:
    case Phase::Following:
        forgetNext();
        mRecordManager->stopRecord(); // It may wait for the next file of a split.
        return;
    case Phase::Refused:
    case Phase::WaitingToRestart:
    case Phase::Asleep:
        end();
        return;
    }
}

void RecordingSession::close(AfterFile next) {
    mNext = next;
    mPhase = Phase::Closing;
    showStopped();
    if (next == AfterFile::Split || next == AfterFile::SplitBySilence)
        mRecordManager->joinNextRecording();
    mRecordManager->stopRecord();
}

void RecordingSession::showStopped() {
    mTimerRestart.reset();
    mFile.deviceIsAway = false; // The recording does not wait for it any more.
    if (mRunning)
        mRunning->end();
    recordingControlsDidChange();
}

void RecordingSession::recordedFileIsGone() {
    stopRecordingByRemoveFile = true;
    stopRecording();
}

void RecordingSession::RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &url,
                                                                    const media::RecordingCounts &counts,
                                                                    const std::optional<Failure> &failure) {
    // The last frames were lost after the last level.
    const qint64 lost = mFile.lostFrames + counts.droppedFrames - mFile.counted.droppedFrames;
    const FinishedRecording recording{url.toLocalFile(), counts.seconds(), counts.bytes, counts.droppedFrames, lost};
    if (isRecording() && !failure) // It has ended by itself.
        close(AfterFile::Nothing);
    if (failure)
        mRecordManager->stopRecord();
    mRecordManager->clear();
    mFile.taskSecondsBefore += recording.seconds;
    const EndedFile ended = mFiles.take(mFile, recording, failure, std::exchange(stopRecordingByRemoveFile, false));
    if (ended.isElsewhere) // Its folder was removed.
        forgetNext();
    if (ended.became == EndedFile::Became::Interrupted) {
        interrupted(ended);
        return;
    }
    if (ended.became == EndedFile::Became::Whole)
        mRestarts.fileIsWhole();
    mPhase = Phase::Following;
    // A start that was asked for meanwhile is made in any case.
    const bool isLost = ended.became == EndedFile::Became::Lost && mNext != AfterFile::Start;
    if (isLost || (ended.became == EndedFile::Became::Empty && mNext == AfterFile::Nothing))
        end(ended.trouble);
    else
        follow();
}

// Starts the recording again after an error, unless it was stopped meanwhile.
void RecordingSession::interrupted(const EndedFile &ended) {
    const bool goesOn = isRecording() || isStoppedBySilence() || isAutoSplitEverySeconds();
    mRunning->end();
    const bool mayFollow = mRestarts.mayFollow(ended.playableSeconds, ended.trouble.kept);
    const RecordingTrouble trouble{ended.trouble.sentence, mRestarts.kept()};
    if (mNext == AfterFile::AfterSleep || mNext == AfterFile::Start) {
        if (mNext == AfterFile::Start)
            mView.recordingFailed(trouble);
        mPhase = Phase::Following;
        follow();
    } else if (goesOn && mayFollow) {
        mNext = AfterFile::Nothing;
        restartAfter(mRestarts.wait(mClock.now()));
        mView.recordingInterrupted(trouble);
    } else {
        end(trouble);
    }
}

// What follows a file that is whole: the next one, or the end.
void RecordingSession::follow() {
    mFile.item.clear();
    if (mNext == AfterFile::Nothing) {
        end();
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (mPhase != Phase::Following)
                return;
            if (mNext == AfterFile::Nothing) { // Stopped meanwhile.
                end();
            } else if (mSleep.isAsleep()) {
                mPhase = Phase::Asleep;
                mSleep.release();
            } else {
                (void)guarded("startAgain", [this] { startNext(); });
            }
        },
        Qt::QueuedConnection);
}

// Nothing follows.
void RecordingSession::end(const RecordingTrouble &trouble) {
    const bool wasShown = isRecording();
    mPhase = Phase::Idle;
    forgetNext();
    mRestarts.reset();
    mFile.item.clear();
    if (mRecordManager)
        mRecordManager->forgetNextRecording();
    if (wasShown)
        showStopped();
    endTask();
    mSleep.release();
    if (!trouble.sentence.isEmpty())
        mView.recordingFailed(trouble);
    settle();
}

void RecordingSession::endTask() {
    mFile.taskSecondsBefore = 0;
    if (std::exchange(mFile.task, {}))
        tasks->taskRecordingDidEnd();
}

void RecordingSession::forgetNext() {
    mNext = AfterFile::Nothing;
    if (std::exchange(mNextTask, {}))
        tasks->taskRecordingDidEnd();
}

} // namespace cantorel
