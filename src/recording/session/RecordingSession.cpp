#include "recording/session/RecordingSession.h"

#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "platform/desktop/Services.h"
#include "platform/hal/HardwareSystem.h"
#include "recording/session/RecordingNames.h"
#include "recording/session/RecordingSpace.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"
#include "util/tools/Tools.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <algorithm>
#include <utility>

namespace cantorel {

using foundation::Failure;
using foundation::Result;
using namespace std::chrono_literals;

namespace {

constexpr foundation::SentenceKey kCannotWriteTo("CannotWriteTo", "Folder");
constexpr foundation::SentenceKey kDiskFull("DiskFull", "Folder");
constexpr foundation::SentenceKey kNoVirtualDevice("NoVirtualDevice");
constexpr foundation::SentenceKey kNoMicrophone("NoMicrophone");
constexpr foundation::SentenceKey kNotJoined("NotJoined");
constexpr foundation::SentenceKey kStateFolder("StateFolder");
constexpr foundation::SentenceKey kNotStarted("NotStarted");
constexpr foundation::SentenceKey kDiskFullEnded("DiskFullEnded", "Folder");

constexpr auto kDisplayInterval = 500ms;
constexpr auto kSoundSymbolInterval = 200ms;
constexpr auto kLevelInterval = 100ms;
constexpr double kLevelMilliseconds = 100;
constexpr float kSoundLevel = 0.005f;
constexpr int kNotes = 7;
const QString kNoDuration = QStringLiteral("00:00:00");
const QString kOldAggregateKey =
    QStringLiteral("OldAggregateSubDeivceUIDs"); // Spelling is fixed: stored settings use it.

// Why nothing can be written to the folder; empty when something can.
foundation::Sentence folderTrouble(const QString &folder) {
    QTemporaryFile probe(folder + QStringLiteral("/.cantorel-XXXXXX")); // Rights alone do not tell.
    if (!QDir().mkpath(folder) || !probe.open())
        return kCannotWriteTo(folder);
    if (recordingSecondsLeft(folder, AppSettings::getAudioFormat(), 0, 0) == 0)
        return kDiskFull(folder);
    return {};
}

// Why the devices of a source can't be recorded; joins microphone and system sound where both are.
Result<void> prepareDevices(int source) {
    // What is remembered of the real devices follows the person's choice up to now.
    const bool hasVirtual = ZQAudioKextKit::activateSVAD();
    if (source != 1 && !hasVirtual)
        return Failure{kNoVirtualDevice(), QStringLiteral("no virtual device")};
    if (source != 0 && ZQAudioKextKit::getDefaultAudioInputName().isEmpty())
        return Failure{kNoMicrophone(), QStringLiteral("no default input")};
    if (source != 2)
        return {};
    const QVariantMap saved = AppSettings::getFromUserDefaults_Object(kOldAggregateKey).toMap();
    if (!ZQAudioKextKit::isAggregateDeviceChanged(saved))
        return {};
    ZQAudioKextKit::destroyAggregateDevice();
    const QVariantMap made = ZQAudioKextKit::createAggregateDevice();
    if (made.isEmpty())
        return Failure{kNotJoined(), QStringLiteral("createAggregateDevice failed")};
    AppSettings::saveToUserDefaultsForKeyObjectValue(kOldAggregateKey, made);
    return {};
}

} // namespace

RecordingSession::RecordingSession(RecordingSessionView &view, RecordedList &list, const QString &stateFolder)
    : mView(view),
      mList(list),
      mJournal(stateFolder),
      mLeftovers(view, list, mJournal),
      mClock(hal::HardwareSystem::clock()),
      mConversions(list) {
    if (const auto &sleep = desktop::InstalledServices::current().sleep) {
        sleep->willSleep = [this](bool shutsDown) {
            (void)guarded("machineWillSleep", [this, shutsDown] { machineWillSleep(shutsDown); });
        };
        sleep->didWake = [this] { (void)guarded("machineDidWake", [this] { machineDidWake(); }); };
    }
}

RecordingSession::~RecordingSession() {
    if (const auto &sleep = desktop::InstalledServices::current().sleep) {
        sleep->willSleep = {};
        sleep->didWake = {};
        sleep->release();
    }
    if (mRecordManager) {
        mRecordManager->stopRecord();
        mRecordManager->clear();
    }
}

int RecordingSession::sourceNamed(const QString &name) {
    return static_cast<int>(
        QStringList{QStringLiteral("system"), QStringLiteral("mic"), QStringLiteral("both")}.indexOf(name));
}

bool RecordingSession::isSettled() const {
    return !mIsRecording && !mIsWriting && !isFollowed() && mConversions.pending() == 0 && !mLeftovers.isRecovering();
}

void RecordingSession::settle() {
    releaseMachine();
    if (isSettled())
        mView.recordingSettled();
}

void RecordingSession::setExecutedTask(const std::optional<ExecutedTask> &task) {
    mTask = task;
    mTaskSecondsBefore = 0;
}

// Starting and stopping.

Result<void> RecordingSession::onStartRecording() {
    if (!mIsRecording)
        return startRecording();
    stopByHand();
    return {};
}

void RecordingSession::stopByHand() {
    tasks->taskWasStoppedByHand();
    stopRecording();
}

Result<void> RecordingSession::prepare() {
    if (!mJournal.claim())
        return Failure{kAnotherRecorder(), QStringLiteral("the recorder lock is held")};
    if (const auto trouble = folderTrouble(AppSettings::outputPath()); !trouble.isEmpty())
        return Failure{trouble, Lang::english(trouble)};
    mSource = AppSettings::getAudioType();
    const auto prepared = prepareDevices(mSource);
    mLacksDevice = !prepared;
    return prepared;
}

// Empty when the person has been asked and does not want to.
QString RecordingSession::chooseFile() const {
    if (mTask) {
        const QString count =
            mTask->repeats && mTask->loopedCount > 0 ? QStringLiteral("(%1)").arg(mTask->loopedCount) : QString();
        const QString name = ToolFile::cleanFileName(mTask->name);
        return QStringLiteral("%1/%2%3.m4a")
            .arg(AppSettings::outputPath(), name.isEmpty() ? QStringLiteral("Track") : name, count);
    }
    if (AppSettings::isAutoGenFileName())
        return Tools::getAudioNameFromTrack();
    if (AppSettings::outputFileName().isEmpty())
        AppSettings::setOutputFileName(Tools::getAudioNameFromDialog());
    return AppSettings::outputFileName();
}

Result<void> RecordingSession::startRecording() {
    if (mRecordManager && mRecordManager->isRecording()) {
        stopRecording(); // The control toggles.
        return {};
    }
    if (mIsWriting) {
        mStartsAfterFile = true;
        return {};
    }
    mTimerRestart.reset();
    mLacksDevice = false;
    if (const auto prepared = prepare(); !prepared)
        return prepared;
    mView.stopPlayback();
    const QString chosen = chooseFile();
    if (chosen.isEmpty())
        return Failure{{}, QStringLiteral("no name was chosen")};
    return begin(freeRecordingPath(chosen));
}

Result<void> RecordingSession::begin(const QString &file) {
    if (!mJournal.begin(file))
        return Failure{kStateFolder(), QStringLiteral("the journal could not be written")};
    // A filtered recording of this name may still wait to be deleted.
    mList.removeInvalidFile(file);
    mDevice = RecordManager::getAudioDeviceNameWithAudioDeviceType(mSource);
    if (!mRecordManager) {
        mRecordManager = std::make_unique<RecordManager>();
        mRecordManager->delegate = this;
    }
    mFile.clear();
    mDisplay = {};
    mSplitsOnceBack = mFillsAbsence = false;
    mDroppedFrames = mFilledFrames = mLostFrames = 0;
    mLastStart = mClock.now();
    if (mIsDeviceAway)
        deviceIsAway(false);
    const bool started = mRecordManager->startRecord(QUrl::fromLocalFile(file));
    if (started) {
        Log(QStringLiteral("will start record succ"));
        mIsWriting = true;
        holdMachine();
        mSilence.begin(mClock.now());
        _timerRecording = mClock.every(kDisplayInterval, [this] {
            (void)guarded("displayRecordingDuration", [this] { _displayRecordingDuration(); });
        });
    } else {
        mRecordManager->stopRecord();
        mRecordManager->clear();
        mJournal.end(file);
    }
    // Deliberate: shown as a recording whether or not it has started; the next press of the control stops it.
    isPausedByUser = false;
    mIsRecording = true;
    showControls();
    if (!started)
        return Failure{kNotStarted(), QStringLiteral("startRecord answered false")};
    return {};
}

void RecordingSession::showControls() {
    const bool resumes = mIsRecording && isPausedByUser;
    mView.recordingControlsDidChange(
        {mIsRecording, mIsRecording, resumes, resumes ? Lang::btnResume() : Lang::btnPause()});
}

void RecordingSession::stopTimers() {
    _timerRecording.reset();
    _timerUpdateAudioLevel.reset();
    mTimerSoundSymbol.reset();
}

void RecordingSession::showStopped() {
    mIsRecording = false;
    mTimerRestart.reset();
    stopTimers();
    isPausedByUser = false;
    ispausedBySilence = false;
    mIsDeviceAway = false; // Nobody waits for it any more.
    showControls();
    mDisplay = {};
    mDisplay.size = ToolFile::fileSizeFormatterToString(0);
    mView.recordingDisplay(mDisplay);
}

void RecordingSession::stopRecording() {
    if (!mIsRecording) {
        // Between two files of a split, or before one that waits: there is none then.
        isStoppedBySilence = isAutoSplitEverySeconds = mStartsAfterFile = false;
        if (mRecordManager)
            mRecordManager->stopRecord();
        if (std::exchange(mGoesOnAfterSleep, false) && !mIsWriting)
            end({});
        return;
    }
    showStopped();
    if (mRecordManager) {
        if (isSplitting())
            mRecordManager->joinNextRecording();
        mRecordManager->stopRecord();
    }
    if (!mIsWriting) { // Its start had failed, or an error came before.
        endTask();
        settle();
    }
}

void RecordingSession::splitRecording() {
    if (!mIsRecording || !mIsWriting)
        return;
    mSplitsOnceBack = mIsDeviceAway; // The next file could not begin.
    if (mIsDeviceAway)
        return;
    isAutoSplitEverySeconds = true;
    stopRecording();
}

void RecordingSession::onPauseRecording() {
    if (!mRecordManager || !mIsWriting || !mIsRecording)
        return;
    if (mRecordManager->isPaused() && !ispausedBySilence)
        resumeRecording();
    else
        pauseRecording();
}

void RecordingSession::pauseRecording() {
    if (!mRecordManager || isPausedByUser)
        return;
    isPausedByUser = true;
    ispausedBySilence = false;
    mRecordManager->pauseRecording();
    showControls();
    mView.recordingPaused(false);
}

void RecordingSession::resumeRecording() {
    if (!mRecordManager || !mRecordManager->isPaused())
        return;
    isPausedByUser = false;
    ispausedBySilence = false;
    mRecordManager->resumeRecording();
    mSilence.resumed(mClock.now());
    showControls();
    mView.recordingResumed();
}

// While a recording runs.

void RecordingSession::RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &url) {
    mFile = url.toLocalFile();
    Log(QStringLiteral("did start record succ : %1").arg(mFile));
    mCurRecordAudioInfo =
        &mList.addRecordedFile(mFile, ToolString::stringFromDuration(0), ToolFile::fileSizeFormatterToString(0));
    mCurRecordAudioInfo->isRecording = true;
    if (mIsRecording) // It may have been stopped with its first frames.
        watch();
    mView.recordingStarted(mFile, mDevice);
}

void RecordingSession::watch() {
    stopRecordingByRemoveFile = false;
    _timerUpdateAudioLevel = mClock.every(kLevelInterval, [this] {
        try {
            updateAudioLevels();
        } catch (const std::exception &exception) {
            Tools::logException(exception);
        }
    });
    hasSound = true;
    mTimerSoundSymbol = mClock.every(
        kSoundSymbolInterval, [this] { (void)guarded("displaySoundSymbol", [this] { _displaySoundSymbol(); }); });
    mView.setSystemVolumeSlider(
        100 * ZQAudioKextKit::getVolumeValueFromDeviceName(ZQAudioKextKit::getSystemSoundDeviceName()));
    mSilence.begin(mClock.now());
}

void RecordingSession::RecordManagerUpdateAudioLevel(RecordManager &, float level) {
    hasSound = level >= kSoundLevel;
    mSilence.level(level);
    mView.recordingLevel(level);
    countLostFrames();
}

void RecordingSession::countLostFrames() {
    const qint64 dropped = mRecordManager->droppedFrames(), filled = mRecordManager->filledFrames();
    qint64 lost = dropped - std::exchange(mDroppedFrames, dropped);
    if (const qint64 silence = filled - std::exchange(mFilledFrames, filled); silence > 0)
        lost += std::exchange(mFillsAbsence, false) ? 0 : silence;
    if (lost <= 0)
        return;
    mLostFrames += lost;
    mView.recordingFramesLost(lost);
}

void RecordingSession::_displayRecordingDuration() {
    if (!mFile.isEmpty() && !QFileInfo::exists(mFile)) {
        stopRecordingByRemoveFile = true;
        stopRecording();
        return;
    }
    if (!isPausedByUser && mSilence.isDue(mClock.now()))
        mView.recordingSilent(likelyCauseOfSilence(mSource, mDevice));
    if (mRecordManager->isPaused())
        showPaused();
    else
        showRunning();
}

void RecordingSession::showPaused() {
    const QString paused = Lang::tabRecordStatusPaused();
    if (mCurRecordAudioInfo && mCurRecordAudioInfo->status() != paused)
        mCurRecordAudioInfo->setStatus(paused);
    mDisplay.badge = mDisplay.badge.isEmpty() ? mDisplay.duration : QString();
    mDisplay.durationVisible = !mDisplay.durationVisible;
    mDisplay.silenceVisible = ispausedBySilence && mDisplay.durationVisible;
    mView.recordingDisplay(mDisplay);
}

void RecordingSession::showRunning() {
    mDisplay.seconds = mRecordManager->recordingDuration();
    mDisplay.bytes = mRecordManager->recordedFileSize();
    mDisplay.duration = ToolString::stringFromDuration(mDisplay.seconds);
    mDisplay.size = ToolFile::fileSizeFormatterToString(mDisplay.bytes);
    mDisplay.lostFrames = mLostFrames;
    mDisplay.badge = mDisplay.duration;
    mDisplay.durationVisible = true;
    mDisplay.silenceVisible = false;
    mDisplay.secondsLeft = recordingSecondsLeft(AppSettings::outputPath(), AppSettings::getAudioFormat(),
                                                mDisplay.seconds, mDisplay.bytes);
    if (mCurRecordAudioInfo) {
        mCurRecordAudioInfo->setDuration(mDisplay.duration);
        mCurRecordAudioInfo->setSize(mDisplay.size);
        mCurRecordAudioInfo->setStatus(Lang::tabRecordStatusRecording() + QStringLiteral("..."));
    }
    mView.recordingDisplay(mDisplay);
    if (mTask && mTaskSecondsBefore + mDisplay.seconds >= mTask->seconds) {
        stopRecording();
        return;
    }
    if (mDisplay.secondsLeft == 0) {
        mView.recordingEndsEarly(kDiskFullEnded(AppSettings::outputPath()));
        stopRecording();
        return;
    }
    // Without a period every refresh would split.
    const int period = AppSettings::autoSplitEverySeconds();
    if (mSplitsOnceBack || (AppSettings::isAutoSplitEverySeconds() && period >= 1 && mDisplay.seconds >= period))
        splitRecording();
}

void RecordingSession::deviceIsAway(bool away) {
    mIsDeviceAway = away;
    mFillsAbsence |= away;
    if (away)
        mView.recordingDeviceLost(mDevice);
    else
        mView.recordingDeviceBack(mDevice);
}

void RecordingSession::_displaySoundSymbol() {
    if (!mIsRecording || !mRecordManager)
        return;
    const bool skips = AppSettings::isAutoSkipSilence();
    if (skips && !hasSound && !isPausedByUser && !mRecordManager->isPaused()) {
        ispausedBySilence = true;
        mRecordManager->pauseRecording(RecordManager::Pause::ForSilence);
        Log(QStringLiteral("No audio input current..."));
        mView.recordingPaused(true);
    } else if (ispausedBySilence && (hasSound || !skips)) { // Who switches skipping off does not mean to stay paused.
        resumeRecording();
    }
    mNote = hasSound && !mRecordManager->isPaused() ? mNote % kNotes + 1 : 0;
    mView.recordingNote(mNote);
}

// Deliberate: the counter is not reset when sound comes back, so a file ends after that much silence in all.
void RecordingSession::updateAudioLevels() {
    if (!mIsRecording || hasSound)
        return;
    if (silenceDuration <= 0) {
        plusSilenceDuration();
        return;
    }
    if (!AppSettings::isAutoSkipSilence() || !AppSettings::isAutoSplitAudioFile())
        return;
    if (silenceDuration < AppSettings::autoSplitSeconds() || mIsDeviceAway) {
        plusSilenceDuration();
        return;
    }
    silenceDuration = 0;
    if (mDisplay.duration == kNoDuration)
        return;
    isStoppedBySilence = true;
    stopRecording();
}

void RecordingSession::plusSilenceDuration() {
    if (!AppSettings::isAutoSkipSilence() || !AppSettings::isAutoSplitAudioFile() || mDisplay.duration == kNoDuration)
        return;
    silenceDuration += kLevelMilliseconds;
    Log(QStringLiteral("silenceDuration :%1").arg(silenceDuration, 0, 'f', 6));
}

} // namespace cantorel
