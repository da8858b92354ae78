#include "audio_device/AudioThruEngine.h"

#include "audio_device/AudioProperty.h"
#include "platform/foundation/Console.h"
#include "platform/hal/HardwareSystem.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace cantorel {

namespace {

constexpr std::uint32_t kFirstBytesPerFrame = 4;
constexpr std::uint32_t kFirstCapacityFrames = 88200;
constexpr int kStartPolls = 2001; // of 1 ms
constexpr std::chrono::milliseconds kRetry(500);
constexpr int kStopPolls = 201; // of 5 ms

void print(const QString &text) { foundation::printToConsole(text); }

// Whether the device brings cycles to procedures of this program on that side.
bool flows(const AudioDevice &device) {
    std::uint32_t running = 0;
    std::uint32_t size = sizeof running;
    const OSStatus status = PDAudioDeviceGetProperty(device.deviceID, 0, device.isInput,
                                                     kAudioDevicePropertyDeviceIsRunning, &size, &running);
    return status == kAudioHardwareNoError && running != 0;
}

constexpr AudioObjectPropertySelector kNews[] = {
    kAudioDevicePropertyDeviceIsRunning, kAudioDevicePropertyStreamConfiguration, kAudioDevicePropertyStreamFormat};

} // namespace

AudioThruEngine::AudioThruEngine() : mInputBuffer(kFirstBytesPerFrame, kFirstCapacityFrames) {
    std::iota(mChannelMap.begin(), mChannelMap.end(), 0u);
}

AudioThruEngine::~AudioThruEngine() { Stop(); }

void AudioThruEngine::SetDevices(AudioDeviceID inputID, AudioDeviceID outputID) {
    Stop();
    if (inputID != kAudioObjectUnknown)
        mInputDevice.Init(inputID, true);
    if (outputID != kAudioObjectUnknown)
        mOutputDevice.Init(outputID, false);
}

void AudioThruEngine::SetInputDevice(AudioDeviceID device) {
    Stop();
    mInputDevice.Init(device, true);
    SetBufferSize(mBufferSize);
    mInputBuffer.Clear();
    Start();
}

void AudioThruEngine::SetOutputDevice(AudioDeviceID device) {
    Stop();
    mOutputDevice.Init(device, false);
    SetBufferSize(mBufferSize);
    Start();
}

void AudioThruEngine::SetBufferSize(std::uint32_t frames) {
    mBufferSize = frames;
    mInputDevice.SetBufferSize(frames);
    mOutputDevice.SetBufferSize(frames);
}

void AudioThruEngine::SetExtraLatency(std::int32_t frames) {
    mExtraLatencyFrames = frames;
    if (mRunning.load())
        ComputeThruOffset();
}

void AudioThruEngine::wait(std::int64_t milliseconds) const {
    hal::HardwareSystem::clock().sleepFor(std::chrono::milliseconds(milliseconds));
}

void AudioThruEngine::Start() {
    if (mRunning.load() || mInputDevice.deviceID == kAudioObjectUnknown
        || mOutputDevice.deviceID == kAudioObjectUnknown)
        return;
    if (mInputDevice.streamFormat.mSampleRate != mOutputDevice.streamFormat.mSampleRate) {
        MatchSampleRate(false);
        if (mInputDevice.streamFormat.mSampleRate != mOutputDevice.streamFormat.mSampleRate) {
            print(QString::asprintf("Error - sample rate mismatch: %f / %f\n", mInputDevice.streamFormat.mSampleRate,
                                    mOutputDevice.streamFormat.mSampleRate));
            return;
        }
    }
    mSampleRate = mInputDevice.streamFormat.mSampleRate;
    mInputChannels = mInputDevice.CountChannels();
    mOutputChannels = mOutputDevice.CountChannels();
    const std::uint32_t bytesPerFrame = mInputDevice.streamFormat.mBytesPerFrame;
    mInputBuffer.Allocate(bytesPerFrame, static_cast<std::uint32_t>(2 * mSampleRate));

    mOffsetKnown.store(false);
    mRunning.store(true);
    mInputProcState.store(ProcState::Starting);
    mOutputProcState.store(ProcState::Starting);

    mInputProcID = InputIOProc;
    (void)PDAudioDeviceAddIOProc(mInputDevice.deviceID, InputIOProc, this,
                                 &mInputProcID); // A failure shows as a time-out.
    (void)AudioDeviceStart(mInputDevice.deviceID, mInputProcID);
    mOutputProc = mInputChannels == 2 ? OutputIOProc : OutputIOProc16;
    mOutputProcID = mOutputProc;
    (void)PDAudioDeviceAddIOProc(mOutputDevice.deviceID, mOutputProc, this, &mOutputProcID);
    (void)AudioDeviceStart(mOutputDevice.deviceID, mOutputProcID);
    watchDevices(true);

    if (meetsCycles())
        return;
    mRunning.store(false);
    print(QStringLiteral("give up to start.\n"));
    removeProcs();
    ComputeThruOffset();
}

// Waits until both procedures have begun to count, and takes their distance. A procedure whose device
// brings no cycles is not waited for.
bool AudioThruEngine::meetsCycles() {
    for (int poll = 0; poll < kStartPolls && flows(mInputDevice) && flows(mOutputDevice); ++poll) {
        if (mInputProcState.load() == ProcState::Running && mOutputProcState.load() == ProcState::Running) {
            ComputeThruOffset();
            return true;
        }
        wait(1);
    }
    return false;
}

// The streams are there again as they were: only the times are taken anew. To open them once more would rebuild the
// server's graph under players that are just beginning, and one that it loses then stays silent.
bool AudioThruEngine::renewTimes() {
    mOffsetKnown.store(false);
    mInputProcState.store(ProcState::Starting);
    mOutputProcState.store(ProcState::Starting);
    return meetsCycles();
}

void AudioThruEngine::removeProcs() {
    watchDevices(false);
    (void)AudioDeviceStop(mInputDevice.deviceID, mInputProcID);
    (void)AudioDeviceStop(mOutputDevice.deviceID, mOutputProcID);
    mInputProcState.store(ProcState::Off);
    mOutputProcState.store(ProcState::Off);
    (void)PDAudioDeviceRemoveIOProc(mInputDevice.deviceID, mInputProcID);
    (void)PDAudioDeviceRemoveIOProc(mOutputDevice.deviceID, mOutputProcID);
}

void AudioThruEngine::watchDevices(bool watch) {
    for (const AudioDevice *device : {&mInputDevice, &mOutputDevice}) {
        for (const AudioObjectPropertySelector news : kNews) {
            for (const AudioObjectPropertyScope scope :
                 {kAudioObjectPropertyScopeGlobal,
                  device->isInput ? kAudioDevicePropertyScopeInput : kAudioDevicePropertyScopeOutput}) {
                const AudioObjectPropertyAddress address = {news, scope, 0};
                if (watch)
                    (void)AudioObjectAddPropertyListener(device->deviceID, &address, deviceChanged, this);
                else
                    (void)AudioObjectRemovePropertyListener(device->deviceID, &address, deviceChanged, this);
            }
        }
    }
}

OSStatus AudioThruEngine::deviceChanged(AudioObjectID, std::uint32_t, const AudioObjectPropertyAddress *,
                                        void *engine) {
    static_cast<AudioThruEngine *>(engine)->followDevices();
    return kAudioHardwareNoError;
}

void AudioThruEngine::followDevices() {
    AudioDevice input, output;
    input.Init(mInputDevice.deviceID, true);
    output.Init(mOutputDevice.deviceID, false);
    const std::uint32_t inputChannels = input.CountChannels(), outputChannels = output.CountChannels();
    const bool present = inputChannels > 0 && outputChannels > 0;
    const bool isOther = inputChannels != mInputChannels || outputChannels != mOutputChannels
                         || input.streamFormat.mSampleRate != mSampleRate
                         || output.streamFormat.mSampleRate != mSampleRate
                         || input.bufferFrames != mInputDevice.bufferFrames;
    const bool bothFlow = flows(mInputDevice) && flows(mOutputDevice);
    if (!present || !(isOther || bothFlow))
        return;
    mInputDevice.safetyOffsetFrames = input.safetyOffsetFrames;
    mOutputDevice.safetyOffsetFrames = output.safetyOffsetFrames;
    if (isOther || !mRunning.load() || !renewTimes())
        restart();
}

void AudioThruEngine::restart() {
    SetDevices(mInputDevice.deviceID, mOutputDevice.deviceID);
    SetBufferSize(mBufferSize);
    Start();
    // A server that has just come back may not be ready for both.
    if (!IsRunning() && mInputDevice.CountChannels() > 0 && mOutputDevice.CountChannels() > 0)
        mRetry = hal::HardwareSystem::clock().after(kRetry, [this] { restart(); });
}

bool AudioThruEngine::Stop() {
    mRetry.reset();
    if (!mRunning.load())
        return false;
    mRunning.store(false);
    mInputProcState.store(ProcState::Stopping);
    mOutputProcState.store(ProcState::Stopping);
    const auto letGo = [this] {
        return mInputProcState.load() == ProcState::Off && mOutputProcState.load() == ProcState::Off;
    };
    // A device that has gone lets go of nothing any more.
    for (int poll = 0; !letGo() && flows(mInputDevice) && flows(mOutputDevice); ++poll) {
        if (poll == kStopPolls) {
            print(QStringLiteral("given up to stop\n"));
            break;
        }
        wait(5);
    }
    removeProcs();
    return true;
}

std::uint32_t AudioThruEngine::ComputeThruOffset() {
    if (!mRunning.load()) {
        mActualThruLatency = 0;
        mInToOutSampleOffset.store(0);
        return 0;
    }
    mActualThruLatency = mInputDevice.safetyOffsetFrames + mInputDevice.bufferFrames + mOutputDevice.safetyOffsetFrames
                         + mOutputDevice.bufferFrames + static_cast<std::uint32_t>(mExtraLatencyFrames);
    mInToOutSampleOffset.store(static_cast<std::int32_t>(mActualThruLatency) + mIoDeltaSampleTime.load());
    mOffsetKnown.store(true);
    return mActualThruLatency;
}

OSStatus AudioThruEngine::MatchSampleRate(bool useInputDevice) {
    mInputDevice.UpdateFormat();
    mOutputDevice.UpdateFormat();
    const double inputRate = mInputDevice.streamFormat.mSampleRate;
    const double outputRate = mOutputDevice.streamFormat.mSampleRate;
    if (inputRate == outputRate)
        return kAudioHardwareNoError;
    const OSStatus status =
        useInputDevice ? mOutputDevice.SetSampleRate(inputRate) : mInputDevice.SetSampleRate(outputRate);
    print(QString::asprintf("reset sample rate to %f\n", mOutputDevice.streamFormat.mSampleRate));
    return status;
}

std::uint32_t AudioThruEngine::GetOutputNchnls() const {
    return mOutputDevice.deviceID == kAudioObjectUnknown ? 0 : mOutputDevice.CountChannels();
}

OSStatus AudioThruEngine::InputIOProc(AudioObjectID device, const AudioTimeStamp *, const AudioBufferList *inputData,
                                      const AudioTimeStamp *inputTime, AudioBufferList *, const AudioTimeStamp *,
                                      void *engine) noexcept [[clang::nonblocking]] {
    auto *self = static_cast<AudioThruEngine *>(engine);
    const ProcState state = self->mInputProcState.load(std::memory_order_acquire);
    if (state == ProcState::Stopping) {
        (void)AudioDeviceStop(device, self->mInputProcID);
        self->mInputProcState.store(ProcState::Off, std::memory_order_release);
        return 0;
    }
    if (inputData->mNumberBuffers > 0)
        self->takeInput(*inputData, inputTime->mSampleTime);
    if (state == ProcState::Starting) // with the time that the output begins to count from
        self->mInputProcState.store(ProcState::Running, std::memory_order_release);
    return 0;
}

void AudioThruEngine::takeInput(const AudioBufferList &data, double sampleTime) noexcept [[clang::nonblocking]] {
    mLastInputSampleTime.store(sampleTime, std::memory_order_release);
    const std::uint32_t bytesPerFrame = mInputDevice.streamFormat.mBytesPerFrame;
    const std::uint32_t frames = std::min(mInputDevice.bufferFrames, data.mBuffers[0].mDataByteSize / bytesPerFrame);
    (void)mInputBuffer.Store(data.mBuffers[0].mData, frames, static_cast<std::int64_t>(sampleTime));
}

OSStatus AudioThruEngine::OutputIOProc16(AudioObjectID device, const AudioTimeStamp *now,
                                         const AudioBufferList *inputData, const AudioTimeStamp *inputTime,
                                         AudioBufferList *outputData, const AudioTimeStamp *outputTime,
                                         void *engine) noexcept [[clang::nonblocking]] {
    return OutputIOProc(device, now, inputData, inputTime, outputData, outputTime, engine);
}

OSStatus AudioThruEngine::OutputIOProc(AudioObjectID device, const AudioTimeStamp *, const AudioBufferList *,
                                       const AudioTimeStamp *, AudioBufferList *outputData,
                                       const AudioTimeStamp *outputTime, void *engine) noexcept [[clang::nonblocking]] {
    auto *self = static_cast<AudioThruEngine *>(engine);
    switch (self->mOutputProcState.load(std::memory_order_acquire)) {
    case ProcState::Stopping:
        (void)AudioDeviceStop(device, self->mOutputProcID);
        self->mOutputProcState.store(ProcState::Off, std::memory_order_release);
        return 0;
    case ProcState::Starting:
        if (self->mInputProcState.load(std::memory_order_acquire) != ProcState::Running)
            return 0;
        self->mIoDeltaSampleTime.store(outputTime->mSampleTime
                                       - self->mLastInputSampleTime.load(std::memory_order_acquire));
        self->mOutputProcState.store(ProcState::Running, std::memory_order_release);
        return 0;
    case ProcState::Off:
    case ProcState::Running:
        break;
    }
    self->giveOutput(*outputData, outputTime->mSampleTime);
    return 0;
}

void AudioThruEngine::giveOutput(AudioBufferList &data, double sampleTime) noexcept [[clang::nonblocking]] {
    if (mMuting.load(std::memory_order_relaxed) || !mThruing.load(std::memory_order_relaxed)
        || !mOffsetKnown.load(std::memory_order_acquire)) {
        mThruTime.store(0, std::memory_order_relaxed);
        return;
    }
    const auto readTime = static_cast<std::int64_t>(sampleTime - mInToOutSampleOffset.load(std::memory_order_relaxed));
    const AudioRingBuffer::Held held = mInputBuffer.Peek(mInputDevice.bufferFrames, readTime);
    mThruTime.store(held.answer, std::memory_order_relaxed);
    for (std::uint32_t i = 0; i < data.mNumberBuffers; ++i) {
        const AudioBuffer &buffer = data.mBuffers[i];
        const std::uint32_t bytesPerFrame = buffer.mNumberChannels * static_cast<std::uint32_t>(sizeof(float));
        if (bytesPerFrame == 0 || mInputChannels == 0)
            continue;
        // A device may hold more frames than were asked for, or fewer; never more are mixed than are held.
        auto *output = static_cast<float *>(buffer.mData);
        std::uint32_t room = buffer.mDataByteSize / bytesPerFrame;
        for (const std::span<const std::byte> piece : held.pieces) {
            const auto frames =
                std::min(room, static_cast<std::uint32_t>(piece.size() / (mInputChannels * sizeof(float))));
            mixInto(output, buffer.mNumberChannels, reinterpret_cast<const float *>(piece.data()), frames);
            output += std::size_t(frames) * buffer.mNumberChannels;
            room -= frames;
        }
    }
}

void AudioThruEngine::mixInto(float *__restrict output, std::uint32_t outputChannels, const float *__restrict input,
                              std::uint32_t frames) noexcept [[clang::nonblocking]] {
    if (mInputChannels == 2 && outputChannels == 2 && mChannelMap[0] == 0 && mChannelMap[1] == 1) {
        for (std::uint32_t sample = 0; sample < 2 * frames; ++sample)
            output[sample] += input[sample];
        return;
    }
    const bool spread = mInputChannels == 2 && mSpreadStereo;
    const std::uint32_t count = std::min<std::uint32_t>(spread ? outputChannels : mInputChannels, kMaxChannels);
    for (std::uint32_t channel = 0; channel < count; ++channel) {
        const std::uint32_t destination = mChannelMap[channel];
        if (destination >= outputChannels)
            continue;
        const std::uint32_t source = channel % mInputChannels;
        for (std::uint32_t frame = 0; frame < frames; ++frame)
            output[frame * outputChannels + destination] += input[frame * mInputChannels + source];
    }
}

} // namespace cantorel
