#include "recording/session/RunningRecording.h"

#include "audio_device/ZQAudioKextKit.h"
#include "log/GuardedAction.h"
#include "recording/session/RecordManager.h"
#include "settings/AppSettings.h"
#include "util/tools/Tools.h"

#include <QFileInfo>

namespace cantorel {

using namespace std::chrono_literals;

namespace {

constexpr foundation::SentenceKey kDiskFullEnded("DiskFullEnded", "Folder");

constexpr auto kDisplayInterval = 500ms;
constexpr auto kSoundSymbolInterval = 200ms;
constexpr auto kLevelInterval = 100ms;

SilenceRules::Settings silenceSettings() {
    return {AppSettings::isAutoSkipSilence(), AppSettings::isAutoSplitAudioFile(),
            static_cast<double>(AppSettings::autoSplitSeconds())};
}

} // namespace

RunningRecording::RunningRecording(const Parts &parts) : mParts(parts), mFile(parts.file) {
    mSilenceWatch.begin(mParts.clock.now());
    _timerRecording = mParts.clock.every(kDisplayInterval, [this] {
        (void)guarded("displayRecordingDuration", [this] { _displayRecordingDuration(); });
    });
}

void RunningRecording::framesCame() {
    _timerUpdateAudioLevel = mParts.clock.every(kLevelInterval, [this] {
        try {
            updateAudioLevels();
        } catch (const std::exception &exception) {
            Tools::logException(exception);
        }
    });
    mParts.silence.begin();
    mSilenceWatch.begin(mParts.clock.now());
    mTimerSoundSymbol = mParts.clock.every(
        kSoundSymbolInterval, [this] { (void)guarded("displaySoundSymbol", [this] { _displaySoundSymbol(); }); });
    mParts.view.setSystemVolumeSlider(
        100 * ZQAudioKextKit::getVolumeValueFromDeviceName(ZQAudioKextKit::getSystemSoundDeviceName()));
}

void RunningRecording::levelCame(float level) {
    mParts.silence.level(level);
    if (const auto levels = mParts.manager.levelsOfBoth())
        mParts.view.recordingLevelsOfBoth(levels->system, levels->microphone);
    mParts.view.recordingLevel(level);
    if (mSilenceWatch.level(level))
        mParts.view.recordingHeard();
    const qint64 lost = mFile.countLost(mParts.manager.recordingCounts());
    if (lost > 0)
        mParts.view.recordingFramesLost(lost);
}

void RunningRecording::end() {
    _timerRecording.reset();
    _timerUpdateAudioLevel.reset();
    mTimerSoundSymbol.reset();
    mPaused = PausedBy::Nobody;
    mSplitIsDue = false;
    mDisplay.clear();
    mParts.view.recordingDisplay(mDisplay.shown());
}

void RunningRecording::pause() {
    if (mPaused == PausedBy::Person)
        return;
    mPaused = PausedBy::Person;
    mParts.manager.pauseRecording();
    mParts.owner.recordingControlsDidChange();
    mParts.view.recordingPaused(false);
}

void RunningRecording::resume() {
    if (!mParts.manager.isPaused())
        return;
    mPaused = PausedBy::Nobody;
    mParts.manager.resumeRecording();
    mSilenceWatch.resumed(mParts.clock.now());
    mParts.owner.recordingControlsDidChange();
    mParts.view.recordingResumed();
}

void RunningRecording::split() {
    mSplitIsDue = mFile.deviceIsAway || mPaused == PausedBy::Person;
    if (!mSplitIsDue)
        mParts.owner.recordingShallSplit(AfterFile::Split);
}

void RunningRecording::_displayRecordingDuration() {
    if (!mFile.path.isEmpty() && !QFileInfo::exists(mFile.path)) {
        mParts.owner.recordedFileIsGone();
        return;
    }
    if (mPaused != PausedBy::Person && mSilenceWatch.isDue(mParts.clock.now()))
        mParts.view.recordingSilent(likelyCauseOfSilence(mFile.source, mFile.device));
    if (mParts.manager.isPaused()) {
        mDisplay.blink(mFile, mPaused == PausedBy::Silence);
        mParts.view.recordingDisplay(mDisplay.shown());
        return;
    }
    mDisplay.update(mFile, mParts.manager.recordingDuration(), mParts.manager.recordedFileSize());
    const RecordingDisplay &shown = mDisplay.shown();
    mParts.view.recordingDisplay(shown);
    // Without a period every refresh would split.
    const int period = AppSettings::autoSplitEverySeconds();
    if (mFile.task && mFile.taskSecondsBefore + shown.seconds >= mFile.task->seconds) {
        mParts.owner.recordingShallStop();
    } else if (shown.secondsLeft == 0) {
        mParts.view.recordingEndsEarly(kDiskFullEnded(AppSettings::outputPath()));
        mParts.owner.recordingShallStop();
    } else if (mSplitIsDue || (AppSettings::isAutoSplitEverySeconds() && period >= 1 && shown.seconds >= period)) {
        split();
    }
}

void RunningRecording::_displaySoundSymbol() {
    const auto action = mParts.silence.skip(mPaused, silenceSettings());
    if (action == SilenceRules::Action::Pause) {
        mPaused = PausedBy::Silence;
        mParts.manager.pauseRecording(RecordManager::Pause::ForSilence);
        Log(QStringLiteral("No audio input current..."));
        mParts.owner.recordingControlsDidChange();
        mParts.view.recordingPaused(true);
    } else if (action == SilenceRules::Action::Resume) {
        resume();
    }
    mParts.view.recordingNote(mDisplay.nextNote(mParts.silence.hearsSound() && !mParts.manager.isPaused()));
}

void RunningRecording::updateAudioLevels() {
    if (mParts.silence.count(mPaused, silenceSettings(), mDisplay.showsTime(), !mFile.deviceIsAway))
        mParts.owner.recordingShallSplit(AfterFile::SplitBySilence);
}

} // namespace cantorel
