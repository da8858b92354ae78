#pragma once

#include "platform/foundation/Clock.h"
#include "recording/session/FileUnderWay.h"
#include "recording/session/RunningDisplay.h"
#include "recording/session/SessionPhase.h"
#include "recording/session/SilenceRules.h"
#include "recording/session/SilenceWatch.h"

#include <memory>

namespace cantorel {

class RecordManager;

// Hears what the running recording wants done.
class RunningRecordingOwner {
public:
    virtual ~RunningRecordingOwner() = default;

    virtual void recordingShallStop() = 0;
    virtual void recordingShallSplit(AfterFile split) = 0;
    virtual void recordedFileIsGone() = 0;
    virtual void recordingControlsDidChange() = 0;
};

// A file while it is written: shows it, pauses and resumes it, and finds out when it shall be split or has to end. Made
// by RecordingSession for each file; main thread.
class RunningRecording {
public:
    struct Parts {
        RunningRecordingOwner &owner;
        RecordingSessionView &view;
        RecordManager &manager;
        foundation::Clock &clock;
        SilenceRules &silence; // counts on over several files
        FileUnderWay &file;
    };
    // All outlive it. The recorder has been started.
    explicit RunningRecording(const Parts &parts);

    void framesCame();
    void levelCame(float level);
    // The recording was stopped; ends the timers.
    void end();

    PausedBy pausedBy() const { return mPaused; }
    void pause();
    void resume();
    // Splits at once, or as soon as a pause by the person ends or the device is back: until then the next file could
    // not begin, or would undo the pause.
    void split();

private:
    void _displayRecordingDuration();
    void _displaySoundSymbol();
    void updateAudioLevels();

    const Parts mParts;
    FileUnderWay &mFile;
    std::unique_ptr<foundation::Timer> _timerRecording;        // 0.5 s
    std::unique_ptr<foundation::Timer> _timerUpdateAudioLevel; // 0.1 s
    std::unique_ptr<foundation::Timer> mTimerSoundSymbol;      // 0.2 s
    RunningDisplay mDisplay;
    SilenceWatch mSilenceWatch;
    PausedBy mPaused = PausedBy::Nobody;
    bool mSplitIsDue = false;
};

} // namespace cantorel
