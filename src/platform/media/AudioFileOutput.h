#pragma once

#include "platform/foundation/Guarded.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/WeakDelegate.h"
#include "platform/media/CaptureStream.h"
#include "platform/media/RecordingWorker.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace cantorel::media {

class AudioFileOutput;

// What is told about a recording, on the main thread and never from within a call to the output. All optional.
class AudioFileOutputDelegate {
public:
    virtual ~AudioFileOutputDelegate() = default;

    // The first frames are here. Not told for a recording that ends before.
    virtual void captureOutputDidStartRecording(AudioFileOutput &, const QString & /*path*/) {}
    // Once for each recording; nothing when the file is whole.
    virtual void captureOutputDidFinishRecording(AudioFileOutput &, const QString & /*path*/,
                                                 const std::optional<foundation::Failure> &) {}
    // The device of a running recording has gone, or has come back; the recording stays open meanwhile.
    virtual void captureOutputDeviceLost(AudioFileOutput &) {}
    virtual void captureOutputDeviceBack(AudioFileOutput &) {}
};

struct AudioChannel {
    float averagePowerLevel = 0; // dB, RMS of the last 100 ms, -80 at least
    bool enabled = true;
};

// The way from a device to an output.
struct CaptureConnection {
    std::vector<AudioChannel> audioChannels;
};

// A duration as a number of frames and the frames of a second; 0 of 0 when there is none.
struct MediaTime {
    std::int64_t value = 0;
    std::int32_t timescale = 0;
};

// Records what a capture session hears into M4A files, one after the other. Owned beside its session; main thread.
class AudioFileOutput : public QObject {
public:
    ~AudioFileOutput() override;

    foundation::WeakDelegate<AudioFileOutputDelegate> delegate;

    // Sees the exact frames that are handed to the coder, on the worker's thread; for tests, set before a recording.
    std::function<void(std::span<const float> interleavedStereo)> tap;

    // Replaces a file of that name. A recording under way ends with the frame before the first of this one. What
    // fails is told by the delegate.
    void startRecordingToOutputFile(const QString &path);
    // The recording ends with the frames captured until now and the few that complete the coder's block of 1024, so
    // that every player finds it as long as it was captured. The rest is written in the background.
    void stopRecording();
    void pauseRecording();
    void resumeRecording();

    bool isRecording() const { return mCurrent != nullptr; }
    bool isPaused() const { return mPaused; }

    // Of the recording under way, else of the last one.
    MediaTime recordedDuration() const;
    std::uint64_t recordedFileSize() const; // bytes in the file now
    std::uint64_t droppedFrames() const;
    std::uint64_t discontinuities() const;
    std::uint64_t limitedSamples() const;

    // One connection with the channels of the device; none without one.
    std::vector<CaptureConnection> connections() const;

private:
    friend class CaptureSession;

    struct Recording {
        std::uint64_t number = 0;
        QString path;
        double sampleRate = 0;
        std::unique_ptr<RecordingWorker> worker;
    };
    struct Counts {
        MediaTime duration;
        std::uint64_t bytes = 0;
        std::uint64_t dropped = 0;
        std::uint64_t discontinuities = 0;
        std::uint64_t limited = 0;
    };

    // Runs the call on the main thread, in order with the others. Any thread.
    void post(std::function<void()> call);
    void customEvent(QEvent *) override;
    void setStream(CaptureStream *stream); // ends a recording of the stream before
    void deviceAlive(bool alive);
    void retire(FrameQueue *successor);
    void workerStarted(std::uint64_t number, const QString &path);
    void workerFinished(std::uint64_t number, const QString &path, const std::optional<foundation::Failure> &failure);
    static Counts countsOf(const Recording &recording);
    Counts counts() const { return mCurrent ? countsOf(*mCurrent) : mLast; }

    foundation::Guarded<std::vector<std::function<void()>>> mPosted;
    std::function<CaptureStream *()> mFreshStream; // the session's stream, opened again where that is needed
    CaptureStream *mStream = nullptr;              // the session's
    std::unique_ptr<Recording> mCurrent;
    std::vector<std::unique_ptr<Recording>> mEnding; // stopped, still writing
    std::uint64_t mNextNumber = 1;
    bool mPaused = false;
    Counts mLast;
};

} // namespace cantorel::media
