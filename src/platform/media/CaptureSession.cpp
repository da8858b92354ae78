#include "platform/media/CaptureSession.h"

#include <utility>

namespace cantorel::media {

namespace {

// The device under its present number: one that was made anew, as aggregates are, keeps its identifier only.
CaptureDevice present(const CaptureDevice &wanted) {
    return captureDeviceWithUniqueID(wanted.uniqueID).value_or(wanted);
}

} // namespace

CaptureSession::~CaptureSession() {
    close();
    if (mOutput)
        mOutput->mFreshStream = {};
}

bool CaptureSession::canSetSessionPreset(const QString &preset) const {
    return preset == QLatin1String(kSessionPresetHigh) || preset == QLatin1String(kSessionPresetMedium)
           || preset == QLatin1String(kSessionPresetLow);
}

bool CaptureSession::canAddInput(const CaptureDeviceInput &input) const {
    return !mInput && captureDeviceWithUniqueID(input.device.uniqueID).has_value();
}

void CaptureSession::addInput(const CaptureDeviceInput &input) {
    mInput = input;
    update();
}

void CaptureSession::removeInput() {
    mInput.reset();
    update();
}

bool CaptureSession::canAddOutput(const AudioFileOutput &output) const { return !mOutput && !output.mFreshStream; }

void CaptureSession::addOutput(AudioFileOutput &output) {
    mOutput = &output;
    mOutput->mFreshStream = [this] {
        update();
        return mStream.get();
    };
    mOutput->setStream(mStream.get());
}

void CaptureSession::commitConfiguration() {
    if (mConfiguring > 0 && --mConfiguring == 0)
        update();
}

void CaptureSession::startRunning() {
    mRunning = true;
    update();
}

void CaptureSession::stopRunning() {
    mRunning = false;
    update();
}

void CaptureSession::close() {
    if (mOutput)
        mOutput->setStream(nullptr);
    mStream.reset();
    mOpenDevice = kAudioObjectUnknown;
}

RecordingContinuation CaptureSession::letGo() {
    RecordingContinuation continuation = mOutput && mStream ? mOutput->letGo() : RecordingContinuation();
    if (!continuation.queue)
        return {};
    mStream->onAliveChanged = {};
    mStream->onPartsChanged = {};
    mStream->onFormatChanged = {};
    continuation.stream = std::move(mStream);
    mOpenDevice = kAudioObjectUnknown;
    return continuation;
}

void CaptureSession::adopt(std::unique_ptr<CaptureStream> stream, AudioObjectID device) {
    mStream = std::move(stream);
    mOpenDevice = device;
    mStream->onAliveChanged = [this](bool alive) {
        if (mOutput)
            mOutput->deviceAlive(alive);
    };
    mStream->onPartsChanged = [this](bool allThere, double secondsAway) {
        if (mOutput)
            mOutput->partsThere(allThere, secondsAway);
    };
    mStream->onFormatChanged = [this] {
        if (mOutput && mInput)
            mOutput->formatChanged(mInput->device.localizedName);
    };
    if (mOutput)
        mOutput->setStream(mStream.get());
}

void CaptureSession::update() {
    if (mConfiguring > 0)
        return;
    const bool recording = mOutput && mOutput->isRecording();
    if (mRunning && mInput && !recording)
        mInput->device = present(mInput->device);
    const AudioObjectID wanted = mRunning && mInput ? mInput->device.objectID : kAudioObjectUnknown;
    if (wanted == mOpenDevice && (!mStream || recording || mStream->matchesDevice())
        && (mStream || wanted == kAudioObjectUnknown))
        return;
    close();
    if (wanted == kAudioObjectUnknown)
        return;
    RecordingContinuation before = std::exchange(mContinuation, {});
    if (before.stream && before.stream->device() == wanted && before.stream->matchesDevice()) {
        adopt(std::move(before.stream), wanted);
        if (mOutput)
            mOutput->takeOver(std::move(before));
        return;
    }
    auto opened = CaptureStream::open(mInput->device);
    if (opened) // else it is tried again when a recording starts, which tells it then
        adopt(std::move(opened).value(), wanted);
}

} // namespace cantorel::media
