#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/FrameQueue.h"
#include "platform/media/StereoMix.h"

#include <QString>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace cantorel::media {

class AudioFileWriter;

// One recording into one file: a queue that a real-time thread fills, and a thread "recorder" that mixes, codes and
// writes what is in it, half a second at a time. Made, asked and destroyed on the main thread.
class RecordingWorker {
public:
    struct Events {
        std::function<void()> started; // the first frames are here
        // Nothing when the file is whole; once, whatever happens, and nothing after it.
        std::function<void(std::optional<foundation::Failure>)> finished;
        // Sees the frames that are handed to the coder; for tests.
        std::function<void(std::span<const float> interleavedStereo)> tap;
    };

    // The events come on the worker's thread.
    RecordingWorker(QString path, double sampleRate, std::vector<int> sourceChannels, Events events);
    // Waits for the end of the file.
    ~RecordingWorker();

    FrameQueue &queue() { return mQueue; }
    const FrameQueue &queue() const { return mQueue; }

    // Now: with the frames that are in the queue. WithBlock: with the block of the coder that they are in; what it
    // lacks is waited for as long as a device that runs may need. Return at once.
    enum class End { Now, WithBlock };
    void stop(End end);

    std::uint64_t bytes() const { return mBytes.load(std::memory_order_relaxed); }
    std::uint64_t limitedSamples() const { return mLimited.load(std::memory_order_relaxed); }

private:
    void run();
    std::optional<foundation::Failure> record();
    bool waitForFrames(); // false: stopped
    void settle();
    foundation::Result<void> drain(AudioFileWriter &writer);

    const QString mPath;
    const double mSampleRate;
    const Events mEvents;
    FrameQueue mQueue;
    StereoMix mMix;
    std::vector<float> mBatch;
    bool mStarted = false;
    std::atomic<std::uint64_t> mBytes{0};
    std::atomic<std::uint64_t> mLimited{0};
    std::mutex mMutex; // guards the next three
    std::condition_variable mWake;
    bool mStopping = false;
    End mEnd = End::Now;
    std::thread mThread; // last: it uses all of the above
};

} // namespace cantorel::media
