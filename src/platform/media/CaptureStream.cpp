#include "platform/media/CaptureStream.h"

#include "platform/hal/AudioHardware.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/media/MediaFailures.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <thread>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr AudioObjectPropertyAddress kAlive = {kAudioDevicePropertyDeviceIsAlive, kAudioObjectPropertyScopeGlobal,
                                               kAudioObjectPropertyElementMaster};

constexpr AudioObjectPropertyAddress kFlows = {kAudioDevicePropertyDeviceIsRunning, kAudioDevicePropertyScopeInput,
                                               kAudioObjectPropertyElementMaster};

// What a stream is opened for once and for all.
constexpr AudioObjectPropertyAddress kFormat[] = {
    {kAudioDevicePropertyStreamFormat, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMaster},
    {kAudioDevicePropertyStreamConfiguration, kAudioDevicePropertyScopeInput, kAudioObjectPropertyElementMaster}};

// Two clocks that meet disagree by less; what is missing is more.
constexpr std::int64_t kLeastHole = 10'000'000; // ns

AudioStreamBasicDescription inputFormat(AudioObjectID device) {
    const AudioObjectPropertyAddress address = {kAudioDevicePropertyStreamFormat, kAudioDevicePropertyScopeInput, 0};
    AudioStreamBasicDescription format{};
    std::uint32_t size = sizeof format;
    if (AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &format) != kAudioHardwareNoError)
        return {};
    return format;
}

} // namespace

CaptureStream::CaptureStream(const CaptureDevice &device, double sampleRate, int channels)
    : mDevice(device.objectID),
      mSampleRate(sampleRate),
      mChannels(channels),
      mParts(partsOf(device.objectID)),
      mSourceChannels(sourcesOf(mParts, channels)),
      mMeter(channels, sampleRate) {}

std::vector<CaptureStream::Part> CaptureStream::partsOf(AudioObjectID device) {
    const AudioObjectPropertyAddress address = {kAudioAggregateDevicePropertyFullSubDeviceList,
                                                kAudioObjectPropertyScopeGlobal, 0};
    CFArrayRef list = nullptr;
    std::uint32_t size = sizeof list;
    std::vector<Part> parts;
    if (AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &list) == kAudioHardwareNoError) {
        for (const QString &uid : adoptRef(list)) {
            const AudioObjectID part = captureDeviceWithUniqueID(uid).value_or(CaptureDevice()).objectID;
            parts.push_back({part, static_cast<int>(inputFormat(part).mChannelsPerFrame)});
        }
    }
    return parts;
}

std::vector<int> CaptureStream::sourcesOf(const std::vector<Part> &parts, int channels) {
    std::vector<int> sources;
    for (const Part &part : parts)
        sources.push_back(part.channels);
    // What does not add up is taken for one source.
    return std::accumulate(sources.begin(), sources.end(), 0) == channels ? sources : std::vector<int>{channels};
}

Result<std::unique_ptr<CaptureStream>> CaptureStream::open(const CaptureDevice &device) {
    const AudioStreamBasicDescription format = inputFormat(device.objectID);
    if (format.mChannelsPerFrame == 0 || format.mSampleRate < 1)
        return failures::deviceNotOpened(device.localizedName);
    std::unique_ptr<CaptureStream> stream(
        new CaptureStream(device, format.mSampleRate, static_cast<int>(format.mChannelsPerFrame)));
    if (AudioDeviceCreateIOProcID(stream->mDevice, &cycle, stream.get(), &stream->mProc) != kAudioHardwareNoError)
        return failures::deviceNotOpened(device.localizedName);
    // A device with two sides shall not be made to play silence.
    const AudioObjectPropertyAddress usageAddress = {kAudioDevicePropertyIOProcStreamUsage,
                                                     kAudioObjectPropertyScopeGlobal, 0};
    const AudioDeviceIOProcStreamUsage usage = {stream->mProc, 1, 0};
    (void)AudioObjectSetPropertyData(stream->mDevice, &usageAddress, 0, nullptr, sizeof usage, &usage);
    if (AudioDeviceStart(stream->mDevice, stream->mProc) != kAudioHardwareNoError)
        return failures::deviceNotOpened(device.localizedName);
    stream->watch(true);
    return stream;
}

CaptureStream::~CaptureStream() {
    watch(false);
    if (!mProc)
        return;
    AudioDeviceStop(mDevice, mProc); // returns after the last cycle
    AudioDeviceDestroyIOProcID(mDevice, mProc);
}

void CaptureStream::watch(bool begins) {
    const auto change = begins ? AudioObjectAddPropertyListener : AudioObjectRemovePropertyListener;
    change(mDevice, &kFlows, &flowChanged, this);
    for (const AudioObjectPropertyAddress &format : kFormat)
        change(mDevice, &format, &formatChanged, this);
    for (const Part &part : mParts)
        change(part.device, &kAlive, &partChanged, this);
}

OSStatus CaptureStream::cycle(AudioObjectID, const AudioTimeStamp *, const AudioBufferList *input,
                              const AudioTimeStamp *inputTime, AudioBufferList *, const AudioTimeStamp *,
                              void *clientData) noexcept {
    auto &self = *static_cast<CaptureStream *>(clientData);
    if (!input || input->mNumberBuffers < 1 || !input->mBuffers[0].mData
        || input->mBuffers[0].mNumberChannels != static_cast<std::uint32_t>(self.mChannels))
        return kAudioHardwareNoError;
    const auto *samples = static_cast<const float *>(input->mBuffers[0].mData);
    const std::size_t frames = input->mBuffers[0].mDataByteSize / sizeof(float) / self.mChannels;

    // Sequentially consistent: either this sees the exchanged queue, or waitForCycle() sees this cycle.
    self.mCycles.fetch_add(1);
    if (FrameQueue *queue = self.mQueue.load()) {
        if (inputTime && inputTime->mFlags & kAudioTimeStampDiscontinuity)
            self.meetHole(*queue, *inputTime);
        if (self.mLacksPart.load(std::memory_order_relaxed))
            queue->countFilled(frames);
        queue->push(samples, frames);
    }
    if (inputTime) {
        const double duration = static_cast<double>(frames) / self.mSampleRate * 1e9;
        self.mExpected.store(inputTime->mHostTime + static_cast<std::uint64_t>(duration), std::memory_order_release);
    }
    self.mCycles.fetch_add(1);
    self.mMeter.feed(samples, frames);
    return kAudioHardwareNoError;
}

void CaptureStream::meetHole(FrameQueue &queue, const AudioTimeStamp &time) noexcept {
    queue.countDiscontinuity();
    const std::uint64_t expected = mExpected.load(std::memory_order_relaxed);
    if (expected == 0)
        return;
    // What is too short for a hole of its own, or too long, counts towards the next one.
    mMissing += static_cast<std::int64_t>(time.mHostTime - expected);
    if (mMissing < kLeastHole)
        return;
    if (queue.noteHole(static_cast<std::uint64_t>(std::llround(static_cast<double>(mMissing) / 1e9 * mSampleRate))))
        mMissing = 0;
}

std::optional<CaptureStream::Moment> CaptureStream::moment(const FrameQueue &queue) const {
    for (;;) {
        const std::uint32_t cycle = mCycles.load();
        // Both acquired, so that the cycles are looked at again behind them.
        const Moment moment{queue.accepted(), mExpected.load(std::memory_order_acquire)};
        if (cycle % 2 == 0 && mCycles.load() == cycle)
            return moment.accepted > 0 && moment.hostTime > 0 ? std::optional(moment) : std::nullopt;
        std::this_thread::yield(); // a cycle's copying is under way
    }
}

double CaptureStream::secondsAway() const {
    const auto now = static_cast<std::uint64_t>(hal::HardwareSystem::clock().now().count());
    const std::uint64_t expected = mExpected.load(std::memory_order_relaxed);
    return expected == 0 || now < expected ? 0 : static_cast<double>(now - expected) / 1e9;
}

void CaptureStream::beginHoleHere() {
    mExpected.store(static_cast<std::uint64_t>(hal::HardwareSystem::clock().now().count()), std::memory_order_relaxed);
}

bool CaptureStream::matchesDevice() const {
    const AudioStreamBasicDescription format = inputFormat(mDevice);
    if (format.mChannelsPerFrame == 0) // absent: it comes back as it was, or is met again then
        return true;
    const std::vector<Part> parts = partsOf(mDevice);
    const bool allThere = std::all_of(parts.begin(), parts.end(), [](const Part &part) { return part.channels > 0; });
    return format.mSampleRate == mSampleRate && format.mChannelsPerFrame == static_cast<std::uint32_t>(mChannels)
           && (!allThere || sourcesOf(parts, mChannels) == mSourceChannels);
}

void CaptureStream::waitForCycle() const {
    const std::uint32_t cycle = mCycles.load();
    while (cycle % 2 == 1 && mCycles.load() == cycle)
        std::this_thread::yield();
}

void CaptureStream::detach(FrameQueue *queue) {
    FrameQueue *attached = queue;
    mQueue.compare_exchange_strong(attached, nullptr); // or another has taken its place
    waitForCycle();
}

OSStatus CaptureStream::formatChanged(AudioObjectID, std::uint32_t, const AudioObjectPropertyAddress *,
                                      void *clientData) {
    const auto &self = *static_cast<CaptureStream *>(clientData);
    if (self.onFormatChanged)
        self.onFormatChanged();
    return kAudioHardwareNoError;
}

OSStatus CaptureStream::partChanged(AudioObjectID, std::uint32_t, const AudioObjectPropertyAddress *,
                                    void *clientData) {
    auto &self = *static_cast<CaptureStream *>(clientData);
    const bool allThere = std::all_of(self.mParts.begin(), self.mParts.end(),
                                      [](const Part &part) { return inputFormat(part.device).mChannelsPerFrame > 0; });
    if (allThere == !self.mPartLostAt)
        return kAudioHardwareNoError;
    self.mLacksPart.store(!allThere, std::memory_order_relaxed);
    const foundation::Clock::Duration now = hal::HardwareSystem::clock().now();
    const double away = std::chrono::duration<double>(now - self.mPartLostAt.value_or(now)).count();
    if (allThere)
        self.mPartLostAt.reset();
    else
        self.mPartLostAt = now;
    if (self.mAlive && self.onPartsChanged) // else all of it is away, which is told already
        self.onPartsChanged(allThere, away);
    return kAudioHardwareNoError;
}

OSStatus CaptureStream::flowChanged(AudioObjectID device, std::uint32_t, const AudioObjectPropertyAddress *,
                                    void *clientData) {
    auto &self = *static_cast<CaptureStream *>(clientData);
    std::uint32_t flows = 0;
    std::uint32_t size = sizeof flows;
    if (AudioObjectGetPropertyData(device, &kFlows, 0, nullptr, &size, &flows) != kAudioHardwareNoError)
        flows = 0;
    const bool was = std::exchange(self.mAlive, flows != 0);
    // It may be back with other channels, which the procedure cannot take.
    if (inputFormat(device).mChannelsPerFrame > 0)
        (void)formatChanged(device, 0, nullptr, clientData);
    if (self.mAlive != was && self.onAliveChanged)
        self.onAliveChanged(self.mAlive);
    return kAudioHardwareNoError;
}

} // namespace cantorel::media
