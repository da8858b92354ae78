#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/FrameQueue.h"
#include "platform/media/StereoMix.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace cantorel::media {

class AudioFileWriter;

// The real-time side never wakes anybody.
inline constexpr std::chrono::milliseconds kPollInterval(100);

// Where the frames of a recording come from.
struct RecordingInput {
    std::shared_ptr<FrameQueue> queue;
    double sampleRate = 0;           // frames a second
    std::vector<int> sourceChannels; // channels of each source; together those of the queue
    std::chrono::milliseconds pollInterval = kPollInterval;
};

// A queue for a recording of a device, with room for a disk or a predecessor that takes its time.
std::shared_ptr<FrameQueue> makeRecordingQueue(int channels, double sampleRate);

// One recording into one file: a queue that a real-time thread fills, and a thread "recorder" that mixes, codes and
// writes what is in it, half a second at a time. It reads from where the queue's last reader has ended, and leaves
// alone what lies behind its own end. Made, asked and destroyed on the main thread.
class RecordingWorker {
public:
    struct Events {
        std::function<void()> started; // the first frames are here
        // Where the file is, and nothing when it is whole; once, whatever happens, and nothing after it.
        std::function<void(const QString &path, std::optional<foundation::Failure>)> finished;
        // Names a free file to copy the finished one to when it was removed together with its folder. Optional.
        std::function<QString(const QString &path)> rescue;
        // Sees the frames that are handed to the coder; for tests.
        std::function<void(std::span<const float> interleavedStereo)> tap;
    };

    // The events come on the worker's thread. The recording ends with a failure that says so, and a whole file, when
    // its disk has less room than the reserve, in bytes.
    RecordingWorker(QString path, RecordingInput input, std::uint64_t diskReserve, Events events);
    // Waits for the end of the file.
    ~RecordingWorker();

    const std::shared_ptr<FrameQueue> &queue() const { return mInput.queue; }
    double sampleRate() const { return mInput.sampleRate; }

    // Leaves out what is captured from now on, but has the last `keptFrames` of it at hand.
    void hold(std::size_t keptFrames);
    // Ends that; with what is at hand, or with the frames from now on.
    enum class Release { WithKept, WithoutKept };
    void release(Release release);

    // Now: with the frames that are in the queue. WithBlock: with the block of the coder that they are in; what it
    // lacks is waited for as long as a device that runs may need. Return at once. A recording that is held ends where
    // it was held, and what is at hand then is left to the queue's next reader, up to nextKeeps frames.
    enum class End { Now, WithBlock };
    void stop(End end, std::size_t nextKeeps = 0);
    // Reads no further than to a position of the queue until it may go on, or is ended there.
    void waitAt(std::uint64_t position);
    void goOn();
    void stopAt(std::uint64_t position);

    std::uint64_t frames() const;       // captured for this file, up to now or its end
    std::uint64_t filledFrames() const; // of those, silence for what the device did not bring
    std::uint64_t bytes() const { return mBytes.load(std::memory_order_relaxed); }

private:
    static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
    // A stretch of the queue that is left out; kNever is the end of one that lasts.
    struct Hold {
        std::uint64_t from = 0;
        std::uint64_t to = kNever;
        std::uint64_t released = kNever; // where the queue was when it ended
    };

    void run();
    std::optional<foundation::Failure> record();
    foundation::Result<void> rescue(const AudioFileWriter &writer);
    bool waitForFrames(); // false: stopped
    void completeBlock();
    bool passHolds();    // false while one lasts
    std::size_t ready(); // frames that can be taken now; the mutex is held
    std::size_t readyNow();
    foundation::Result<void> drain(AudioFileWriter &writer);

    QString mPath; // another once the file was rescued
    const RecordingInput mInput;
    const std::uint64_t mDiskReserve;
    const Events mEvents;
    StereoMix mMix;
    std::vector<float> mBatch;
    bool mStarted = false;
    std::uint64_t mWritten = 0; // frames handed to the coder
    std::atomic<std::uint64_t> mBytes{0};
    mutable std::mutex mMutex; // guards the next ones; positions are those of the queue
    std::condition_variable mWake;
    std::uint64_t mBegin;           // the first frame; where another reader is at work yet, it moves on
    std::uint64_t mStopAt = kNever; // behind the last frame
    std::deque<Hold> mHolds;        // that the reader has not passed
    std::uint64_t mLeftOut = 0;     // frames of all holds that have ended
    std::size_t mKept = 0;
    std::uint64_t mSilence = 0; // frames that are due before the next one of the queue
    std::uint64_t mFilled = 0;
    bool mStopping = false;
    End mEnd = End::Now;
    std::thread mThread; // last: it uses all of the above
};

} // namespace cantorel::media
