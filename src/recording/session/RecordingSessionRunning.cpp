#include "lang/Lang.h"
#include "log/Log.h"
#include "recording/library/RecordedList.h"
#include "recording/session/RecordingSession.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

// The recording while it runs: what is shown of it, and what the person and the recorder say meanwhile.

namespace cantorel {

using Phase = SessionPhase;

RecorderState RecordingSession::state() const {
    const RecorderState open = mFile.deviceIsAway    ? RecorderState::DeviceLost
                               : ispausedBySilence() ? RecorderState::WaitingForSound
                               : isPaused()          ? RecorderState::Paused
                                                     : RecorderState::Recording;
    switch (mPhase) {
    case Phase::Idle:
    case Phase::Naming:
        return pendingConversions() > 0 ? RecorderState::Finishing : RecorderState::Idle;
    case Phase::Starting:
    case Phase::Refused:
    case Phase::WaitingToRestart:
        return mFile.deviceIsAway ? RecorderState::DeviceLost : RecorderState::Preparing;
    case Phase::Writing:
        return open;
    case Phase::Closing:
    case Phase::Following:
    case Phase::Asleep:
        return isBusy() ? RecorderState::Recording : RecorderState::Finishing; // Between two files it goes on.
    }
    return RecorderState::Idle;
}

void RecordingSession::recordingControlsDidChange() {
    const bool resumes = isRecording() && isPausedByUser();
    mView.recordingControlsDidChange(
        {isRecording(), isRecording(), resumes, resumes ? Lang::btnResume() : Lang::btnPause(), state()});
}

void RecordingSession::onPauseRecording() {
    if (isPaused() && !ispausedBySilence())
        resumeRecording();
    else
        pauseRecording();
}

void RecordingSession::pauseRecording() {
    if (hasOpenFile(mPhase))
        mRunning->pause();
}

void RecordingSession::resumeRecording() {
    if (hasOpenFile(mPhase))
        mRunning->resume();
}

void RecordingSession::splitRecording() {
    if (mPhase == Phase::Writing)
        mRunning->split();
}

void RecordingSession::RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &url) {
    mFile.path = url.toLocalFile();
    Log(QStringLiteral("did start record succ : %1").arg(mFile.path));
    mFile.item =
        &mList.addRecordedFile(mFile.path, ToolString::stringFromDuration(0), ToolFile::fileSizeFormatterToString(0));
    mFile.item->isRecording = true;
    if (mPhase == Phase::Starting) { // It may have been stopped with its first frames.
        mPhase = Phase::Writing;
        stopRecordingByRemoveFile = false;
        mRunning->framesCame();
        recordingControlsDidChange();
    }
    mView.recordingStarted(mFile.path, mFile.device);
}

void RecordingSession::RecordManagerUpdateAudioLevel(RecordManager &, float level) {
    if (mRunning)
        mRunning->levelCame(level);
}

void RecordingSession::deviceIsAway(bool away) {
    mFile.deviceIsAway = away;
    mFile.fillsAbsence |= away;
    recordingControlsDidChange();
    if (away)
        mView.recordingDeviceLost(mFile.device);
    else
        mView.recordingDeviceBack(mFile.device);
}

} // namespace cantorel
