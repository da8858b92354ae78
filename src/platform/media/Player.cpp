#include "platform/media/Player.h"

#include <algorithm>

namespace cantorel::media {

namespace {

constexpr int kTickMilliseconds = 50;
constexpr std::size_t kChunkFrames = 4096;
constexpr std::size_t kQueueFrames = 32768;
constexpr AudioObjectPropertyAddress kAlive = {kAudioDevicePropertyDeviceIsAlive, kAudioObjectPropertyScopeGlobal, 0};

template <class T> bool readOutput(AudioObjectID device, AudioObjectPropertySelector selector, T &value) {
    const AudioObjectPropertyAddress address = {selector, kAudioDevicePropertyScopeOutput, 0};
    std::uint32_t size = sizeof value;
    return AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &value) == kAudioHardwareNoError;
}

} // namespace

foundation::Result<std::unique_ptr<Player>> Player::open(const QString &path) {
    std::unique_ptr<Player> player(new Player(path)); // Its constructor is private.
    auto reader = openSound(path, player->mRate, player->mChannels);
    if (!reader)
        return reader.failure();
    player->mReader = std::move(reader).value();
    player->mDuration = player->mReader->durationSeconds();
    player->mTimer.setInterval(kTickMilliseconds);
    connect(&player->mTimer, &QTimer::timeout, player.get(), [raw = player.get()] { raw->tick(); });
    return player;
}

Player::~Player() { letGo(); }

bool Player::openReader(int rate, int channels) {
    if (mReader && rate == mRate && channels == mChannels)
        return true;
    auto reader = openSound(mPath, rate, channels);
    if (!reader)
        return false;
    mReader = std::move(reader).value();
    mRate = rate;
    mChannels = channels;
    mQueue.reset();
    return mStart == 0 || mReader->seek(mStart);
}

bool Player::play() {
    if (isPlaying())
        return true;
    AudioObjectID device = kAudioObjectUnknown;
    std::uint32_t size = sizeof device;
    AudioStreamBasicDescription format = {};
    if (AudioHardwareGetProperty(kAudioHardwarePropertyDefaultOutputDevice, &size, &device) != kAudioHardwareNoError
        || device == kAudioObjectUnknown || !readOutput(device, kAudioDevicePropertyStreamFormat, format)
        || !openReader(static_cast<int>(format.mSampleRate), static_cast<int>(format.mChannelsPerFrame)))
        return false;
    if (!mQueue)
        mQueue = std::make_unique<FrameQueue>(mChannels, kQueueFrames);
    mChunk.resize(kChunkFrames * static_cast<std::size_t>(mChannels));
    fill();

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
}

void Player::pause() { letGo(); }

void Player::stop() {
    letGo();
    (void)seek(0); // A file that cannot seek is opened again.
}

bool Player::seek(double seconds) {
    const bool playing = isPlaying();
    letGo();
    mQueue.reset();
    mAllRead = false;
    mPlayed.store(0);
    mStart = std::clamp(seconds, 0.0, std::max(mDuration, 0.0));
    if (!mReader->seek(mStart)) {
        mStart = 0;
        mReader.reset();
        if (!openReader(mRate, mChannels))
            return false;
    }
    return !playing || play();
}

double Player::currentTime() const { return mStart + static_cast<double>(mPlayed.load()) / mRate; }

double Player::duration() const { return mDuration; }

void Player::fill() {
    while (!mAllRead && mQueue->available() + kChunkFrames <= kQueueFrames) {
        const std::size_t frames = mReader->read(mChunk.data(), kChunkFrames);
        mQueue->push(mChunk.data(), frames);
        mAllRead = frames == 0;
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
    fill();
    if (mAllRead && mQueue->available() == 0)
        end(true);
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
    const AudioBuffer &buffer = outputData->mBuffers[0];
    if (buffer.mNumberChannels != static_cast<std::uint32_t>(self->mChannels))
        return 0;
    // The buffer arrives silent, and one procedure alone plays this sound; others may have added theirs before.
    auto *output = static_cast<float *>(buffer.mData);
    float block[2048];
    const std::size_t most = std::size(block) / buffer.mNumberChannels;
    for (std::size_t left = buffer.mDataByteSize / (buffer.mNumberChannels * sizeof(float)); left > 0;) {
        const std::size_t frames = self->mQueue->pop(block, std::min(left, most));
        if (frames == 0)
            break;
        for (std::size_t i = 0; i < frames * buffer.mNumberChannels; ++i)
            output[i] += block[i];
        output += frames * buffer.mNumberChannels;
        left -= frames;
        self->mPlayed.fetch_add(frames, std::memory_order_relaxed);
    }
    return 0;
}

} // namespace cantorel::media
