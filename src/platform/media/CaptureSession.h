#pragma once

#include "platform/media/AudioFileOutput.h"
#include "platform/media/CaptureDevice.h"
#include "platform/media/CaptureStream.h"

#include <QString>

#include <memory>
#include <optional>

namespace cantorel::media {

// The presets that a session knows; for sound alone they make no difference.
inline constexpr const char *kSessionPresetHigh = "AVCaptureSessionPresetHigh";
inline constexpr const char *kSessionPresetMedium = "AVCaptureSessionPresetMedium";
inline constexpr const char *kSessionPresetLow = "AVCaptureSessionPresetLow";

// A device as the input of a session.
struct CaptureDeviceInput {
    CaptureDevice device;
};

// Joins one device and one output. While it runs and has an input, the device is open and its level is measured,
// whether or not anything is recorded. Main thread.
class CaptureSession {
public:
    CaptureSession() = default;
    ~CaptureSession();
    CaptureSession(const CaptureSession &) = delete;
    CaptureSession &operator=(const CaptureSession &) = delete;

    bool canSetSessionPreset(const QString &preset) const;
    void setSessionPreset(const QString &preset) { mPreset = preset; }
    QString sessionPreset() const { return mPreset; }

    // A device that has an input side, while there is no other input.
    bool canAddInput(const CaptureDeviceInput &input) const;
    void addInput(const CaptureDeviceInput &input);
    void removeInput();
    std::optional<CaptureDeviceInput> input() const { return mInput; }

    // One output, which outlives the session.
    bool canAddOutput(const AudioFileOutput &output) const;
    void addOutput(AudioFileOutput &output);

    // Hands over the stream of a recording that another one follows, with the frames after its last. The queue is null
    // when there is no such recording. The session has no stream afterwards.
    RecordingContinuation letGo();
    // Continues with that stream if the next input is its device; otherwise the stream ends then.
    void takeOver(RecordingContinuation continuation) { mContinuation = std::move(continuation); }

    // What is changed in between takes effect at the end, at once.
    void beginConfiguration() { ++mConfiguring; }
    void commitConfiguration();

    void startRunning();
    void stopRunning();
    bool isRunning() const { return mRunning; }

private:
    void update();
    void close();
    void adopt(std::unique_ptr<CaptureStream> stream, AudioObjectID device);

    QString mPreset;
    std::optional<CaptureDeviceInput> mInput;
    AudioFileOutput *mOutput = nullptr;
    std::unique_ptr<CaptureStream> mStream;
    AudioObjectID mOpenDevice = kAudioObjectUnknown;
    RecordingContinuation mContinuation; // until a device is opened
    int mConfiguring = 0;
    bool mRunning = false;
};

} // namespace cantorel::media
