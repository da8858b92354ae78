#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/WeakDelegate.h"
#include "platform/media/AudioFileOutput.h"
#include "platform/media/CaptureSession.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel {

class ZQAVRecorder;

// Hears what a recorder does, on the main thread. All functions are optional.
class ZQAVRecorderDelegate {
public:
    virtual ~ZQAVRecorderDelegate() = default;

    virtual void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &) {}
    // The failure is empty for a file that is whole.
    virtual void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &, const media::RecordingCounts &,
                                                        const std::optional<foundation::Failure> &) {}
    // Every 0.1 s while levels are asked for: 20 times the linear amplitude; not a number without channels.
    virtual void captureUpdateAudioLevel(ZQAVRecorder &, float) {}
    // The device of a running recording has gone, or has come back.
    virtual void captureDeviceLost(ZQAVRecorder &) {}
    virtual void captureDeviceBack(ZQAVRecorder &) {}
    // A movie is finished and lies at the path.
    virtual void AVRecorderDidFinishRecorderWithOutputFilePath(ZQAVRecorder &, const QString & /*outputFilePath*/) {}
};

// The common base of the recorders: a capture session and one file output. Main thread.
class ZQAVRecorder : public QObject, public media::AudioFileOutputDelegate {
public:
    ZQAVRecorder();
    ~ZQAVRecorder() override;

    foundation::WeakDelegate<ZQAVRecorderDelegate> delegate;

    // A new session with the highest preset that it accepts; always true here.
    virtual bool initCaptureSession(QString *error);

    // False in the base.
    virtual bool startRecording(const QUrl &url, QString *error);
    virtual void stopRecording();
    // Does nothing while nothing is recorded. A pause for silence keeps the last frames; a pause by the person after it
    // drops them.
    virtual void pauseRecording(media::AudioFileOutput::Pause pause = media::AudioFileOutput::Pause::ByPerson);
    virtual void resumeRecording();

    void startCaptureRuning(); // Spelling is fixed.
    void stopCaptureRuning();  // Spelling is fixed.

    bool isPaused() const { return bIsPaused; }
    virtual bool isRecording() const;
    // Of the recording under way, else of the last one.
    virtual media::RecordingCounts recordingCounts() const;
    std::int64_t recordedFileSize() const { return recordingCounts().bytes; }
    double recordingDuration() const { return recordingCounts().wholeSeconds(); } // seconds

    virtual void setIsShowAudioLevel(bool flag);
    // The level of each device behind the recorded one, in their order and with the meaning of
    // captureUpdateAudioLevel().
    std::vector<float> sourceLevels() const;

    std::vector<media::CaptureDevice> audioDevices() const { return media::captureAudioDevices(); }
    QUrl outputFileURL() const { return mOuputFileURL; }
    std::uint32_t outputFrameRate() const { return OutputFrameRate_; }
    void setOutputFrameRate(std::uint32_t rate) { OutputFrameRate_ = rate; }
    // What codes the pictures of movies: "libx264" or "h264_vaapi"; empty: libx264.
    QString videoEncodeName() const { return mVideoEncodeName; }
    void setVideoEncodeName(const QString &name) { mVideoEncodeName = name; }
    virtual QString outputVideoQuality() const { return QString::fromLatin1(media::kSessionPresetHigh); }

protected:
    // The file output that the operations above act on; null in the base.
    virtual media::AudioFileOutput *fileOutput() const { return nullptr; }
    // The base counts all channels.
    virtual bool counts(const media::AudioChannel &) const { return true; }
    virtual std::vector<media::AudioChannel> audioChannels() const;

    void captureOutputDidStartRecording(media::AudioFileOutput &, const QString &path) override;
    void captureOutputDidFinishRecording(media::AudioFileOutput &, const QString &path,
                                         const media::RecordingCounts &counts,
                                         const std::optional<foundation::Failure> &failure) override;
    void captureOutputDeviceLost(media::AudioFileOutput &) override { delegate->captureDeviceLost(*this); }
    void captureOutputDeviceBack(media::AudioFileOutput &) override { delegate->captureDeviceBack(*this); }

    std::unique_ptr<media::CaptureSession> mCaptureSession;
    QUrl mOuputFileURL; // Spelling is fixed.
    bool bIsPaused = false;

private:
    void updateAudioLevelTimer();
    std::vector<media::AudioChannel> countedChannels() const;

    std::unique_ptr<foundation::Timer> mAudioLevelTimer;
    std::uint32_t OutputFrameRate_ = 30;
    QString mVideoEncodeName;
};

} // namespace cantorel
