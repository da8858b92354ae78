#pragma once

#include "recording/session/CrashLeftovers.h"
#include "recording/session/FinishedFiles.h"
#include "recording/session/RecordManager.h"
#include "recording/session/RecorderCommons.h"
#include "recording/session/Restarts.h"
#include "recording/session/RunningRecording.h"
#include "recording/session/StartConditions.h"

namespace cantorel {

// Everything between the button and the finished file: starts, pauses and ends recordings through the RecordManager,
// has them split and started again, and hands what is finished to the list and the conversions. Owned by the
// application or a command; main thread.
class RecordingSession : public QObject, public RecordManagerDelegate, private RunningRecordingOwner {
public:
    // All outlive the session.
    RecordingSession(RecordingSessionView &view, RecordedList &list, RecorderCommons &commons);
    ~RecordingSession() override;

    foundation::WeakDelegate<RecordingSessionTasks> tasks;

    // The start control and its hot key: ends what is recorded, or begins a recording.
    foundation::Result<void> onStartRecording();
    // Starts a recording with the settings' source, folder and format, for a task if one is given. If a recording runs,
    // ends it instead. While the last file is still being finished, the start waits for it. A failure is one sentence,
    // empty if the person has changed their mind. A failure before the devices are touched changes nothing; a later one
    // deliberately leaves the recording shown until it is stopped.
    foundation::Result<void> startRecording(const std::optional<ExecutedTask> &task = {});
    void stopRecording();
    // Stops it, and ends the task that it was made for.
    void stopByHand();
    // The pause control and its hot key.
    void onPauseRecording();
    void pauseRecording();
    void resumeRecording();
    // Ends the file under way and goes on in another, once it is resumed or its device is back.
    void splitRecording();

    SessionPhase phase() const { return mPhase; }
    RecorderState state() const;
    bool isRecording() const { return isShownAsRecording(mPhase); }
    // Something is recorded, or will be in a moment. The start control then ends it, and no second recording begins.
    bool isBusy() const { return isRecording() || mNext != AfterFile::Nothing; }
    bool isWriting() const { return hasOpenFile(mPhase) || mPhase == SessionPhase::Closing; }
    // Nothing is recorded, finished, started again, converted or repaired.
    bool isSettled() const;
    bool isPaused() const { return mRecordManager && mRecordManager->isPaused(); }
    bool isPausedByUser() const { return mRunning && mRunning->pausedBy() == PausedBy::Person; }
    bool ispausedBySilence() const { return mRunning && mRunning->pausedBy() == PausedBy::Silence; }
    bool isStoppedBySilence() const { return mNext == AfterFile::SplitBySilence; }
    bool isAutoSplitEverySeconds() const { return mNext == AfterFile::Split; }
    bool isPrepareStartRecording() const { return mRecordManager && mRecordManager->isPrepareRecording(); }
    // The current file; after its end the last one, until the next begins.
    const FileUnderWay &currentFile() const { return mFile; }
    // Of the file being written or finished; all zero otherwise.
    media::RecordingCounts recordingCounts() const {
        return isWriting() ? mRecordManager->recordingCounts() : media::RecordingCounts();
    }
    int pendingConversions() const { return mFiles.pendingConversions(); }

    // What a crash has left behind; for the owner of the journal.
    CrashLeftovers &leftovers() { return mLeftovers; }

private:
    void RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &url) override;
    void RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &url,
                                                      const media::RecordingCounts &counts,
                                                      const std::optional<foundation::Failure> &failure) override;
    void RecordManagerUpdateAudioLevel(RecordManager &, float level) override;
    void RecordManagerDeviceLost(RecordManager &) override { deviceIsAway(true); }
    void RecordManagerDeviceBack(RecordManager &) override { deviceIsAway(false); }
    void RecordManagerOutputLost(RecordManager &) override { mView.recordingIsHeard(false); }
    void RecordManagerOutputBack(RecordManager &) override { mView.recordingIsHeard(true); }
    void recordingShallStop() override { stopRecording(); }
    void recordingShallSplit(AfterFile split) override { close(split); }
    void recordedFileIsGone() override;
    void recordingControlsDidChange() override;

    foundation::Result<void> start(FileUnderWay file);
    void startNext();
    void restartAfter(foundation::Clock::Duration wait);
    void deviceIsAway(bool away);
    void close(AfterFile next);
    void showStopped();
    void interrupted(const EndedFile &ended);
    void follow();
    void forgetNext();
    void endTask();
    void end(const RecordingTrouble &trouble = {});
    void settle();
    void machineWillSleep(bool shutsDown);
    void machineDidWake();

    RecordingSessionView &mView;
    RecordedList &mList;
    foundation::Clock &mClock;
    RecordingJournal &mJournal;
    CrashLeftovers mLeftovers;
    StartConditions mConditions;
    FinishedFiles mFiles;
    SleepGuard::Holder mSleep;
    std::unique_ptr<RecordManager> mRecordManager;
    std::unique_ptr<foundation::Timer> mTimerRestart;
    SessionPhase mPhase = SessionPhase::Idle;
    AfterFile mNext = AfterFile::Nothing;
    std::optional<ExecutedTask> mNextTask; // of AfterFile::Start
    FileUnderWay mFile;
    std::unique_ptr<RunningRecording> mRunning; // the last one, until the next begins
    SilenceRules mSilence;
    Restarts mRestarts;
    bool stopRecordingByRemoveFile = false; // stopped because the file was removed; an error then starts nothing again
};

} // namespace cantorel
