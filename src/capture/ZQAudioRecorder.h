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

    // Nothing happens for a device of the same display name as the current one, be it recorded or not; nothing is
    // recorded from without one.
    void setAudioDevice(const std::optional<media::CaptureDevice> &device);
    std::optional<media::CaptureDevice> currentAudioDevice() const;

    // Replaces a file of that name. Always true: what fails is told by the delegate.
    bool startRecording(const QUrl &url, QString *error) override;
    void stopRecording() override;

    // The recording under way will be followed by another one: the frames behind its last are kept for the recorder
    // that takes them over before it is given the same device. Without a queue when there are none.
    void joinNextRecording() { mAudioFileOutput->joinNextRecording(); }
    void forgetNextRecording() { mAudioFileOutput->forgetNextRecording(); }
    media::RecordingContinuation letGo() { return mCaptureSession->letGo(); }
    void takeOver(media::RecordingContinuation continuation) { mCaptureSession->takeOver(std::move(continuation)); }

    // A recording ends when its disk has less room, in bytes.
    void setDiskReserve(std::uint64_t bytes) { mAudioFileOutput->diskReserve = bytes; }
    // Names a free file for a recording whose folder was removed meanwhile, on another thread.
    void setRescue(std::function<QString(const QString &path)> rescue) { mAudioFileOutput->rescue = std::move(rescue); }
    // How often the file's thread looks for frames, and what sees the exact frames that are handed to the coder, on
    // that thread; for tests.
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
