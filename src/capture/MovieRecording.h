#pragma once

#include "capture/ZQAVVideoWritter.h"
#include "platform/foundation/Guarded.h"
#include "platform/media/RecordingCounts.h"
#include "platform/media/movie/MovieCapture.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace cantorel {

// One movie on its way to its file: takes the samples of a capture, makes pauses vanish by shifting times, and has them
// written. Made, asked and destroyed on the main thread; samples come on the thread of the capture, to which all of its
// state belongs but for what is told.
class MovieRecording : private media::MovieCaptureOutput {
public:
    struct Plan {
        QString path;
        QString writtenAs;
        media::VideoSettings pictures;
        std::unique_ptr<media::PictureSource> source;
        std::vector<media::SoundInput> sound; // none: a movie without sound
        std::uint64_t diskReserve = 0;        // bytes
        std::function<QString(const QString &path)> rescue;
    };
    // Called on the capture's thread.
    struct Events {
        std::function<void()> started;
        std::function<void()> shallStop; // writing has failed, or the disk is nearly full
        // Where the file is, once and last; a failure says what is wrong with it, or that there is none.
        std::function<void(const QString &path, const std::optional<foundation::Failure> &)> finished;
    };
    MovieRecording(Plan plan, foundation::Clock &clock, Events events);
    // Ends the movie and waits for its file.
    ~MovieRecording() override;

    foundation::Result<void> start() { return mCapture.start(); }
    void pause() { mCapture.pause(); }
    void resume() { mCapture.resume(); }
    void stop() { mCapture.stop(); }

    // Any thread.
    media::RecordingCounts counts() const;
    QString coder() const;
    media::PictureSize size() const; // of the movie

private:
    // Of the queue that the samples come in.
    enum class State {
        Waiting, // for the first picture, and then for the first sound where there is any
        Writing,
        Ended // nothing is written any more, whatever still comes
    };

    void captureDidOutputSample(const media::MovieSample &sample) override;
    void captureWasPaused() override { _discont = true; }
    void captureDidEnd(media::MovieTime end, const std::optional<foundation::Failure> &why) override;

    void begin(const media::MovieSample &first);
    void write(media::MovieSample sample);
    static media::MovieSample adjustTime(media::MovieSample sample, media::MovieTime by);
    void fail(const foundation::Failure &why);
    void watchDisk();
    void tellCounts();

    const QString mPath;
    const QString mWrittenAs;
    const media::VideoSettings mPictures;
    const bool mIsNoAudio;
    const std::uint64_t mDiskReserve;
    const std::function<QString(const QString &)> mRescue;
    const Events mEvents;
    State mState = State::Waiting;
    std::unique_ptr<ZQAVVideoWritter> mAVVideoWritter; // Spelling is fixed.
    std::shared_ptr<const media::FittedPicture> mHeld; // while sound is waited for, what is to be seen with it
    bool mIsTold = false;                              // that it has started
    bool _discont = false;                             // a pause happened, and the next sample tells how long it was
    media::MovieTime _timeOffset{};                    // all pauses until now
    std::optional<media::MovieTime> _lastVideo, _lastAudio; // ends of the last samples written
    media::MovieTime mDiskLookedAt{};
    std::optional<foundation::Failure> mFailure;

    struct Told {
        media::RecordingCounts counts;
        QString coder;
        media::PictureSize size;
    };
    foundation::Guarded<Told> mTold;
    std::vector<std::shared_ptr<media::FrameQueue>> mQueues; // for the frames that they lost
    media::MovieCapture mCapture;                            // last: its thread uses all of the above
};

} // namespace cantorel
