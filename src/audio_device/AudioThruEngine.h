#pragma once

#include "audio_device/AudioDevice.h"
#include "audio_device/AudioRingBuffer.h"
#include "platform/foundation/Clock.h"

#include <array>
#include <atomic>
#include <memory>

namespace cantorel {

// Lets the person hear what goes into the virtual device: copies its input side to a real output device in real time,
// late by a fixed number of frames. It goes on by itself when a device has been away. Owned by the device engine; every
// public function runs on its owner's thread, but for the I/O procedures.
//
// Shared between the I/O procedures and the owner, without locks: the procedure states, the times and offsets, the
// switches (each atomic), and the ring buffer (one writer, one reader). The channel map belongs to
// the output procedure while it runs; the owner changes it only before it starts and after it has stopped.
class AudioThruEngine {
public:
    AudioThruEngine();
    ~AudioThruEngine();
    AudioThruEngine(const AudioThruEngine &) = delete;
    AudioThruEngine &operator=(const AudioThruEngine &) = delete;

    // Stops; takes the devices that are not 0. Does not start.
    void SetDevices(AudioDeviceID inputID, AudioDeviceID outputID);
    // Stops, takes the device, and starts. Only the input's clears the ring buffer; deliberate.
    void SetInputDevice(AudioDeviceID device);
    void SetOutputDevice(AudioDeviceID device);
    // Frames of an I/O cycle, asked of both devices. Does not restart.
    void SetBufferSize(std::uint32_t frames);
    // Frames on top of the devices' own; takes effect at once.
    void SetExtraLatency(std::int32_t frames);

    // Nothing happens when it runs, when a device is missing, or when the rates cannot be matched. Waits up to two
    // seconds for the devices to call.
    void Start();
    // False when it did not run. Waits up to a second for the devices to let go.
    bool Stop();
    bool IsRunning() const { return mRunning.load(); }

    // Computes and answers the latency in frames; 0 when it does not run.
    std::uint32_t ComputeThruOffset();
    // Sets the output device to the input's rate, or the input device to the output's. The status of the set.
    OSStatus MatchSampleRate(bool useInputDevice);
    // 0 without an output device.
    std::uint32_t GetOutputNchnls() const;

    AudioDeviceID inputDeviceID() const { return mInputDevice.deviceID; }
    AudioDeviceID outputDeviceID() const { return mOutputDevice.deviceID; }
    // The last answer of the ring buffer to the output procedure; a diagnostic.
    double thruTime() const { return mThruTime.load(std::memory_order_relaxed); }

    // The choices below are made while the engine is stopped, but for the first two.
    void setMuting(bool muting) { mMuting.store(muting); }
    void setThruing(bool thruing) { mThruing.store(thruing); }
    // With two input channels: repeats them over all channels of each output buffer.
    void setSpreadStereo(bool spread) { mSpreadStereo = spread; }
    // The output channel that an input channel goes to; both from 0.
    void setChannelMap(std::size_t inputChannel, std::uint32_t outputChannel) {
        mChannelMap.at(inputChannel) = outputChannel;
    }

private:
    enum class ProcState : std::uint32_t { Off, Starting, Running, Stopping };
    static constexpr std::size_t kMaxChannels = 64;

    static OSStatus InputIOProc(AudioObjectID device, const AudioTimeStamp *now, const AudioBufferList *inputData,
                                const AudioTimeStamp *inputTime, AudioBufferList *outputData,
                                const AudioTimeStamp *outputTime, void *engine) noexcept [[clang::nonblocking]];
    static OSStatus OutputIOProc(AudioObjectID device, const AudioTimeStamp *now, const AudioBufferList *inputData,
                                 const AudioTimeStamp *inputTime, AudioBufferList *outputData,
                                 const AudioTimeStamp *outputTime, void *engine) noexcept [[clang::nonblocking]];
    // For inputs that are not stereo; behaves alike.
    static OSStatus OutputIOProc16(AudioObjectID device, const AudioTimeStamp *now, const AudioBufferList *inputData,
                                   const AudioTimeStamp *inputTime, AudioBufferList *outputData,
                                   const AudioTimeStamp *outputTime, void *engine) noexcept [[clang::nonblocking]];
    void takeInput(const AudioBufferList &data, double sampleTime) noexcept [[clang::nonblocking]];
    void giveOutput(AudioBufferList &data, double sampleTime) noexcept [[clang::nonblocking]];
    void mixInto(float *output, std::uint32_t outputChannels, const float *input, std::uint32_t frames) noexcept
        [[clang::nonblocking]];
    // The hardware's news of either device. Where its cycles begin again after an interruption, or it has other
    // channels or another rate, everything starts over: no earlier time is valid.
    static OSStatus deviceChanged(AudioObjectID device, std::uint32_t count,
                                  const AudioObjectPropertyAddress *addresses, void *engine);
    void followDevices();
    bool meetsCycles();
    bool renewTimes();
    void restart();
    void watchDevices(bool watch);
    void wait(std::int64_t milliseconds) const;
    void removeProcs();

    AudioDevice mInputDevice;
    AudioDevice mOutputDevice;
    AudioDeviceIOProc mOutputProc = nullptr;
    // What the newer calls name the procedures by; the procedures themselves with the older ones.
    AudioDeviceIOProcID mInputProcID = nullptr;
    AudioDeviceIOProcID mOutputProcID = nullptr;
    std::uint32_t mInputChannels = 0; // taken at the start
    std::uint32_t mOutputChannels = 0;
    std::uint32_t mBufferSize = 512; // frames
    std::int32_t mExtraLatencyFrames = 0;
    std::uint32_t mActualThruLatency = 0; // frames
    double mSampleRate = 0;
    AudioRingBuffer mInputBuffer;
    std::array<std::uint32_t, kMaxChannels> mChannelMap;
    bool mSpreadStereo = false;
    std::unique_ptr<foundation::Timer> mRetry; // after a new beginning that failed

    std::atomic<bool> mRunning{false};
    std::atomic<bool> mMuting{false};
    std::atomic<bool> mThruing{true};
    std::atomic<ProcState> mInputProcState{ProcState::Off};
    std::atomic<ProcState> mOutputProcState{ProcState::Off};
    std::atomic<bool> mOffsetKnown{false}; // nothing is played before the offset is computed
    std::atomic<double> mLastInputSampleTime{0};
    std::atomic<double> mIoDeltaSampleTime{0};
    std::atomic<double> mInToOutSampleOffset{0};
    std::atomic<double> mThruTime{0};
};

} // namespace cantorel
