#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/Result.h"
#include "platform/media/movie/MovieWriter.h"
#include "platform/media/movie/PictureSource.h"
#include "platform/media/movie/SoundTimeline.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace cantorel::media {

// A picture, or a stretch of sound, with its time on the sound's clock. Valid while it is handed over.
struct MovieSample {
    MovieTime time{};
    MovieTime duration{}; // 0 of a picture
    std::shared_ptr<const FittedPicture> picture;
    std::span<const float> sound; // interleaved
    int channels = 0;             // of sound
    int rate = 0;                 // its frames a second
};

// Takes samples, all on the thread of the capture.
class MovieCaptureOutput {
public:
    virtual ~MovieCaptureOutput() = default;

    virtual void captureDidOutputSample(const MovieSample &sample) = 0;
    // A pause lies between the samples before and those behind this.
    virtual void captureWasPaused() = 0;
    // Nothing comes any more; the failure says why, and is empty after a stop().
    virtual void captureDidEnd(MovieTime end, const std::optional<foundation::Failure> &why) = 0;
};

// Joins the pictures of one source and the sound of any number of devices to one stream of samples, on a thread of its
// own. The sound's clock is that of all: pictures get the moment of the sound that was heard with them. A source that
// stands still has its picture repeated once a second, at a pause and behind it; where no sound comes for half a
// second, silence stands in. Made, asked and destroyed on the main thread.
class MovieCapture : private PictureSink {
public:
    // A size of 0 is that of the first picture. The output outlives the capture, and so does what the inputs stand for;
    // there may be none.
    MovieCapture(std::unique_ptr<PictureSource> source, const VideoSettings &pictures, std::vector<SoundInput> sound,
                 foundation::Clock &clock, MovieCaptureOutput &output);
    // Stops at once; the output hears of it before this returns.
    ~MovieCapture() override;

    foundation::Result<void> start();
    // From now on nothing is handed over, and what comes meanwhile is left out.
    void pause();
    void resume();
    // Ends with what was seen and heard until now, soon.
    void stop();

    // Pictures that came faster than they could be written, up to now. Any thread.
    std::int64_t droppedPictures() const;

private:
    struct Waiting {
        std::uint64_t hostTime = 0;
        std::shared_ptr<const FittedPicture> picture;
    };
    struct Pause {
        std::uint64_t from = 0;
        std::uint64_t to = 0; // the largest number while it lasts
    };
    // What other threads ask for.
    struct Requests {
        std::deque<Waiting> pictures;
        std::deque<Pause> pauses;
        std::optional<std::uint64_t> stopAt; // host time
        std::optional<foundation::Failure> ended;
        std::int64_t dropped = 0;
    };

    void takePicture(const Picture &picture) override;
    void pictureSourceEnded(const foundation::Failure &why) override;

    std::uint64_t now() const { return static_cast<std::uint64_t>(mClock.now().count()); }
    foundation::Result<std::shared_ptr<const FittedPicture>> fitted(const Picture &picture);
    void tell(); // the mutex is held
    void run();
    bool pump(); // false: all was handed over
    void showPictures(std::uint64_t before);
    void passPictures(std::uint64_t before);
    void show(std::uint64_t hostTime);
    bool hearUntil(std::uint64_t hostTime, std::uint64_t here); // whether all of it was heard
    MovieTime timeAt(std::uint64_t hostTime) const;

    std::unique_ptr<PictureSource> mSource;
    VideoSettings mSettings; // the source's thread's from the start on
    foundation::Clock &mClock;
    MovieCaptureOutput &mOutput;
    const VideoCodecs *mCodecs = nullptr;   // once it was started
    const std::uint64_t mBegin;             // host time
    std::unique_ptr<PictureFitter> mFitter; // the source's thread's
    std::optional<SoundTimeline> mSound;    // none for a movie without sound
    std::shared_ptr<const FittedPicture> mShown;
    std::uint64_t mShownAt = 0; // host time
    mutable std::mutex mMutex;  // guards the next ones
    std::condition_variable mWake;
    Requests mRequests;
    bool mHasNews = false; // something was asked since the thread looked
    std::thread mThread;   // last: it uses all of the above
};

} // namespace cantorel::media
