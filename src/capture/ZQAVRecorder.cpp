#include "capture/ZQAVRecorder.h"

#include "platform/hal/HardwareSystem.h"

#include <cmath>

namespace cantorel {

namespace {

constexpr std::chrono::milliseconds kLevelInterval(100);
constexpr double kLevelScale = 20;

} // namespace

ZQAVRecorder::ZQAVRecorder() = default;

ZQAVRecorder::~ZQAVRecorder() = default;

bool ZQAVRecorder::initCaptureSession(QString *) {
    mCaptureSession = std::make_unique<media::CaptureSession>();
    for (const char *preset : {media::kSessionPresetHigh, media::kSessionPresetMedium, media::kSessionPresetLow}) {
        if (mCaptureSession->canSetSessionPreset(QString::fromLatin1(preset))) {
            mCaptureSession->setSessionPreset(QString::fromLatin1(preset));
            break;
        }
    }
    return true;
}

bool ZQAVRecorder::startRecording(const QUrl &, QString *) { return false; }

void ZQAVRecorder::stopRecording() {
    if (auto *output = fileOutput())
        output->stopRecording();
}

void ZQAVRecorder::pauseRecording(media::AudioFileOutput::Pause pause) {
    if (!isRecording())
        return;
    fileOutput()->pauseRecording(pause);
    bIsPaused = true;
}

void ZQAVRecorder::resumeRecording() {
    if (!bIsPaused || !isRecording())
        return;
    fileOutput()->resumeRecording();
    bIsPaused = false;
}

void ZQAVRecorder::startCaptureRuning() {
    if (mCaptureSession)
        mCaptureSession->startRunning();
}

void ZQAVRecorder::stopCaptureRuning() {
    if (mCaptureSession && mCaptureSession->isRunning())
        mCaptureSession->stopRunning();
}

bool ZQAVRecorder::isRecording() const { return fileOutput() && fileOutput()->isRecording(); }

media::RecordingCounts ZQAVRecorder::recordingCounts() const {
    return fileOutput() ? fileOutput()->recordingCounts() : media::RecordingCounts();
}

void ZQAVRecorder::setIsShowAudioLevel(bool flag) {
    mAudioLevelTimer.reset();
    if (!flag)
        return;
    mAudioLevelTimer = hal::HardwareSystem::clock().every(kLevelInterval, [this] { updateAudioLevelTimer(); });
}

void ZQAVRecorder::updateAudioLevelTimer() {
    double sum = 0;
    int count = 0;
    if (const auto *output = fileOutput()) {
        for (const media::CaptureConnection &connection : output->connections()) {
            for (const media::AudioChannel &channel : connection.audioChannels) {
                if (!counts(channel))
                    continue;
                sum += channel.averagePowerLevel;
                ++count;
            }
        }
    }
    // Without channels this is deliberately not a number; the watchers of silence compare it so.
    const double level = std::pow(10.0, sum / count * 0.05);
    delegate->captureUpdateAudioLevel(*this, static_cast<float>(level * kLevelScale));
}

void ZQAVRecorder::captureOutputDidStartRecording(media::AudioFileOutput &, const QString &path) {
    delegate->captureDidStartRecordingToOutputAtURL(*this, QUrl::fromLocalFile(path));
}

void ZQAVRecorder::captureOutputDidFinishRecording(media::AudioFileOutput &, const QString &path,
                                                   const media::RecordingCounts &counts,
                                                   const std::optional<foundation::Failure> &failure) {
    delegate->captureDidFinishRecordingToOutputAtURL(*this, QUrl::fromLocalFile(path), counts, failure);
}

} // namespace cantorel
