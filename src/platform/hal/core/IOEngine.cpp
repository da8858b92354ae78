#include "platform/hal/core/IOEngine.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>

namespace cantorel::hal {

namespace {
// The largest cycle a backend brings.
constexpr std::uint32_t kMaxCycleFrames = 8192;
// The engine whose procedures this thread is running: lets a procedure stop itself without any lock.
thread_local IOEngine *tRunning = nullptr;
} // namespace

IOEngine::IOEngine(AudioObjectID device, int inputChannels, int outputChannels, std::uint32_t blockFrames,
                   std::function<void()> streamEnded)
    : mDevice(device),
      mInputChannels(static_cast<std::uint32_t>(inputChannels)),
      mOutputChannels(static_cast<std::uint32_t>(outputChannels)),
      mStreamEnded(std::move(streamEnded)),
      mWantedBlock(blockFrames),
      mBlock(blockFrames),
      mInputBlock(std::size_t(kMaxBlockFrames) * mInputChannels),
      mOutputQueue(std::size_t(2 * kMaxBlockFrames + kMaxCycleFrames) * mOutputChannels) {}

IOEngine::~IOEngine() { close(); }

int IOEngine::add(AudioDeviceIOProc proc, AudioDeviceIOProcID id, void *clientData) {
    for (int i = 0; i < kSlots; ++i) {
        Slot &slot = mSlots[i];
        if (slot.state.load() != SlotState::Empty)
            continue;
        slot.proc = proc;
        slot.id = id;
        slot.clientData = clientData;
        slot.state.store(SlotState::Stopped);
        mUsedSlots.store(std::max(mUsedSlots.load(), i + 1));
        return i;
    }
    return -1;
}

void IOEngine::remove(int slot) {
    stop(slot);
    mSlots[slot].state.store(SlotState::Empty);
}

void IOEngine::start(int slot) { mSlots[slot].state.store(SlotState::Running); }

void IOEngine::stop(int slot) {
    mSlots[slot].state.store(SlotState::Stopped);
    while (mSlots[slot].busy.load())
        std::this_thread::yield();
}

bool IOEngine::isRunning(int slot) const { return mSlots[slot].state.load() == SlotState::Running; }

bool IOEngine::anyRunning() const {
    return std::any_of(mSlots.begin(), mSlots.end(),
                       [](const Slot &slot) { return slot.state.load() == SlotState::Running; });
}

bool IOEngine::open(HardwareBackend &backend, const DeviceRecord &device, DeviceStream *leader,
                    foundation::Clock::Duration patience) {
    if (mStream)
        return true;
    mHasEnded.store(false);
    mRate = device.sampleRate;
    mInputFill = 0;
    mQueued = 0;
    mFirstCycle = true;
    mLost = mInputSampleTime > 0 || mOutputSampleTime > 0;
    mHasLeader = leader != nullptr;
    StreamRequest request;
    request.uid = device.uid;
    request.input = mInputChannels > 0;
    request.output = mOutputChannels > 0;
    request.preferredCycleFrames = mWantedBlock.load();
    request.leader = leader;
    request.patience = patience;
    mStream = backend.openStream(request, *this);
    mOpenings += mStream ? 1 : 0;
    return mStream != nullptr;
}

void IOEngine::close() { mStream.reset(); }

bool IOEngine::closeIfEnded() {
    if (!mStream || !mHasEnded.load())
        return false;
    mStream.reset();
    return true;
}

void IOEngine::setBlockFrames(std::uint32_t frames) { mWantedBlock.store(frames); }

void IOEngine::setPlaybackGains(float left, float right) {
    mGainLeft.store(left, std::memory_order_relaxed);
    mGainRight.store(right, std::memory_order_relaxed);
}

bool IOEngine::stopFromProc(AudioObjectID device, AudioDeviceIOProcID id, OSStatus &status) noexcept {
    if (!tRunning)
        return false;
    status = kAudioHardwareIllegalOperationError;
    if (tRunning->mDevice != device)
        return true;
    for (Slot &slot : tRunning->mSlots) {
        if (slot.state.load() == SlotState::Running && slot.id == id) {
            slot.state.store(SlotState::Stopped);
            status = kAudioHardwareNoError;
        }
    }
    return true;
}

void IOEngine::ended() {
    mHasEnded.store(true);
    mStreamEnded();
}

void IOEngine::cycle(const CycleTime &time, const float *input, float *output, std::uint32_t frames) noexcept
    [[clang::nonblocking]] {
    mCycles.fetch_add(1, std::memory_order_relaxed);
    frames = std::min(frames, kMaxCycleFrames);
    mLost = mLost || time.discontinuity;
    // A follower's cycle may run inside its leader's: that engine is put back afterwards.
    IOEngine *const outer = tRunning;
    tRunning = this;
    if (input && output)
        duplexCycle(time, input, output, frames);
    else if (input)
        inputCycle(time, input, frames);
    else if (output)
        outputCycle(time, output, frames);
    tRunning = outer;

    const float gains[2] = {mGainLeft.load(std::memory_order_relaxed), mGainRight.load(std::memory_order_relaxed)};
    if (!output || (gains[0] == 1 && gains[1] == 1))
        return;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        for (std::uint32_t channel = 0; channel < mOutputChannels; ++channel)
            output[frame * mOutputChannels + channel] *= gains[channel % 2];
    }
}

void IOEngine::takeBlockSize() noexcept [[clang::nonblocking]] {
    if (mInputFill == 0)
        mBlock = mWantedBlock.load(std::memory_order_relaxed);
}

void IOEngine::inputCycle(const CycleTime &time, const float *input, std::uint32_t frames) noexcept
    [[clang::nonblocking]] {
    for (std::uint32_t done = 0; done < frames;) {
        takeBlockSize();
        const std::uint32_t taken = std::min(frames - done, mBlock - mInputFill);
        done += taken;
        if (taken == mBlock) {
            runBlock(time, std::int64_t(done) - mBlock, input, nullptr);
        } else {
            std::memcpy(mInputBlock.data() + std::size_t(mInputFill) * mInputChannels, input,
                        sizeof(float) * taken * mInputChannels);
            mInputFill += taken;
            if (mInputFill == mBlock) {
                mInputFill = 0;
                runBlock(time, std::int64_t(done) - mBlock, mInputBlock.data(), nullptr);
            }
        }
        input += std::size_t(taken) * mInputChannels;
    }
}

std::uint32_t IOEngine::playQueued(float *output, std::uint32_t frames) noexcept [[clang::nonblocking]] {
    const std::uint32_t played = std::min(frames, mQueued);
    const std::size_t samples = std::size_t(played) * mOutputChannels;
    std::memcpy(output, mOutputQueue.data(), sizeof(float) * samples);
    mQueued -= played;
    std::memmove(mOutputQueue.data(), mOutputQueue.data() + samples, sizeof(float) * mQueued * mOutputChannels);
    return played;
}

void IOEngine::outputCycle(const CycleTime &time, float *output, std::uint32_t frames) noexcept [[clang::nonblocking]] {
    for (std::uint32_t done = 0; done < frames;) {
        std::uint32_t played = playQueued(output, frames - done);
        if (played == 0) {
            takeBlockSize();
            if (frames - done >= mBlock) {
                runBlock(time, done, nullptr, output);
                played = mBlock;
            } else {
                std::fill_n(mOutputQueue.data(), std::size_t(mBlock) * mOutputChannels, 0.0f);
                runBlock(time, done, nullptr, mOutputQueue.data());
                mQueued = mBlock;
            }
        }
        output += std::size_t(played) * mOutputChannels;
        done += played;
    }
}

void IOEngine::duplexCycle(const CycleTime &time, const float *input, float *output, std::uint32_t frames) noexcept
    [[clang::nonblocking]] {
    // Where cycles and blocks do not meet, one block of silence ahead keeps the output from ever running dry.
    if (mFirstCycle && frames % mWantedBlock.load(std::memory_order_relaxed) != 0) {
        mQueued = mWantedBlock.load(std::memory_order_relaxed);
        std::fill_n(mOutputQueue.data(), std::size_t(mQueued) * mOutputChannels, 0.0f);
    }
    mFirstCycle = false;
    for (std::uint32_t done = 0; done < frames;) {
        takeBlockSize();
        const std::uint32_t taken = std::min(frames - done, mBlock - mInputFill);
        std::memcpy(mInputBlock.data() + std::size_t(mInputFill) * mInputChannels, input,
                    sizeof(float) * taken * mInputChannels);
        input += std::size_t(taken) * mInputChannels;
        done += taken;
        mInputFill += taken;
        if (mInputFill < mBlock)
            continue;
        mInputFill = 0;
        float *const block = mOutputQueue.data() + std::size_t(mQueued) * mOutputChannels;
        std::fill_n(block, std::size_t(mBlock) * mOutputChannels, 0.0f);
        runBlock(time, std::int64_t(done) - mBlock, mInputBlock.data(), block);
        mQueued += mBlock;
    }
    (void)playQueued(output, frames);
}

void IOEngine::runBlock(const CycleTime &time, std::int64_t offset, const float *input, float *output) noexcept
    [[clang::nonblocking]] {
    AudioTimeStamp now = {};
    const std::int64_t began =
        static_cast<std::int64_t>(time.hostTime) + std::llround(static_cast<double>(offset) / mRate * 1e9);
    now.mHostTime = static_cast<std::uint64_t>(std::max<std::int64_t>(0, began));
    now.mRateScalar = 1;
    now.mFlags =
        kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid | (mLost ? kAudioTimeStampDiscontinuity : 0);
    AudioTimeStamp inputTime = now;
    inputTime.mSampleTime = static_cast<double>(mInputSampleTime);
    AudioTimeStamp outputTime = now;
    outputTime.mSampleTime = static_cast<double>(mOutputSampleTime);
    now.mSampleTime = input ? inputTime.mSampleTime : outputTime.mSampleTime;
    mLost = false;

    // The lists of the API carry mutable pointers on both sides; no procedure writes to its input.
    const auto sampleBytes = [this](std::uint32_t channels) {
        return static_cast<std::uint32_t>(mBlock * channels * sizeof(float));
    };
    AudioBufferList inputData = {input ? 1u : 0u,
                                 {{mInputChannels, sampleBytes(mInputChannels), const_cast<float *>(input)}}};
    AudioBufferList outputData = {output ? 1u : 0u, {{mOutputChannels, sampleBytes(mOutputChannels), output}}};
    const int used = mUsedSlots.load(std::memory_order_acquire);
    for (int i = 0; i < used; ++i) {
        Slot &slot = mSlots[i];
        if (slot.state.load(std::memory_order_relaxed) != SlotState::Running)
            continue;
        slot.busy.store(true);
        if (slot.state.load() == SlotState::Running)
            (void)slot.proc(mDevice, &now, &inputData, &inputTime, &outputData, &outputTime, slot.clientData);
        slot.busy.store(false, std::memory_order_release);
    }
    mInputSampleTime += input ? mBlock : 0;
    mOutputSampleTime += output ? mBlock : 0;
}

} // namespace cantorel::hal
