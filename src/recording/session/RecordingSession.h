#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"
#include "recording/library/RecordedConversions.h"
#include "recording/library/RecordedList.h"
#include "recording/session/CrashLeftovers.h"
#include "recording/session/RecordManager.h"
#include "recording/session/RecordingSessionView.h"
#include "recording/session/SilenceWatch.h"

#include <QObject>
#include <QPointer>

#include <memory>

namespace cantorel {

inline constexpr foundation::SentenceKey kAnotherRecorder("AnotherRecorder");

// The scheduled task that a recording is made for.
struct ExecutedTask {
    QString name;
    bool repeats = false;
    int loopedCount = 0;
    double seconds = 0; // how long it records
};

// Is told what becomes of the recordings of a task. All optional.
class RecordingSessionTasks {
public:
    virtual ~RecordingSessionTasks() = default;

    // The person has ended the task's recording.
    virtual void taskWasStoppedByHand() {}
    // The task's recording is over, with all its files.
    virtual void taskRecordingDidEnd() {}
};

// Everything between the button and the finished file: starts, pauses and ends recordings through the RecordManager,
// names the files, splits and skips by silence, splits by period, starts again after errors, and hands what is finished
// to the list and the conversions. Owned by the application or a command; main thread.
class RecordingSession : public QObject, public RecordManagerDelegate {
public:
    // stateFolder: holds the journal. All outlive the session.
    RecordingSession(RecordingSessionView &view, RecordedList &list, const QString &stateFolder);
    ~RecordingSession() override;

    foundation::WeakDelegate<RecordingSessionTasks> tasks;

    // The start control and its hot key: ends a recording, or begins one.
    foundation::Result<void> onStartRecording();
    // Begins with the source, folder and format of the settings; ends one that runs. Where the file before is still
    // being finished, begins after that. A failure is one sentence. One before the devices are touched changes nothing;
    // a later one deliberately leaves the recording shown, until it is stopped.
    foundation::Result<void> startRecording();
    void stopRecording();
    // The same, and a task whose recording it is ends with it.
    void stopByHand();
    // The pause control and its hot key.
    void onPauseRecording();
    void pauseRecording();
    void resumeRecording();
    // Ends the file under way and goes on in another.
    void splitRecording();

    bool isRecording() const { return mIsRecording; }
    bool isPaused() const { return mRecordManager && mRecordManager->isPaused(); }
    // A file is written or closed.
    bool isWriting() const { return mIsWriting; }
    // Another file follows the one that is being finished.
    bool isFollowed() const { return isSplitting() || mStartsAfterFile || mGoesOnAfterSleep; }
    bool isPausedBySilence() const { return ispausedBySilence; }
    bool isPrepareStartRecording() const { return mRecordManager && mRecordManager->isPrepareRecording(); }
    // Nothing is recorded, finished, started again, converted or repaired.
    bool isSettled() const;
    const RecordingDisplay &display() const { return mDisplay; }
    QString file() const { return mFile; }
    // What the file that is written holds, until it is whole.
    double recordedSeconds() const { return mIsWriting && mRecordManager ? mRecordManager->recordingDuration() : 0; }
    qint64 recordedBytes() const { return mIsWriting && mRecordManager ? mRecordManager->recordedFileSize() : 0; }
    RecordedAudioInfo *currentItem() const { return mCurRecordAudioInfo; }
    int pendingConversions() const { return mConversions.pending(); }

    // Makes this process the owner of recordings, list and tasks; false when another one is.
    bool claim() { return mJournal.claim(); }
    // What a crash has left behind. After claim().
    CrashLeftovers &leftovers() { return mLeftovers; }

    // The recordings from now on belong to this task, or to none.
    void setExecutedTask(const std::optional<ExecutedTask> &task);

    // The sources by the names that a person uses: "system", "mic", "both"; -1 for others.
    static int sourceNamed(const QString &name);

private:
    void RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &url) override;
    void RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &url, double duration,
                                                      const std::optional<foundation::Failure> &failure) override;
    void RecordManagerUpdateAudioLevel(RecordManager &, float level) override;
    void RecordManagerDeviceLost(RecordManager &) override { deviceIsAway(true); }
    void RecordManagerDeviceBack(RecordManager &) override { deviceIsAway(false); }

    void deviceIsAway(bool away);
    void countLostFrames();
    QString chooseFile() const;
    foundation::Result<void> prepare();
    foundation::Result<void> begin(const QString &file);
    void showControls();
    void showStopped();
    void watch();
    void stopTimers();
    bool isSplitting() const { return isStoppedBySilence || isAutoSplitEverySeconds; }

    void _displayRecordingDuration();
    void showPaused();
    void showRunning();
    void _displaySoundSymbol();
    void updateAudioLevels();
    void plusSilenceDuration();

    void interrupted(const FinishedRecording &recording, const foundation::Failure &failure);
    void startAgain();
    void endOrGiveUp(const QString &file);
    void rescued(const QString &file);
    void filter(const FinishedRecording &recording);
    void complete(const FinishedRecording &recording);
    void convert(FinishedRecording recording);
    void goOn();
    void endTask();
    void end(const RecordingTrouble &trouble);
    void settle();

    void machineWillSleep(bool shutsDown);
    void machineDidWake();
    void holdMachine() const;
    void releaseMachine() const;

    RecordingSessionView &mView;
    RecordedList &mList;
    RecordingJournal mJournal;
    CrashLeftovers mLeftovers;
    foundation::Clock &mClock;
    RecordedConversions mConversions;
    std::unique_ptr<RecordManager> mRecordManager;
    std::unique_ptr<foundation::Timer> _timerRecording;        // 0.5 s
    std::unique_ptr<foundation::Timer> _timerUpdateAudioLevel; // 0.1 s
    std::unique_ptr<foundation::Timer> mTimerSoundSymbol;      // 0.2 s
    std::unique_ptr<foundation::Timer> mTimerRestart;          // after an error
    QPointer<RecordedAudioInfo> mCurRecordAudioInfo;
    std::optional<ExecutedTask> mTask;
    double mTaskSecondsBefore = 0; // in the task's files before this one
    SilenceWatch mSilence;
    RecordingDisplay mDisplay;
    int mSource = 0;
    QString mDevice;            // the one that is recorded
    QString mFile;              // the one that is written; empty before the first frames
    double silenceDuration = 0; // milliseconds
    bool hasSound = true;
    int mNote = 0;
    bool mIsRecording = false; // as shown
    bool mIsWriting = false;   // until the file is closed, longer than it is recorded
    bool mStartsAfterFile = false;
    bool mMachineSleeps = false;    // or is about to, or to shut down
    bool mGoesOnAfterSleep = false; // a recording was ended for that
    bool isPausedByUser = false;
    bool ispausedBySilence = false;
    bool isStoppedBySilence = false;      // the last stop was a split by silence; a recording follows
    bool isAutoSplitEverySeconds = false; // the same of a split by period, or by hand
    bool stopRecordingByRemoveFile = false;
    qint64 mDroppedFrames = 0, mFilledFrames = 0; // of the running recording, as counted last
    qint64 mLostFrames = 0;                       // in it
    bool mFillsAbsence = false;                   // the next silence that is filled in is the device's absence
    bool mIsDeviceAway = false;                   // of the running recording, or before one that is waited for
    bool mSplitsOnceBack = false;
    bool mLacksDevice = false; // why the last start was refused
    int mFailuresInARow = 0;
    foundation::Clock::Duration mLastStart{};
    QString mKept; // by the last error
};

} // namespace cantorel
