#pragma once

#include "platform/foundation/Result.h"
#include "platform/hal/AudioHardware.h"
#include "platform/media/FrameQueue.h"
#include "platform/media/asset/Asset.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace cantorel::media {

// Plays sound once, to the device that is the default output when play() is called. Main thread; the I/O procedure only
// takes frames out of a queue, which a timer of the main thread keeps filled for half a second ahead.
class Player : public QObject {
public:
    // Fails when there is no sound that could be read.
    static foundation::Result<std::unique_ptr<Player>> open(AssetPointer asset);
    static foundation::Result<std::unique_ptr<Player>> open(const QString &path);
    ~Player() override;

    // Called once when the last frame has been played, from the event loop; false when the device went away before, or
    // the sound can't be read any further.
    std::function<void(bool completely)> finished;

    // False when there is no output, or it can't be opened.
    bool play();
    void pause();
    // Stops, and goes back to the beginning.
    void stop();
    // Goes on, or later begins, with the frame nearest to that time. Sound that plays does not stop for it.
    void seek(double seconds);
    bool isPlaying() const { return mDevice != kAudioObjectUnknown; }
    // Something was played since the last seek.
    bool hasMoved() const { return mStretch && mStretch->played.load() > 0; }
    double currentTime() const;                                      // seconds, of what was given to the device
    double duration() const { return mAsset->duration().seconds(); } // seconds

private:
    // What is played from one seek to the next.
    struct Stretch {
        explicit Stretch(int channels);
        FrameQueue queue;
        std::atomic<std::uint64_t> played{0}; // frames, counted by the I/O procedure
    };

    Player(AssetPointer asset, std::unique_ptr<FrameReader> reader);

    static OSStatus give(AudioObjectID device, const AudioTimeStamp *now, const AudioBufferList *inputData,
                         const AudioTimeStamp *inputTime, AudioBufferList *outputData, const AudioTimeStamp *outputTime,
                         void *player) noexcept [[clang::nonblocking]];
    bool openReader(SoundFormat format);
    void beginStretch();
    void fill(std::size_t ahead);
    void tick();
    void letGo();
    void end(bool completely);

    const AssetPointer mAsset;
    std::unique_ptr<FrameReader> mReader;
    std::vector<float> mChunk;
    QTimer mTimer;
    AudioObjectID mDevice = kAudioObjectUnknown;
    AudioDeviceIOProcID mProc = nullptr;
    double mStart = 0; // seconds, where the stretch begins
    enum class Reading { GoesOn, AtEnd, Failed } mReading = Reading::GoesOn;
    // The procedure takes up mCurrent whenever it runs and says so in mHeard. A stretch whose successor has been heard
    // is used by nobody any more.
    std::unique_ptr<Stretch> mStretch;
    std::vector<std::unique_ptr<Stretch>> mRetired;
    std::atomic<Stretch *> mCurrent{nullptr};
    std::atomic<Stretch *> mHeard{nullptr};
};

} // namespace cantorel::media
