#include "platform/media/movie/MovieCapture.h"

#include "platform/media/MediaFailures.h"
#include "platform/media/movie/MovieFailures.h"

#include <pthread.h>

#include <algorithm>
#include <csignal>
#include <limits>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr std::size_t kMostWaiting = 8; // pictures; each takes the memory of one
constexpr std::chrono::milliseconds kPoll(50);
constexpr std::uint64_t kSecond = 1'000'000'000; // ns
constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

// A file size limit shall be an error of the write, not the end of the program.
void blockFileSizeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

MovieCapture::MovieCapture(std::unique_ptr<PictureSource> source, const VideoSettings &pictures,
                           std::vector<SoundInput> sound, foundation::Clock &clock, MovieCaptureOutput &output)
    : mSource(std::move(source)), mSettings(pictures), mClock(clock), mOutput(output), mBegin(now()) {
    if (!sound.empty())
        mSound.emplace(std::move(sound), mBegin);
}

MovieCapture::~MovieCapture() {
    stop();
    if (mThread.joinable())
        mThread.join();
}

Result<void> MovieCapture::start() {
    const auto codecs = loadVideoCodecs();
    if (!codecs)
        return codecs.failure();
    mCodecs = codecs.value();
    if (const auto started = mSource->start(*this, mSettings.picturesPerSecond); !started)
        return started;
    mThread = std::thread([this] { run(); });
    return {};
}

void MovieCapture::pause() {
    const std::lock_guard lock(mMutex);
    if (mRequests.pauses.empty() || mRequests.pauses.back().to != kNever)
        mRequests.pauses.push_back({now(), kNever});
    tell();
}

void MovieCapture::resume() {
    const std::lock_guard lock(mMutex);
    if (!mRequests.pauses.empty() && mRequests.pauses.back().to == kNever)
        mRequests.pauses.back().to = now();
    tell();
}

void MovieCapture::stop() {
    {
        const std::lock_guard lock(mMutex);
        if (!mRequests.stopAt)
            mRequests.stopAt = now();
        tell();
    }
    mSource->stop(); // without the lock, which a picture on its way may wait for
}

std::int64_t MovieCapture::droppedPictures() const {
    const std::lock_guard lock(mMutex);
    return mRequests.dropped;
}

void MovieCapture::takePicture(const Picture &picture) {
    {
        const std::lock_guard lock(mMutex);
        if (mRequests.stopAt)
            return;
        if (mRequests.pictures.size() >= kMostWaiting) {
            ++mRequests.dropped;
            return;
        }
    }
    auto shown = fitted(picture);
    if (!shown && !mFitter) { // there will be no movie
        pictureSourceEnded(shown.failure());
        return;
    }
    const std::lock_guard lock(mMutex);
    if (shown)
        mRequests.pictures.push_back({picture.hostTime, std::move(shown).value()});
    else
        ++mRequests.dropped;
    tell();
}

Result<std::shared_ptr<const FittedPicture>> MovieCapture::fitted(const Picture &picture) {
    if (!mFitter) {
        if (mSettings.size == PictureSize{})
            mSettings.size = evenSize(picture.size);
        if (!isMovieSize(mSettings.size))
            return failures::movieSize(picture.size);
        auto fitter = mCodecs->makeFitter(mSettings);
        if (!fitter)
            return fitter.failure();
        mFitter = std::move(fitter).value();
    }
    return mFitter->fit(picture);
}

void MovieCapture::pictureSourceEnded(const Failure &why) {
    const std::lock_guard lock(mMutex);
    if (mRequests.stopAt)
        return;
    mRequests.ended = why;
    mRequests.stopAt = now();
    tell();
}

void MovieCapture::run() {
    pthread_setname_np(pthread_self(), "videoRecord");
    blockFileSizeSignal();
    while (pump()) {
        std::unique_lock lock(mMutex);
        mWake.wait_for(lock, kPoll, [this] { return mHasNews; });
    }
}

void MovieCapture::tell() {
    mHasNews = true;
    mWake.notify_one();
}

MovieTime MovieCapture::timeAt(std::uint64_t hostTime) const {
    return mSound ? mSound->timeOf(mSound->placeOf(hostTime))
                  : MovieTime(static_cast<std::int64_t>(hostTime) - static_cast<std::int64_t>(mBegin));
}

bool MovieCapture::pump() {
    Requests asked;
    std::uint64_t here = 0;
    {
        const std::lock_guard lock(mMutex);
        here = now(); // nothing that was asked for lies behind it
        mHasNews = false;
        asked.pauses = mRequests.pauses;
        asked.stopAt = mRequests.stopAt;
        asked.ended = mRequests.ended;
    }
    const std::uint64_t stopAt = asked.stopAt.value_or(kNever);
    const Pause pause = asked.pauses.empty() ? Pause{kNever, kNever} : asked.pauses.front();
    const std::uint64_t limit = std::min(pause.from, stopAt);

    showPictures(limit);
    const bool isHeard = hearUntil(limit, here);
    // What stands still is repeated, but never beyond what may follow.
    if (mShown && here >= mShownAt + kSecond && here < limit)
        show(here);
    if (limit == kNever || !isHeard)
        return true;
    if (limit == stopAt) {
        mOutput.captureDidEnd(timeAt(stopAt), asked.ended);
        return false;
    }
    // A pause: what comes in it is only looked at, for the picture that stands at its end.
    const std::uint64_t until = std::min({pause.to, stopAt, here});
    if (mShown && mShownAt < pause.from)
        show(pause.from);
    passPictures(until);
    if (mSound)
        mSound->skipTo(mSound->placeOf(until));
    if (pause.to == kNever && stopAt == kNever)
        return true;
    {
        const std::lock_guard lock(mMutex);
        mRequests.pauses.pop_front();
    }
    if (stopAt <= pause.to) { // ended while it was paused: with what was seen and heard before
        mOutput.captureDidEnd(timeAt(pause.from), asked.ended);
        return false;
    }
    mOutput.captureWasPaused();
    if (mShown)
        show(pause.to);
    return true;
}

void MovieCapture::showPictures(std::uint64_t before) {
    // Never more than can wait, so that pictures that come too fast leave time for the sound.
    for (std::size_t shown = 0; shown < kMostWaiting; ++shown) {
        Waiting next;
        {
            const std::lock_guard lock(mMutex);
            if (mRequests.pictures.empty() || mRequests.pictures.front().hostTime >= before)
                return;
            next = std::move(mRequests.pictures.front());
            mRequests.pictures.pop_front();
        }
        mShown = std::move(next.picture);
        show(next.hostTime);
    }
}

void MovieCapture::passPictures(std::uint64_t before) {
    const std::lock_guard lock(mMutex);
    while (!mRequests.pictures.empty() && mRequests.pictures.front().hostTime <= before) {
        mShown = std::move(mRequests.pictures.front().picture);
        mRequests.pictures.pop_front();
    }
}

void MovieCapture::show(std::uint64_t hostTime) {
    mShownAt = hostTime;
    MovieSample sample;
    sample.time = timeAt(hostTime);
    sample.picture = mShown;
    mOutput.captureDidOutputSample(sample);
}

bool MovieCapture::hearUntil(std::uint64_t hostTime, std::uint64_t here) {
    if (!mSound)
        return true;
    for (;;) {
        const std::int64_t until =
            hostTime == kNever ? std::numeric_limits<std::int64_t>::max() : mSound->placeOf(hostTime);
        const std::span<const float> frames = mSound->take(until, here);
        if (frames.empty())
            return mSound->position() >= until;
        MovieSample sample;
        const auto count = static_cast<std::int64_t>(frames.size()) / mSound->channels();
        sample.time = mSound->timeOf(mSound->position() - count);
        sample.duration = mSound->timeOf(mSound->position()) - sample.time;
        sample.sound = frames;
        sample.channels = mSound->channels();
        sample.rate = mSound->rate();
        mOutput.captureDidOutputSample(sample);
    }
}

} // namespace cantorel::media
