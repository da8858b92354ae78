#pragma once

#include "platform/foundation/Sentence.h"
#include "recording/session/RecordingJournal.h"
#include "recording/session/SessionPhase.h"

#include <QString>

#include <optional>

namespace cantorel {

// A finished recording.
struct FinishedRecording {
    QString file;       // the final one
    double seconds = 0; // exact length of what was captured
    qint64 bytes = 0;   // of the final file
    qint64 droppedFrames = 0;
    qint64 lostFrames = 0; // droppedFrames and the silence filled in while the device was present
};

// What the controls of a recording show.
struct RecordingControls {
    bool startShowsStop = false;
    bool pauseEnabled = false;
    bool pauseShowsResume = false;
    QString pauseToolTip;
    RecorderState state = RecorderState::Idle;
};

// What is shown of a running recording, twice a second.
struct RecordingDisplay {
    QString duration = QStringLiteral("00:00:00");
    QString size;
    QString badge;                       // beside the program's icon; blinks while paused
    bool durationVisible = true;         // likewise
    bool silenceVisible = false;         // the sign that it waits for sound
    double seconds = 0;                  // whole seconds recorded
    qint64 bytes = 0;                    // of the file
    std::optional<qint64> secondsLeft{}; // until the disk is full, the converted copy included
    qint64 lostFrames = 0;               // dropped, or filled with silence while the device was present
};

// Why a recording has ended or goes on with another file.
struct RecordingTrouble {
    foundation::Sentence sentence;
    QString kept; // path of the M4A; empty if nothing was kept
};

// Hears what becomes of the recordings of a task. All functions are optional.
class RecordingSessionTasks {
public:
    virtual ~RecordingSessionTasks() = default;

    // The person has ended the task's recording.
    virtual void taskWasStoppedByHand() {}
    // The task's recording and all its files have ended.
    virtual void taskRecordingDidEnd() {}
};

// What a session shows; implemented by each face. Main thread. All optional.
class RecordingSessionView {
public:
    virtual ~RecordingSessionView() = default;

    virtual void recordingRecovered(const RecordingJournal::Recovered &) {}
    // file: the M4A being written.
    virtual void recordingStarted(const QString & /*file*/, const QString & /*device*/) {}
    // The controls or the state shown beside them have changed.
    virtual void recordingControlsDidChange(const RecordingControls &) {}
    virtual void recordingDisplay(const RecordingDisplay &) {}
    virtual void recordingLevel(float) {} // every 0.1 s; a linear amplitude times 20
    // In front of recordingLevel() while both sources are recorded: each one's own level.
    virtual void recordingLevelsOfBoth(float /*system*/, float /*microphone*/) {}
    // Frames lost since the last level.
    virtual void recordingFramesLost(qint64 /*frames*/) {}
    virtual void recordingNote(int) {} // every 0.2 s: 1 to 7 while there is sound, 0 for none
    virtual void recordingPaused(bool /*bySilence*/) {}
    virtual void recordingResumed() {}
    virtual void recordingSilent(const foundation::Sentence &) {}
    virtual void recordingHeard() {} // after recordingSilent(): the first sound
    virtual void recordingDeviceLost(const QString & /*device*/) {}
    virtual void recordingDeviceBack(const QString & /*device*/) {}
    // The system sound being recorded cannot be heard for now, or can be heard again.
    virtual void recordingIsHeard(bool /*isHeard*/) {}
    virtual void recordingConverting(const QString & /*file*/) {}
    virtual void recordingFinished(const FinishedRecording &) {}
    // The recording was too short to be kept, and was deleted.
    virtual void recordingFiltered(const QString & /*file*/, double /*seconds*/) {}
    // The recording was interrupted and is started again.
    virtual void recordingInterrupted(const RecordingTrouble &) {}
    // A recording, its start or a conversion has failed and is not tried again.
    virtual void recordingFailed(const RecordingTrouble &) {}
    // The recording ends early but whole, and is finished and converted like any other.
    virtual void recordingEndsEarly(const foundation::Sentence &) {}
    // Nothing is recorded, started again or converted any more.
    virtual void recordingSettled() {}

    // Playback of the library stops, so that it is not recorded.
    virtual void stopPlayback() {}
    virtual void setSystemVolumeSlider(double /*percent*/) {}
};

} // namespace cantorel
