#pragma once

#include "platform/hal/AudioHardwareTypes.h"
#include "platform/hal/HardwareBackend.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace cantorel::hal {

// Runs the I/O procedures of one device that take part in the same sides, in blocks of exactly the buffer size in
// force. Owned by its DeviceIO; everything but cycle(), stopFromProc() and ended() is called with the object table
// locked.
//
// Shared with the real-time thread, without locks: the slots (a slot's procedure is written before its state says
// Running), the block size, and the gains. Each word is atomic; the owner waits for the real-time thread at Slot::busy
// alone, and the real-time thread never waits.
class IOEngine : public StreamClient {
public:
    static constexpr std::uint32_t kMinBlockFrames = 16;
    static constexpr std::uint32_t kMaxBlockFrames = 4096;

    // device: what the procedures are told. streamEnded: called from ended(), on any thread but a real-time one.
    IOEngine(AudioObjectID device, int inputChannels, int outputChannels, std::uint32_t blockFrames,
             std::function<void()> streamEnded);
    ~IOEngine() override;

    // A free slot for the procedure, not yet running; -1 when all are taken.
    int add(AudioDeviceIOProc proc, AudioDeviceIOProcID id, void *clientData);
    void remove(int slot);
    void start(int slot);
    // Returns after the procedure's last call.
    void stop(int slot);
    bool isRunning(int slot) const;
    bool anyRunning() const;

    // Opens the stream if there is none. False when the backend refuses; the running procedures then wait for a later
    // try.
    bool open(HardwareBackend &backend, const DeviceRecord &device, DeviceStream *leader,
              foundation::Clock::Duration patience = StreamRequest().patience);
    void close();
    // Closes the stream if it has ended by itself. True when it had.
    bool closeIfEnded();
    DeviceStream *stream() const { return mStream.get(); }
    bool hasLeader() const { return mHasLeader; }
    std::uint32_t openings() const { return mOpenings; }                             // streams opened so far
    std::uint32_t cycles() const { return mCycles.load(std::memory_order_relaxed); } // so far
    // Whether procedures run and have a stream that brings them cycles.
    bool flows() const { return mStream && !mHasEnded.load() && anyRunning(); }

    void setBlockFrames(std::uint32_t frames);
    // Factors for the first and second channel of what is played (further channels repeat them).
    void setPlaybackGains(float left, float right);

    // On an I/O thread: marks the procedure as stopped and sets the status. False when this is no I/O thread.
    static bool stopFromProc(AudioObjectID device, AudioDeviceIOProcID id, OSStatus &status) noexcept;

    void cycle(const CycleTime &time, const float *input, float *output, std::uint32_t frames) noexcept
        [[clang::nonblocking]] override;
    void ended() override;

private:
    enum class SlotState : std::uint32_t { Empty, Stopped, Running };
    struct Slot {
        std::atomic<SlotState> state{SlotState::Empty};
        std::atomic<bool> busy{false}; // the real-time thread is deciding about, or inside, the procedure
        AudioDeviceIOProc proc = nullptr;
        AudioDeviceIOProcID id = nullptr;
        void *clientData = nullptr;
    };
    static constexpr int kSlots = 16;

    void inputCycle(const CycleTime &time, const float *input, std::uint32_t frames) noexcept [[clang::nonblocking]];
    void outputCycle(const CycleTime &time, float *output, std::uint32_t frames) noexcept [[clang::nonblocking]];
    void duplexCycle(const CycleTime &time, const float *input, float *output, std::uint32_t frames) noexcept
        [[clang::nonblocking]];
    // offset: of the block's first frame in this cycle; below 0 when it came with an earlier one.
    void runBlock(const CycleTime &time, std::int64_t offset, const float *input, float *output) noexcept
        [[clang::nonblocking]];
    std::uint32_t playQueued(float *output, std::uint32_t frames) noexcept [[clang::nonblocking]];
    void takeBlockSize() noexcept [[clang::nonblocking]];

    const AudioObjectID mDevice;
    const std::uint32_t mInputChannels;
    const std::uint32_t mOutputChannels;
    const std::function<void()> mStreamEnded;
    std::array<Slot, kSlots> mSlots;
    std::atomic<int> mUsedSlots{0}; // those behind were never used
    std::atomic<std::uint32_t> mWantedBlock;
    std::atomic<float> mGainLeft{1};
    std::atomic<float> mGainRight{1};
    std::atomic<bool> mHasEnded{false};
    std::atomic<std::uint32_t> mCycles{0};
    std::unique_ptr<DeviceStream> mStream;
    bool mHasLeader = false;
    std::uint32_t mOpenings = 0;

    // Real-time thread only, or the owner's while there is no stream.
    double mRate = 0; // frames a second
    std::uint32_t mBlock;
    std::vector<float> mInputBlock;     // one block being filled
    std::vector<float> mOutputQueue;    // produced and not yet played
    std::uint32_t mInputFill = 0;       // frames in mInputBlock
    std::uint32_t mQueued = 0;          // frames in mOutputQueue
    std::int64_t mInputSampleTime = 0;  // of the next block
    std::int64_t mOutputSampleTime = 0; // of the next block
    bool mFirstCycle = true;
    bool mLost = false; // the next block follows a gap
};

} // namespace cantorel::hal
