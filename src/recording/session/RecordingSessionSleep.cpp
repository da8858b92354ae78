#include "log/Log.h"
#include "recording/session/RecordingSession.h"

// What a recording does when the machine sleeps.

namespace cantorel {

using Phase = SessionPhase;

// Finishes the file while the machine waits. What the person has paused stays as it is over a sleep: nothing is
// written.
void RecordingSession::machineWillSleep(bool shutsDown) {
    const bool isOpen = hasOpenFile(mPhase);
    if (isOpen && isPausedByUser() && !shutsDown) {
        mSleep.release();
        return;
    }
    if (isBusy())
        Log(QStringLiteral("the machine sleeps or shuts down: the recording is finished"));
    if (isOpen) {
        close(AfterFile::AfterSleep);
    } else if (isRecording()) {
        mPhase = Phase::Asleep;
        mNext = AfterFile::AfterSleep;
        showStopped();
    } else if (mNext == AfterFile::Split || mNext == AfterFile::SplitBySilence) {
        mNext = AfterFile::AfterSleep;
        mRecordManager->stopRecord(); // It waits for the next file no more.
    }
    if (!isWriting())
        mSleep.release();
}

void RecordingSession::machineDidWake() {
    if (mPhase == Phase::Asleep) {
        mPhase = Phase::Following;
        follow();
    } else if (isWriting()) {
        mSleep.hold();
    }
}

} // namespace cantorel
