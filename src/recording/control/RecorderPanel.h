#pragma once

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/Sentence.h"
#include "recording/control/LevelDisplay.h"
#include "recording/control/SoundHistory.h"
#include "recording/schedule/ScheduleTaskRunner.h"
#include "recording/session/RecordingSessionView.h"

#include <QObject>

#include <array>
#include <optional>
#include <vector>

namespace cantorel {

// What a window shows of a recording: gathers what a session tells into one state with its texts, for all that show it
// (the tab, the status item). Holds no widgets. Owned by the window; main thread.
class RecorderPanel : public QObject, public RecordingSessionView, public ScheduleTaskView {
    Q_OBJECT

public:
    RecorderPanel();

    RecorderState state() const { return mControls.state; }
    // Something is recorded, or begins or ends: the control shows Stop.
    bool isRunning() const { return mControls.startShowsStop; }
    const RecordingControls &controls() const { return mControls; }
    const RecordingDisplay &display() const { return mDisplay; }
    const SoundHistory &history() const { return mHistory; }
    // The meter of what is recorded, or of one of the sources while both are.
    enum class Lane { System, Microphone };
    LevelDisplay &level(Lane lane = Lane::System) { return mLevels[static_cast<std::size_t>(lane)]; }
    // The file being written and the device being recorded; empty while nothing is recorded.
    QString file() const { return mFile; }
    QString device() const { return mDevice; }

    // In the language in force.
    QString stateText() const;
    QString timeLeftText() const;
    // What went wrong last, or what the person should know now; empty when all is well.
    QString sentence() const;
    // sentence: from the core in English, or in the current language. kept: the path of the file that it is about.
    void setSentence(const foundation::Sentence &sentence, const QString &kept = {});
    // Why a recording could not be begun; until the devices are others.
    void refuseStart(const foundation::Sentence &sentence);
    // Starts of tasks that did not become recordings, the newest first, until the person has seen them.
    struct MissedStart {
        QString name;
        QDateTime start;
        foundation::Sentence why;
    };
    const std::vector<MissedStart> &missedStarts() const { return mMissed; }
    void forgetMissed(std::size_t number) { mMissed.erase(mMissed.begin() + static_cast<std::ptrdiff_t>(number)); }
    // When the next task begins, or that it is recorded now; empty without one.
    QString taskStartText() const;
    const TaskCountdown &countdown() const { return mCountdown; }
    // That a task begins within some minutes; empty without one.
    QString taskSoonText() const;
    // Which task comes next, and that the program must keep running for it; empty without one.
    QString taskAheadText() const;

    void recordingStarted(const QString &file, const QString &device) override;
    void recordingControlsDidChange(const RecordingControls &controls) override;
    void recordingDisplay(const RecordingDisplay &display) override;
    void recordingLevel(float level) override;
    void recordingLevelsOfBoth(float system, float microphone) override;
    void recordingFramesLost(qint64 frames) override;
    void recordingSilent(const foundation::Sentence &sentence) override;
    void recordingHeard() override;
    void recordingIsHeard(bool isHeard) override;
    void recordingDeviceLost(const QString &device) override;
    void recordingFinished(const FinishedRecording &recording) override;
    void recordingFiltered(const QString &file, double seconds) override;
    void recordingInterrupted(const RecordingTrouble &trouble) override;
    void recordingFailed(const RecordingTrouble &trouble) override;
    void recordingEndsEarly(const foundation::Sentence &sentence) override;
    void recordingSettled() override;
    void stopPlayback() override;

    void taskCountdown(const TaskCountdown &countdown) override;
    void taskMissed(const ScheduleTaskInfo &task, const QDateTime &start, const foundation::Sentence &why) override;
    void shutdownCountdown(int secondsLeft) override;
    void shutdownCancelled() override;
    void dayDidChange() override { Q_EMIT dayChanged(); }

Q_SIGNALS:
    // State, texts or controls have changed.
    void changed();
    // Time, size and room on the disk go on, twice a second.
    void ticked();
    // A recording begins: the settings may be those of a task now.
    void begun();
    // A level has come: the meter and the picture go on.
    void levelCame();
    // A recording is ready; one has failed, is kept or starts again.
    void finished(const FinishedRecording &recording);
    void failed(const QString &sentence);
    void settled();
    void playbackShallStop();
    void countdownDidChange();
    // A task begins within some minutes.
    void taskIsNear(const QString &text);
    void missed(const QString &sentence);
    // What reads "Today" does so no longer.
    void dayChanged();
    // Seconds until the computer is shut down; below 0 if the shutdown was cancelled.
    void shutdownIn(int seconds);

private:
    void tellLostFrames(qint64 frames);

    RecordingControls mControls;
    RecordingDisplay mDisplay;
    SoundHistory mHistory;
    std::array<LevelDisplay, 2> mLevels;       // by lanes
    std::optional<std::array<float, 2>> mBoth; // of the level that comes next
    TaskCountdown mCountdown;
    std::vector<MissedStart> mMissed;
    qint64 mLostFrames = 0; // of the file
    foundation::Sentence mSentence;
    QString mFile, mDevice, mKept;
    // What the sentence goes with.
    enum class Until { Replaced, Sound, Output, Devices } mSentenceStays = Until::Replaced;
    foundation::NotificationCenter::Subscription mDevices;
    bool mIsSettled = true; // since the last recording; between the files of a split it is not
};

} // namespace cantorel
