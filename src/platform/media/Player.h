#pragma once

#include "platform/foundation/Result.h"
#include "platform/hal/AudioHardware.h"
#include "platform/media/FrameQueue.h"
#include "platform/media/SoundReader.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

namespace cantorel::media {

// Plays a sound file once, to the device that is the default output when play() is called. Main thread; the I/O
// procedure only takes frames out of a queue, which a timer of the main thread keeps filled for half a second ahead.
class Player : public QObject {
public:
    // Fails when the file can't be read.
    static foundation::Result<std::unique_ptr<Player>> open(const QString &path);
    ~Player() override;

    // Called once when the last frame has been played, from the event loop; false when the device went away before.
    std::function<void(bool completely)> finished;

    // False when there is no output, or it can't be opened.
    bool play();
    void pause();
    // Stops, and goes back to the beginning.
    void stop();
    bool seek(double seconds);
    bool isPlaying() const { return mDevice != kAudioObjectUnknown; }
    double currentTime() const; // seconds
    double duration() const;    // seconds

private:
    explicit Player(const QString &path) : mPath(path) {}

    static OSStatus give(AudioObjectID device, const AudioTimeStamp *now, const AudioBufferList *inputData,
                         const AudioTimeStamp *inputTime, AudioBufferList *outputData, const AudioTimeStamp *outputTime,
                         void *player) noexcept [[clang::nonblocking]];
    bool openReader(int rate, int channels);
    void fill();
    void tick();
    void letGo();
    void end(bool completely);

    const QString mPath;
    std::unique_ptr<SoundReader> mReader;
    std::unique_ptr<FrameQueue> mQueue;
    std::vector<float> mChunk;
    QTimer mTimer;
    AudioObjectID mDevice = kAudioObjectUnknown;
    AudioDeviceIOProcID mProc = nullptr;
    int mRate = 48000;
    int mChannels = 2;
    double mDuration = 0;
    double mStart = 0;                     // seconds, where the queue's first frame lies
    bool mAllRead = false;                 // the reader has come to its end
    std::atomic<std::uint64_t> mPlayed{0}; // frames, counted by the I/O procedure
};

} // namespace cantorel::media
