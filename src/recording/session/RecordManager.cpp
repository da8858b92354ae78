#include "recording/session/RecordManager.h"

#include "audio_device/ZQAudioKextKit.h"
#include "capture/ZQAVRecorderKit.h"
#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/hal/HardwareSystem.h"
#include "recording/session/RecordingNames.h"
#include "settings/AppSettings.h"

#include <QFile>
#include <QScopeGuard>

#include <utility>

namespace cantorel {

namespace {

constexpr std::chrono::seconds kJoinPatience(10); // as long as what is kept has room

void logFailure(const foundation::Failure &failure) {
    ErrorDescription error;
    error.domain = QStringLiteral("RecordManager");
    error.localizedDescription = Lang::english(failure.sentence);
    error.localizedFailureReason = failure.detail;
    LogError(error);
}

} // namespace

QString RecordManager::getAudioDeviceNameWithAudioDeviceType(int type) {
    const auto source = recordingSource(type);
    if (source == RecordingSource::SystemSound) {
        const auto device = ZQAudioKextKit::systemSoundDevice();
        return device ? device->localizedName : QString();
    }
    if (source == RecordingSource::Microphone)
        return ZQAudioKextKit::getDefaultAudioInputName();
    return source ? QString::fromLatin1(kTessolarAggregateDeviceName) : QString();
}

RecordManager::~RecordManager() { endJoin(); }

bool RecordManager::startRecord(const QUrl &file) {
    mIsPrepareRecording = true;
    const auto joined = qScopeGuard([this] { endJoin(); });
    try {
        const bool started = start(file);
        mIsPrepareRecording = false;
        return started;
    } catch (const std::exception &exception) {
        LogException(exception);
    } catch (...) {
        LogException(QStringLiteral("RecordManager"), QStringLiteral("unknown exception"));
    }
    return false;
}

bool RecordManager::start(const QUrl &file) {
    mAudioRecorder = ZQAVRecorderKit::sharedInstance().getAudioRecorder();
    if (!mAudioRecorder)
        return false;
    mAudioRecorder->delegate = this;
    mAudioRecorder->setIsShowAudioLevel(true);
    mAudioRecorder->setRescue(rescuePath);
    mAudioRecorder->takeOver(std::exchange(mContinuation, {}));

    mSource = recordingSource(AppSettings::getAudioType());
    mAudioRecorder->setAudioDevice(mSource == RecordingSource::SystemSound
                                       ? ZQAudioKextKit::systemSoundDevice()
                                       : ZQAudioKextKit::getTheCaptureDeviceWithName(
                                           getAudioDeviceNameWithAudioDeviceType(AppSettings::getAudioType())));
    mCounts = {};

    const QString output = ZQAudioKextKit::getDefaultAudioOutputName();
    AppSettings::setAudioOutputDeviceNameBeforeRecording(output);
    AppSettings::setAudioInputDeviceNameBeforeRecording(ZQAudioKextKit::getDefaultAudioInputName());
    AppSettings::setRecordingOutputDeviceName(output);
    if (mSource && includesSystemSound(*mSource))
        mRouting.begin([this](bool isHeard) {
            if (isHeard)
                delegate->RecordManagerOutputBack(*this);
            else
                delegate->RecordManagerOutputLost(*this);
        });

    QString error;
    const bool started = mAudioRecorder->startRecording(file, &error);
    if (started) {
        mRecordState = State::StartRequested;
        postRecordingNotification();
    } else {
        logFailure({error, QString()});
    }
    return started;
}

void RecordManager::stopRecord() {
    if (isRecording()) {
        mCounts = mAudioRecorder->recordingCounts();
        mAudioRecorder->stopRecording();
    } else {
        endJoin();
    }
    if (mSource && includesSystemSound(*mSource))
        mRouting.end();
}

void RecordManager::joinNextRecording() {
    if (!isRecording())
        return;
    mAudioRecorder->joinNextRecording();
    ZQAudioKextKit::keepRouting(true);
    mJoin = hal::HardwareSystem::clock().after(kJoinPatience, [this] { endJoin(); });
}

void RecordManager::endJoin() {
    if (!mJoin)
        return;
    mJoin.reset();
    mContinuation = {};
    if (mAudioRecorder)
        mAudioRecorder->forgetNextRecording();
    ZQAudioKextKit::keepRouting(false);
}

void RecordManager::pauseRecording(Pause pause) {
    if (mAudioRecorder)
        mAudioRecorder->pauseRecording(pause);
}

void RecordManager::resumeRecording() {
    if (mAudioRecorder)
        mAudioRecorder->resumeRecording();
}

void RecordManager::clear() {
    if (!mAudioRecorder)
        return;
    mAudioRecorder->delegate = nullptr;
    if (mJoin)
        mContinuation = mAudioRecorder->letGo();
    RecorderRelease(mAudioRecorder);
    mAudioRecorder = nullptr;
    mRecordState = State::Idle;
}

bool RecordManager::isRecording() const { return mAudioRecorder && mAudioRecorder->isRecording(); }

bool RecordManager::isPaused() const { return mAudioRecorder && mAudioRecorder->isPaused(); }

void RecordManager::postRecordingNotification() {
    foundation::NotificationCenter::defaultCenter().post(
        kNotificationUpdateRecordingState,
        RecordingStateUpdate{this, mCounts.seconds(), static_cast<int>(mRecordState)});
}

void RecordManager::captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url) {
    mRecordState = State::Writing;
    postRecordingNotification();
    delegate->RecordManagerDidStartRecordingToOutputAtURL(*this, url);
}

void RecordManager::captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &url,
                                                           const media::RecordingCounts &counts,
                                                           const std::optional<foundation::Failure> &failure) {
    mCounts = counts;
    if (failure) {
        logFailure(*failure);
        clear();
        delegate->RecordManagerDidFinishRecordingToOutputAtURL(*this, url, mCounts, failure);
        return;
    }
    if (!delegate->RecordManagerRecordFileIsNeedSave()) {
        QFile::remove(url.toLocalFile());
        mCounts.frames = 0;
        return;
    }
    delegate->RecordManagerDidFinishRecordingToOutputAtURL(*this, url, mCounts, std::nullopt);
}

std::optional<LevelsOfBoth> RecordManager::levelsOfBoth() const {
    if (!mAudioRecorder || mSource != RecordingSource::Both)
        return {};
    const std::vector<float> levels = mAudioRecorder->sourceLevels();
    if (levels.size() != 2)
        return {};
    return LevelsOfBoth{levels[1], levels[0]}; // The aggregate is made of the microphone first.
}

void RecordManager::captureUpdateAudioLevel(ZQAVRecorder &, float level) {
    delegate->RecordManagerUpdateAudioLevel(*this, level);
}

} // namespace cantorel
