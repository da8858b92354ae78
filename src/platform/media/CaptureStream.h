#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"
#include "platform/hal/AudioHardwareTypes.h"
#include "platform/media/CaptureDevice.h"
#include "platform/media/FrameQueue.h"
#include "platform/media/LevelMeter.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel::media {

// An I/O procedure that runs on the input side of one device, measures its level, and copies its frames into the queue
// that is attached. Owned by CaptureSession; main thread, but for what is marked.
//
// The procedure shares with other threads: the attached queue (a pointer that others exchange), the number of cycles
// begun and ended (so that a queue can be freed when no cycle uses it any more), the moment at which the next frame is
// due, whether one of its parts is away, and the published levels.
class CaptureStream {
public:
    static foundation::Result<std::unique_ptr<CaptureStream>> open(const CaptureDevice &device);
    ~CaptureStream();
    CaptureStream(const CaptureStream &) = delete;
    CaptureStream &operator=(const CaptureStream &) = delete;

    AudioObjectID device() const { return mDevice; }
    double sampleRate() const { return mSampleRate; }
    int channels() const { return mChannels; }
    // Channels of each device behind this one, in order: more than one for an aggregate.
    const std::vector<int> &sourceChannels() const { return mSourceChannels; }
    std::vector<float> levels() const { return mMeter.decibels(); } // dB, one a channel
    bool isAlive() const { return mAlive; }
    // Whether the device still has the rate and the channels that it was opened with.
    bool matchesDevice() const;

    // The procedure fills this queue from its next cycle on; null for none. What was attached before may still be
    // filled until waitForCycle() has returned.
    void attach(FrameQueue *queue) { mQueue.store(queue); }
    // Returns when no cycle is under way that began before; at most one cycle long.
    void waitForCycle() const;
    // The queue is not filled any more when this returns.
    void detach(FrameQueue *queue);

    // How the attached queue's frames relate to time: so many were accepted, and the next is due then, in ns on the
    // clock of the hardware. Nothing before the first. Any thread.
    struct Moment {
        std::uint64_t accepted = 0;
        std::uint64_t hostTime = 0;
    };
    std::optional<Moment> moment(const FrameQueue &queue) const;

    // Seconds since the last frame; of use while the device is away.
    double secondsAway() const;
    // The hole that is noted once the device is back begins at this moment; what was missing before is not filled.
    void beginHoleHere();

    // Called when the device disappears or stops delivering (false), and when it delivers sound again (true).
    std::function<void(bool alive)> onAliveChanged;
    // Called when one of the devices that this one joins disappears (false), and when all are back (true). Its channels
    // are silent meanwhile; the others go on.
    std::function<void(bool allThere, double secondsAway)> onPartsChanged;
    // Called when the device may have changed its rate or channels, or changed them back.
    std::function<void()> onFormatChanged;

private:
    // A device behind this one, and how many channels it has here.
    struct Part {
        AudioObjectID device = kAudioObjectUnknown;
        int channels = 0; // 0 while it is away
    };

    CaptureStream(const CaptureDevice &device, double sampleRate, int channels);
    static std::vector<Part> partsOf(AudioObjectID device);
    static std::vector<int> sourcesOf(const std::vector<Part> &parts, int channels);
    void watch(bool begins);

    static OSStatus cycle(AudioObjectID device, const AudioTimeStamp *now, const AudioBufferList *input,
                          const AudioTimeStamp *inputTime, AudioBufferList *output, const AudioTimeStamp *outputTime,
                          void *clientData) noexcept [[clang::nonblocking]];
    void meetHole(FrameQueue &queue, const AudioTimeStamp &time) noexcept [[clang::nonblocking]];
    static OSStatus formatChanged(AudioObjectID device, std::uint32_t count,
                                  const AudioObjectPropertyAddress *addresses, void *clientData);
    static OSStatus partChanged(AudioObjectID device, std::uint32_t count, const AudioObjectPropertyAddress *addresses,
                                void *clientData);
    static OSStatus flowChanged(AudioObjectID device, std::uint32_t count, const AudioObjectPropertyAddress *addresses,
                                void *clientData);

    const AudioObjectID mDevice;
    const double mSampleRate;
    const int mChannels;
    const std::vector<Part> mParts; // none where it is a plain device
    const std::vector<int> mSourceChannels;
    AudioDeviceIOProcID mProc = nullptr;
    bool mAlive = true;                                     // it brings its cycles
    std::optional<foundation::Clock::Duration> mPartLostAt; // while one is away
    LevelMeter mMeter;
    std::atomic<FrameQueue *> mQueue{nullptr};
    std::atomic<bool> mLacksPart{false};
    std::atomic<std::uint32_t> mCycles{0};   // odd while one is under way; guards the queue and the next one
    std::atomic<std::uint64_t> mExpected{0}; // ns, host time at which the next frame is due; 0 before the first
    std::int64_t mMissing = 0; // ns, in all gaps since the last hole, less what came twice; the procedure's own
};

} // namespace cantorel::media
