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

// Hears about a recording, on the main thread and never from within a call to the output. All functions are optional.
class AudioFileOutputDelegate {
public:
    virtual ~AudioFileOutputDelegate() = default;

    // The first frames have arrived. Not called for a recording that ends before that.
    virtual void captureOutputDidStartRecording(AudioFileOutput &, const QString & /*path*/) {}
    // Once for each recording: where its file is, what it holds, and the failure if the file is not whole.
    virtual void captureOutputDidFinishRecording(AudioFileOutput &, const QString & /*path*/, const RecordingCounts &,
                                                 const std::optional<foundation::Failure> &) {}
    // The device of a running recording has gone, or has come back; the recording stays open meanwhile, and what is
    // missing is filled with silence.
    virtual void captureOutputDeviceLost(AudioFileOutput &) {}
    virtual void captureOutputDeviceBack(AudioFileOutput &) {}
    // A device whose sample rate or channels change ends its recording with a failure.
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
    int source = 0; // which of the devices behind the recorded one, in their order
};

// Connects a device with an output.
struct CaptureConnection {
    std::vector<AudioChannel> audioChannels;
};

// Records what a capture session hears into M4A files, one after the other. Owned beside its session; main thread.
class AudioFileOutput : public QObject {
public:
    ~AudioFileOutput() override;

    foundation::WeakDelegate<AudioFileOutputDelegate> delegate;

    // Called with the exact frames that go to the coder, on the worker's thread. For tests; set before a recording.
    std::function<void(std::span<const float> interleavedStereo)> tap;

    // Names a free file to copy the recording to when its folder has been removed; that file is then reported as the
    // finished one. Called on the worker's thread; set before a recording.
    std::function<QString(const QString &path)> rescue;

    // A recording ends when its disk has less free space than this, in bytes. Set before a recording.
    std::uint64_t diskReserve = kDiskReserve;

    // How often the worker looks for frames; for tests that let time fly, set before a recording.
    std::chrono::milliseconds pollInterval = kPollInterval;

    // Replaces a file of that name. A recording under way ends with the frame before the first of this one. The
    // delegate hears of failures.
    void startRecordingToOutputFile(const QString &path);
    // Ends the recording with the frames captured until now and the few that complete the coder's block of 1024, so
    // that every player shows its true length. The rest is written in the background.
    void stopRecording();
    // Announces that another recording follows the one under way. Once that is stopped, the frames after its last are
    // kept for the next recording of the same stream, by this output or by one that takes the session's continuation.
    void joinNextRecording() { mJoins = isRecording(); }
    // Undoes joinNextRecording() and drops the frames kept for the next recording.
    void forgetNextRecording();

    // ByPerson: nothing is captured. ForSilence: the last frames are kept, and are written in front of those that
    // follow a resume. A pause by the person drops the frames kept.
    enum class Pause { ByPerson, ForSilence };
    void pauseRecording(Pause pause = Pause::ByPerson);
    void resumeRecording();

    bool isRecording() const { return mCurrent != nullptr; }
    bool isPaused() const { return mPause.has_value(); }

    // Of the recording under way, else of the last one.
    RecordingCounts recordingCounts() const;

    // One connection with the channels of the device; empty without a device.
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
    // Hands the kept frames to the output of another session; the queue is null when nothing can be continued.
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
    // Runs while the device differs from what is recorded: a sound server changes a device step by step, so it gets
    // time.
    std::unique_ptr<foundation::Timer> mDoubt;
    std::uint64_t mDoubtAt = 0;  // the queue's end when that began
    RecordingContinuation mNext; // without the stream, which is the session's
    RecordingCounts mLast;
};

} // namespace cantorel::media
