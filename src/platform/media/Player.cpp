#include "platform/media/Player.h"

#include "platform/media/asset/OpenAsset.h"

#include <algorithm>
#include <cmath>

namespace cantorel::media {

namespace {

constexpr int kTickMilliseconds = 50;
constexpr std::size_t kChunkFrames = 4096;
constexpr std::size_t kQueueFrames = 32768;
constexpr int kFirstPart = 5;                    // of a second, read before the sound goes on elsewhere
constexpr SoundFormat kUsualFormat = {48000, 2}; // of most outputs
constexpr AudioObjectPropertyAddress kAlive = {kAudioDevicePropertyDeviceIsAlive, kAudioObjectPropertyScopeGlobal, 0};

template <class T> bool readOutput(AudioObjectID device, AudioObjectPropertySelector selector, T &value) {
    const AudioObjectPropertyAddress address = {selector, kAudioDevicePropertyScopeOutput, 0};
    std::uint32_t size = sizeof value;
    return AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &value) == kAudioHardwareNoError;
}

} // namespace

Player::Stretch::Stretch(int channels) : queue(channels, kQueueFrames) {}

Player::Player(AssetPointer asset, std::unique_ptr<FrameReader> reader)
    : mAsset(std::move(asset)), mReader(std::move(reader)) {
    mReader->hurry();
    mTimer.setInterval(kTickMilliseconds);
    connect(&mTimer, &QTimer::timeout, this, &Player::tick);
}

foundation::Result<std::unique_ptr<Player>> Player::open(AssetPointer asset) {
    auto reader = asset->openReader(kUsualFormat);
    if (!reader)
        return reader.failure();
    return std::unique_ptr<Player>(
        new Player(std::move(asset), std::move(reader).value())); // Its constructor is private.
}

foundation::Result<std::unique_ptr<Player>> Player::open(const QString &path) {
    auto asset = openAsset(QUrl::fromLocalFile(path));
    if (!asset)
        return asset.failure();
    return open(std::move(asset).value());
}

Player::~Player() { letGo(); }

bool Player::openReader(SoundFormat format) {
    if (mReader && mReader->format() == format)
        return true;
    auto reader = mAsset->openReader(format);
    if (!reader)
        return false;
    mStart = currentTime();
    mReader = std::move(reader).value();
    mReader->hurry();
    mStretch.reset();
    return true;
}

bool Player::play() {
    if (isPlaying())
        return true;
    AudioObjectID device = kAudioObjectUnknown;
    std::uint32_t size = sizeof device;
    AudioStreamBasicDescription format = {};
    if (AudioHardwareGetProperty(kAudioHardwarePropertyDefaultOutputDevice, &size, &device) != kAudioHardwareNoError
        || device == kAudioObjectUnknown || !readOutput(device, kAudioDevicePropertyStreamFormat, format)
        || !openReader({static_cast<int>(format.mSampleRate), static_cast<int>(format.mChannelsPerFrame)}))
        return false;
    if (!mStretch)
        beginStretch();

    if (AudioDeviceCreateIOProcID(device, give, this, &mProc) != kAudioHardwareNoError)
        return false;
    // A loopback device gives its output side only to those who ask for it.
    const AudioDeviceIOProcStreamUsage usage = {mProc, 0, 1};
    const AudioObjectPropertyAddress address = {kAudioDevicePropertyIOProcStreamUsage, kAudioDevicePropertyScopeOutput,
                                                0};
    (void)AudioObjectSetPropertyData(device, &address, 0, nullptr, sizeof usage,
                                     &usage); // One-sided devices need none.
    if (AudioDeviceStart(device, mProc) != kAudioHardwareNoError) {
        (void)AudioDeviceDestroyIOProcID(device, mProc);
        return false;
    }
    mDevice = device;
    mTimer.start();
    return true;
}

void Player::letGo() {
    mTimer.stop();
    if (mDevice == kAudioObjectUnknown)
        return;
    (void)AudioDeviceStop(mDevice, mProc);
    (void)AudioDeviceDestroyIOProcID(mDevice, mProc);
    mDevice = kAudioObjectUnknown;
    mRetired.clear();
}

void Player::pause() { letGo(); }

void Player::stop() {
    letGo();
    seek(0);
}

void Player::seek(double seconds) {
    mStart = std::clamp(seconds, 0.0, duration());
    if (isPlaying())
        beginStretch();
    else
        mStretch.reset(); // play() begins it, in the format of the device of then
}

void Player::beginStretch() {
    const SoundFormat format = mReader->format();
    if (mStretch)
        mRetired.push_back(std::move(mStretch));
    mStretch = std::make_unique<Stretch>(format.channels);
    mChunk.resize(kChunkFrames * static_cast<std::size_t>(format.channels));
    mReader->seek(std::llround(mStart * format.rate));
    mReading = Reading::GoesOn;
    fill(static_cast<std::size_t>(format.rate) / kFirstPart); // the rest comes with the next tick
    mCurrent.store(mStretch.get(), std::memory_order_release);
}

double Player::currentTime() const {
    const double seconds =
        mStretch ? mStart + static_cast<double>(mStretch->played.load()) / mReader->format().rate : mStart;
    return std::min(seconds, std::max(duration(), mStart));
}

void Player::fill(std::size_t ahead) {
    FrameQueue &queue = mStretch->queue;
    ahead = std::min(ahead, kQueueFrames - kChunkFrames);
    while (mReading == Reading::GoesOn && queue.available() <= ahead) {
        const auto frames = mReader->read(mChunk.data(), kChunkFrames);
        if (frames)
            queue.push(mChunk.data(), frames.value());
        mReading = !frames ? Reading::Failed : frames.value() == 0 ? Reading::AtEnd : Reading::GoesOn;
    }
}

void Player::tick() {
    std::uint32_t alive = 0;
    std::uint32_t size = sizeof alive;
    if (AudioObjectGetPropertyData(mDevice, &kAlive, 0, nullptr, &size, &alive) != kAudioHardwareNoError
        || alive == 0) {
        // The sound goes on at the output that took the vanished one's place, if there is one.
        letGo();
        if (!play())
            end(false);
        return;
    }
    if (mHeard.load(std::memory_order_acquire) == mStretch.get())
        mRetired.clear();
    fill(kQueueFrames);
    if (mReading != Reading::GoesOn && mStretch->queue.available() == 0)
        end(mReading == Reading::AtEnd);
}

void Player::end(bool completely) {
    letGo();
    // Not from within the timer: the callback may destroy this player.
    QTimer::singleShot(0, this, [this, completely] {
        if (finished)
            finished(completely);
    });
}

OSStatus Player::give(AudioObjectID, const AudioTimeStamp *, const AudioBufferList *, const AudioTimeStamp *,
                      AudioBufferList *outputData, const AudioTimeStamp *, void *player) noexcept
    [[clang::nonblocking]] {
    auto *self = static_cast<Player *>(player);
    if (outputData->mNumberBuffers == 0)
        return 0;
    Stretch &stretch = *self->mCurrent.load(std::memory_order_acquire);
    self->mHeard.store(&stretch, std::memory_order_release);
    const AudioBuffer &buffer = outputData->mBuffers[0];
    if (buffer.mNumberChannels != static_cast<std::uint32_t>(stretch.queue.channels()))
        return 0;
    // The buffer arrives silent, and one procedure alone plays this sound; others may have added theirs before.
    auto *output = static_cast<float *>(buffer.mData);
    float block[2048];
    const std::size_t most = std::size(block) / buffer.mNumberChannels;
    for (std::size_t left = buffer.mDataByteSize / (buffer.mNumberChannels * sizeof(float)); left > 0;) {
        const std::size_t frames = stretch.queue.pop(block, std::min(left, most));
        if (frames == 0)
            break;
        for (std::size_t i = 0; i < frames * buffer.mNumberChannels; ++i)
            output[i] += block[i];
        output += frames * buffer.mNumberChannels;
        left -= frames;
        stretch.played.fetch_add(frames, std::memory_order_relaxed);
    }
    return 0;
}

} // namespace cantorel::media
