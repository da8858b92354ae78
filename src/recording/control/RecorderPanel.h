#pragma once

#include "platform/foundation/Sentence.h"
#include "recording/control/LevelDisplay.h"
#include "recording/control/SoundHistory.h"
#include "recording/schedule/ScheduleTaskRunner.h"
#include "recording/session/RecordingSessionView.h"

#include <functional>

namespace cantorel {

// What the recorder is doing, as a person sees it at a glance.
enum class RecorderState { Idle, Preparing, Recording, Paused, WaitingForSound, DeviceLost, Finishing };

// What a window shows of a recording: gathers what a session tells into one state with its texts, for all that show it
// (the tab, the status item). Holds no widgets. Owned by the window; main thread.
class RecorderPanel : public RecordingSessionView, public ScheduleTaskView {
public:
    // State, texts or controls have changed.
    std::function<void()> changed;
    // A level has come: the meter and the picture go on.
    std::function<void()> levelCame;
    // A recording is ready; one has failed, is kept or starts again.
    std::function<void(const FinishedRecording &)> finished;
    std::function<void(const QString &sentence)> failed;
    std::function<void()> settled;
    std::function<void()> playbackShallStop;
    std::function<void(const TaskCountdown &)> countdownDidChange;
    std::function<void()> tasksChanged;
    std::function<void(const QString &sentence)> missed;
    // Seconds until the computer is shut down; less than 0: it is not after all.
    std::function<void(int seconds)> shutdownIn;

    // Tells nobody any more.
    void forget();

    RecorderState state() const;
    const RecordingControls &controls() const { return mControls; }
    const RecordingDisplay &display() const { return mDisplay; }
    const SoundHistory &history() const { return mHistory; }
    LevelDisplay &level() { return mLevel; }
    // The file that is written and the device that is recorded; empty when there is none.
    QString file() const { return mFile; }
    QString device() const { return mDevice; }

    // In the language in force.
    QString stateText() const;
    QString timeLeftText() const;
    // What went wrong last, or what the person should know now; empty when all is well.
    QString sentence() const;
    // sentence: of the core, in English, or in the language in force. kept: where the file lies that it is about.
    void setSentence(const foundation::Sentence &sentence, const QString &kept = {});
    const TaskCountdown &countdown() const { return mCountdown; }
    // Which task is made next, and that it needs the program; empty when none lies ahead.
    QString taskAheadText() const;

    void recordingStarted(const QString &file, const QString &device) override;
    void recordingControlsDidChange(const RecordingControls &controls) override;
    void recordingDisplay(const RecordingDisplay &display) override;
    void recordingLevel(float level) override;
    void recordingFramesLost(qint64 frames) override;
    void recordingPaused(bool bySilence) override;
    void recordingResumed() override;
    void recordingSilent(const foundation::Sentence &sentence) override;
    void recordingDeviceLost(const QString &device) override;
    void recordingDeviceBack(const QString &device) override;
    void recordingConverting(const QString &file) override;
    void recordingFinished(const FinishedRecording &recording) override;
    void recordingFiltered(const QString &file, double seconds) override;
    void recordingInterrupted(const RecordingTrouble &trouble) override;
    void recordingFailed(const RecordingTrouble &trouble) override;
    void recordingEndsEarly(const foundation::Sentence &sentence) override;
    void recordingSettled() override;
    void stopPlayback() override;

    void taskCountdown(const TaskCountdown &countdown) override;
    void tasksDidChange() override;
    void taskMissed(const ScheduleTaskInfo &task, const QDateTime &start,
                    const foundation::Sentence &sentence) override;
    void shutdownCountdown(int secondsLeft) override;
    void shutdownCancelled() override;

private:
    void tell() const;
    void tellLostFrames(qint64 frames);
    bool isRunning() const { return mControls.startShowsStop; }

    RecordingControls mControls;
    RecordingDisplay mDisplay;
    SoundHistory mHistory;
    LevelDisplay mLevel;
    TaskCountdown mCountdown;
    qint64 mLostFrames = 0; // of the file
    foundation::Sentence mSentence;
    QString mFile, mDevice, mKept;
    bool mHasFrames = false;
    bool mIsPaused = false, mIsPausedBySilence = false, mIsDeviceLost = false, mIsConverting = false;
    bool mIsSettled = true; // since the last recording; between the files of a split it is not
};

} // namespace cantorel
