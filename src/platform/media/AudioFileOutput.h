#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Guarded.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/WeakDelegate.h"
#include "platform/media/CaptureStream.h"
#include "platform/media/DiskSpace.h"
#include "platform/media/RecordingCounts.h"
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
    // Once for each recording, with where its file is; nothing when it is whole.
    virtual void captureOutputDidFinishRecording(AudioFileOutput &, const QString & /*path*/, const RecordingCounts &,
                                                 const std::optional<foundation::Failure> &) {}
    // The device of a running recording has gone, or has come back; the recording stays open meanwhile, and what is
    // missing is filled with silence.
    virtual void captureOutputDeviceLost(AudioFileOutput &) {}
    virtual void captureOutputDeviceBack(AudioFileOutput &) {}
    // A device that has another rate or other channels, or comes back so, ends its recording with a failure.
};

// What a recording leaves to the one that follows it without a gap: the running stream, and the queue that it fills.
struct RecordingContinuation {
    std::shared_ptr<FrameQueue> queue; // outlives the stream that fills it
    std::unique_ptr<CaptureStream> stream;
    std::uint64_t dropped = 0; // by the queue, before
    std::uint64_t filled = 0;
};

struct AudioChannel {
    float averagePowerLevel = 0; // dB, RMS of the last 100 ms, -80 at least
    bool enabled = true;
};

// The way from a device to an output.
struct CaptureConnection {
    std::vector<AudioChannel> audioChannels;
};

// Records what a capture session hears into M4A files, one after the other. Owned beside its session; main thread.
class AudioFileOutput : public QObject {
public:
    ~AudioFileOutput() override;

    foundation::WeakDelegate<AudioFileOutputDelegate> delegate;

    // Sees the exact frames that are handed to the coder, on the worker's thread; for tests, set before a recording.
    std::function<void(std::span<const float> interleavedStereo)> tap;

    // Names a free file for what was recorded when its folder was removed meanwhile; the recording is then told to have
    // ended there. On the worker's thread; set before a recording.
    std::function<QString(const QString &path)> rescue;

    // A recording ends when its disk has less room; in bytes, set before a recording.
    std::uint64_t diskReserve = kDiskReserve;

    // How often the worker looks for frames; for tests that let time fly, set before a recording.
    std::chrono::milliseconds pollInterval = kPollInterval;

    // Replaces a file of that name. A recording under way ends with the frame before the first of this one. What
    // fails is told by the delegate.
    void startRecordingToOutputFile(const QString &path);
    // The recording ends with the frames captured until now and the few that complete the coder's block of 1024, so
    // that every player finds it as long as it was captured. The rest is written in the background.
    void stopRecording();
    // The recording under way will be followed by another: once it is stopped, the frames behind its last are kept for
    // the next recording of the same stream, be it by this output or by one that takes the session's continuation.
    void joinNextRecording() { mJoins = isRecording(); }
    // Keeps nothing for a next one any more.
    void forgetNextRecording();

    // By the person: nothing is captured. For silence: the last frames are kept at hand, and stand in front of those
    // that follow when the recording is resumed. A pause by the person gives up what is kept.
    enum class Pause { ByPerson, ForSilence };
    void pauseRecording(Pause pause = Pause::ByPerson);
    void resumeRecording();

    bool isRecording() const { return mCurrent != nullptr; }
    bool isPaused() const { return mPause.has_value(); }

    // Of the recording under way, else of the last one.
    RecordingCounts recordingCounts() const;

    // One connection with the channels of the device; none without one.
    std::vector<CaptureConnection> connections() const;

private:
    friend class CaptureSession;

    struct Recording {
        std::uint64_t number = 0;
        QString path;
        std::unique_ptr<RecordingWorker> worker;
        std::uint64_t dropped = 0; // by the queue, before it began
        std::uint64_t filled = 0;
        std::int64_t droppedFrames = 0;             // until it was stopped
        std::optional<foundation::Failure> failure; // why it was ended, if it should not have
    };

    // Runs the call on the main thread, in order with the others. Any thread.
    void post(std::function<void()> call);
    void customEvent(QEvent *) override;
    void setStream(CaptureStream *stream); // ends a recording of the stream before
    void deviceAlive(bool alive);
    void partsThere(bool allThere, double secondsAway);
    void formatChanged(const QString &deviceName);
    void endDoubt(const QString &deviceName);
    void retire(FrameQueue *successor, bool continues = false);
    bool isUsed(const FrameQueue &queue) const;
    std::size_t framesOf(double seconds) const;
    // For the output of another session; without a queue when there is nothing to continue.
    RecordingContinuation letGo();
    void takeOver(RecordingContinuation next) { mNext = std::move(next); }
    void workerStarted(std::uint64_t number, const QString &path);
    void workerFinished(std::uint64_t number, const QString &path, const std::optional<foundation::Failure> &failure);
    static RecordingCounts countsOf(const Recording &recording);

    foundation::Guarded<std::vector<std::function<void()>>> mPosted;
    std::function<CaptureStream *()> mFreshStream; // the session's stream, opened again where that is needed
    CaptureStream *mStream = nullptr;              // the session's
    std::unique_ptr<Recording> mCurrent;
    std::vector<std::unique_ptr<Recording>> mEnding; // stopped, still writing
    std::uint64_t mNextNumber = 1;
    std::optional<Pause> mPause;
    bool mJoins = false;
    double mSecondsAway = 0;
    std::optional<std::uint64_t> mLostAt; // the queue's end when the device went, while it is away
    // While the device does not match, and until it has had time to: a server makes it piece by piece.
    std::unique_ptr<foundation::Timer> mDoubt;
    std::uint64_t mDoubtAt = 0;  // the queue's end when that began
    RecordingContinuation mNext; // without the stream, which is the session's
    RecordingCounts mLast;
};

} // namespace cantorel::media
