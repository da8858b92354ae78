#include "recording/control/RecorderPanel.h"

#include "lang/Lang.h"
#include "util/tools/Tools.h"

#include <QLocale>

namespace cantorel {

namespace {

// As exactly as anybody plans with it; the signs of the units are the same in all languages.
QString hoursAndMinutes(qint64 seconds) {
    const qint64 hours = seconds / 3600, minutes = seconds / 60 % 60;
    if (hours >= 10)
        return QStringLiteral("%1 h").arg(hours);
    return hours > 0 ? QStringLiteral("%1 h %2 min").arg(hours).arg(minutes) : QStringLiteral("%1 min").arg(minutes);
}

template <class Function, class... Arguments> void call(const Function &function, const Arguments &...arguments) {
    if (function)
        function(arguments...);
}

} // namespace

void RecorderPanel::tell() const { call(changed); }

void RecorderPanel::forget() {
    changed = levelCame = settled = playbackShallStop = tasksChanged = {};
    finished = {};
    failed = missed = {};
    countdownDidChange = {};
    shutdownIn = {};
}

RecorderState RecorderPanel::state() const {
    if (!isRunning())
        return mIsConverting ? RecorderState::Finishing : RecorderState::Idle;
    if (mIsDeviceLost)
        return RecorderState::DeviceLost;
    if (!mHasFrames)
        return RecorderState::Preparing;
    if (mIsPaused)
        return mIsPausedBySilence ? RecorderState::WaitingForSound : RecorderState::Paused;
    return RecorderState::Recording;
}

QString RecorderPanel::stateText() const {
    switch (state()) {
    case RecorderState::Idle:
        return Lang::tabRecordStatusIdle();
    case RecorderState::Preparing:
        return Lang::commPreparing();
    case RecorderState::Recording:
        return Lang::tabRecordStatusRecording();
    case RecorderState::Paused:
        return Lang::tabRecordStatusPaused();
    case RecorderState::WaitingForSound:
        return Lang::windowWaitingForSound();
    case RecorderState::DeviceLost:
        return Lang::windowDeviceLost();
    case RecorderState::Finishing:
        return Lang::windowFinishing();
    }
    return {};
}

QString RecorderPanel::timeLeftText() const {
    if (!isRunning() || !mDisplay.secondsLeft)
        return {};
    return Lang::windowTimeLeft().replace(QLatin1String("[#Time#]"), hoursAndMinutes(*mDisplay.secondsLeft));
}

QString RecorderPanel::taskAheadText() const {
    if (mCountdown.taskName.isEmpty() || mCountdown.isExecuted)
        return {};
    return Tools::fillTextMarkers(Lang::windowTaskAhead())
        .replace(QLatin1String("[#Time#]"),
                 QLocale().toString(mCountdown.start.toLocalTime(), QStringLiteral("ddd yyyy-MM-dd HH:mm")))
        .replace(QLatin1String("[#TaskName#]"), mCountdown.taskName);
}

QString RecorderPanel::sentence() const {
    const QString sentence = Lang::sentence(mSentence);
    return mKept.isEmpty() ? sentence : QStringLiteral("%1 (%2)").arg(sentence, mKept);
}

void RecorderPanel::setSentence(const foundation::Sentence &sentence, const QString &kept) {
    mSentence = sentence;
    mKept = kept;
    tell();
}

void RecorderPanel::recordingStarted(const QString &file, const QString &device) {
    mHistory.mark(mIsSettled ? SoundHistory::Mark::Start : SoundHistory::Mark::Split);
    mIsSettled = false;
    mHasFrames = true;
    mIsDeviceLost = mIsPaused = false;
    mLostFrames = 0;
    mFile = file;
    mDevice = device;
    mSentence = {};
    mKept.clear();
    tell();
}

void RecorderPanel::recordingControlsDidChange(const RecordingControls &controls) {
    const bool begins = controls.startShowsStop && !isRunning();
    mControls = controls;
    if (begins) {
        mHasFrames = mIsPaused = mIsDeviceLost = false;
        mSentence = {};
        mKept.clear();
        mDisplay = {};
        if (mIsSettled)
            mHistory.clear();
    }
    if (!isRunning()) {
        mLevel.setLevel(0);
        mFile.clear();
        mDevice.clear();
    }
    tell();
}

void RecorderPanel::recordingDisplay(const RecordingDisplay &display) {
    mDisplay = display;
    tell();
}

void RecorderPanel::recordingLevel(float level) {
    const float height = shownLevel(level);
    mLevel.setLevel(height);
    mHistory.add(height, state() == RecorderState::Recording);
    call(levelCame);
}

void RecorderPanel::recordingFramesLost(qint64 frames) {
    mHistory.mark(SoundHistory::Mark::LostFrames);
    mLostFrames += frames;
    tellLostFrames(mLostFrames);
}

void RecorderPanel::tellLostFrames(qint64 frames) {
    setSentence(Lang::windowLostFrames().replace(QLatin1String("[#Count#]"), QString::number(frames)));
}

void RecorderPanel::recordingPaused(bool bySilence) {
    mIsPaused = true;
    mIsPausedBySilence = bySilence;
    tell();
}

void RecorderPanel::recordingResumed() {
    mIsPaused = false;
    tell();
}

void RecorderPanel::recordingSilent(const foundation::Sentence &sentence) { setSentence(sentence); }

void RecorderPanel::recordingDeviceLost(const QString &) {
    mIsDeviceLost = true;
    mHistory.mark(SoundHistory::Mark::DeviceLost);
    tell();
}

void RecorderPanel::recordingDeviceBack(const QString &) {
    mIsDeviceLost = false;
    tell();
}

void RecorderPanel::recordingConverting(const QString &) {
    mIsConverting = true;
    tell();
}

void RecorderPanel::recordingFinished(const FinishedRecording &recording) {
    if (recording.lostFrames > 0)
        tellLostFrames(recording.lostFrames);
    call(finished, recording);
}

void RecorderPanel::recordingFiltered(const QString &, double) { tell(); }

void RecorderPanel::recordingInterrupted(const RecordingTrouble &trouble) {
    setSentence(trouble.sentence, trouble.kept);
}

void RecorderPanel::recordingFailed(const RecordingTrouble &trouble) {
    setSentence(trouble.sentence, trouble.kept);
    call(failed, sentence());
}

void RecorderPanel::recordingEndsEarly(const foundation::Sentence &why) {
    setSentence(why);
    call(failed, sentence());
}

void RecorderPanel::recordingSettled() {
    mIsConverting = false;
    mIsSettled = true;
    tell();
    call(settled);
}

void RecorderPanel::stopPlayback() { call(playbackShallStop); }

void RecorderPanel::taskCountdown(const TaskCountdown &countdown) {
    mCountdown = countdown;
    call(countdownDidChange, countdown);
}

void RecorderPanel::tasksDidChange() { call(tasksChanged); }

void RecorderPanel::taskMissed(const ScheduleTaskInfo &, const QDateTime &, const foundation::Sentence &why) {
    setSentence(why);
    call(missed, sentence());
}

void RecorderPanel::shutdownCountdown(int secondsLeft) { call(shutdownIn, secondsLeft); }

void RecorderPanel::shutdownCancelled() { call(shutdownIn, -1); }

} // namespace cantorel
