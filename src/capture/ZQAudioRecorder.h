#pragma once

#include "capture/ZQAVRecorder.h"

#include <functional>
#include <span>

namespace cantorel {

// Records one audio device to M4A files. Its session runs for its whole life, so that the level is known at any time.
// Handed out by ZQAVRecorderKit; main thread.
class ZQAudioRecorder : public ZQAVRecorder {
public:
    // Null when the session refuses its output.
    static std::unique_ptr<ZQAudioRecorder> init();
    ~ZQAudioRecorder() override;

    bool initCaptureSession(QString *error) override;

    // Does nothing for a device with the display name of the current one, recording or not. Without a device nothing
    // is recorded.
    void setAudioDevice(const std::optional<media::CaptureDevice> &device);
    std::optional<media::CaptureDevice> currentAudioDevice() const;

    // Replaces a file of that name. Always true: the delegate hears of failures.
    bool startRecording(const QUrl &url, QString *error) override;
    void stopRecording() override;

    // For a split: the frames after the last of the recording under way are kept. letGo() hands them out, with a null
    // queue if there are none; the next recorder takes them over before it is given the same device.
    void joinNextRecording() { mAudioFileOutput->joinNextRecording(); }
    void forgetNextRecording() { mAudioFileOutput->forgetNextRecording(); }
    media::RecordingContinuation letGo() { return mCaptureSession->letGo(); }
    void takeOver(media::RecordingContinuation continuation) { mCaptureSession->takeOver(std::move(continuation)); }

    // A recording ends when its disk has less free space than this, in bytes.
    void setDiskReserve(std::uint64_t bytes) { mAudioFileOutput->diskReserve = bytes; }
    // Names a free file for a recording whose folder was removed meanwhile, on another thread.
    void setRescue(std::function<QString(const QString &path)> rescue) { mAudioFileOutput->rescue = std::move(rescue); }
    // For tests: how often the file's thread looks for frames, and a function that it calls with the exact frames that
    // go to the coder.
    void setPollInterval(std::chrono::milliseconds interval) { mAudioFileOutput->pollInterval = interval; }
    void setTap(std::function<void(std::span<const float> interleavedStereo)> tap);

protected:
    media::AudioFileOutput *fileOutput() const override { return mAudioFileOutput.get(); }
    bool counts(const media::AudioChannel &channel) const override { return channel.enabled; }

private:
    ZQAudioRecorder() = default;

    std::unique_ptr<media::AudioFileOutput> mAudioFileOutput;
    std::optional<media::CaptureDeviceInput> mAudioDeviceInput;
};

} // namespace cantorel
