#include "capture/ZQAudioRecorder.h"

#include <QFile>

#include <utility>

namespace cantorel {

std::unique_ptr<ZQAudioRecorder> ZQAudioRecorder::init() {
    std::unique_ptr<ZQAudioRecorder> recorder(new ZQAudioRecorder);
    return recorder->initCaptureSession(nullptr) ? std::move(recorder) : nullptr;
}

ZQAudioRecorder::~ZQAudioRecorder() {
    stopRecording();
    stopCaptureRuning();
    mCaptureSession.reset(); // before the output that it points at
}

bool ZQAudioRecorder::initCaptureSession(QString *error) {
    if (!ZQAVRecorder::initCaptureSession(error))
        return false;
    mAudioFileOutput = std::make_unique<media::AudioFileOutput>();
    mAudioFileOutput->delegate = this;
    if (!mCaptureSession->canAddOutput(*mAudioFileOutput)) {
        mCaptureSession.reset();
        mAudioFileOutput.reset();
        return false;
    }
    mCaptureSession->addOutput(*mAudioFileOutput);
    if (!mCaptureSession->isRunning())
        mCaptureSession->startRunning();
    return true;
}

void ZQAudioRecorder::setAudioDevice(const std::optional<media::CaptureDevice> &device) {
    if (device && mAudioDeviceInput && mAudioDeviceInput->device.localizedName == device->localizedName)
        return;
    mCaptureSession->beginConfiguration();
    mCaptureSession->removeInput();
    mAudioDeviceInput.reset();
    if (device && mCaptureSession->canAddInput({*device})) {
        mAudioDeviceInput = media::CaptureDeviceInput{*device};
        mCaptureSession->addInput(*mAudioDeviceInput);
    }
    mCaptureSession->commitConfiguration();
}

std::optional<media::CaptureDevice> ZQAudioRecorder::currentAudioDevice() const {
    return mAudioDeviceInput ? std::optional(mAudioDeviceInput->device) : std::nullopt;
}

bool ZQAudioRecorder::startRecording(const QUrl &url, QString *) {
    const QString path = url.toLocalFile();
    (void)QFile::remove(path); // if this fails, creating the new file fails too and reports why
    mOuputFileURL = url;
    mAudioFileOutput->startRecordingToOutputFile(path);
    bIsPaused = false;
    return true;
}

void ZQAudioRecorder::stopRecording() {
    ZQAVRecorder::stopRecording();
    setIsShowAudioLevel(false);
}

void ZQAudioRecorder::setTap(std::function<void(std::span<const float>)> tap) {
    mAudioFileOutput->tap = std::move(tap);
}

} // namespace cantorel
