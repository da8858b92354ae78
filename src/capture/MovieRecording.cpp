#include "capture/MovieRecording.h"

#include "platform/media/DiskSpace.h"
#include "platform/media/MediaFailures.h"
#include "platform/media/asset/MediaTime.h"
#include "platform/media/movie/MovieFailures.h"

#include <algorithm>
#include <utility>

namespace cantorel {

using foundation::Failure;
using media::MovieSample;
using media::MovieTime;

namespace {

std::vector<std::shared_ptr<media::FrameQueue>> queuesOf(const std::vector<media::SoundInput> &inputs) {
    std::vector<std::shared_ptr<media::FrameQueue>> queues;
    for (const media::SoundInput &input : inputs)
        queues.push_back(input.queue);
    return queues;
}

} // namespace

MovieRecording::MovieRecording(Plan plan, foundation::Clock &clock, Events events)
    : mPath(plan.path),
      mWrittenAs(plan.writtenAs),
      mPictures(plan.pictures),
      mIsNoAudio(plan.sound.empty()),
      mDiskReserve(plan.diskReserve),
      mRescue(std::move(plan.rescue)),
      mEvents(std::move(events)),
      mQueues(queuesOf(plan.sound)),
      mCapture(std::move(plan.source), plan.pictures, std::move(plan.sound), clock, *this) {}

MovieRecording::~MovieRecording() = default;

void MovieRecording::captureDidOutputSample(const MovieSample &sample) {
    const bool isVideo = sample.picture != nullptr;
    switch (mState) {
    case State::Ended:
        return;
    case State::Waiting:
        // Sound that comes before there is anything to see is no part of the movie.
        if (isVideo)
            mHeld = sample.picture;
        if (!mHeld || (isVideo && !mIsNoAudio))
            return;
        begin(sample);
        break;
    case State::Writing:
        if (!_discont)
            break;
        if (isVideo && !mIsNoAudio) {
            mHeld = sample.picture;
            return;
        }
        // A pause before anything was written adds nothing.
        if (const auto last = isVideo ? _lastVideo : _lastAudio)
            _timeOffset += sample.time - _timeOffset - *last;
        _lastVideo.reset();
        _lastAudio.reset();
        _discont = false;
        break;
    }
    if (mHeld && !isVideo) {
        MovieSample held;
        held.time = sample.time;
        held.picture = mHeld;
        write(held);
    }
    mHeld.reset();
    write(sample);
    if (!std::exchange(mIsTold, true) && mState == State::Writing)
        mEvents.started();
}

void MovieRecording::begin(const MovieSample &first) {
    mState = State::Writing;
    _discont = false; // a pause before the first sample is none
    media::VideoSettings pictures = mPictures;
    pictures.size = mHeld->size();
    mAVVideoWritter = std::make_unique<ZQAVVideoWritter>(mPath, pictures, first.channels, first.rate);
    mAVVideoWritter->setWrittenAs(mWrittenAs);
    mAVVideoWritter->setRescue(mRescue);
    mAVVideoWritter->setStartTime(first.time);
    mDiskLookedAt = first.time;
}

MovieSample MovieRecording::adjustTime(MovieSample sample, MovieTime by) {
    sample.time -= by;
    return sample;
}

void MovieRecording::write(MovieSample sample) {
    if (mState != State::Writing)
        return;
    if (_timeOffset > MovieTime::zero())
        sample = adjustTime(sample, _timeOffset);
    const bool isVideo = sample.picture != nullptr;
    (isVideo ? _lastVideo : _lastAudio) = sample.time + sample.duration;
    if (!mAVVideoWritter->writeWithSampleBuffer(sample, isVideo))
        fail(*mAVVideoWritter->failure());
    tellCounts();
    watchDisk();
}

void MovieRecording::fail(const Failure &why) {
    mFailure = why;
    mState = State::Ended;
    mEvents.shallStop();
}

void MovieRecording::watchDisk() {
    const MovieTime here = std::max(_lastVideo.value_or(MovieTime::min()), _lastAudio.value_or(MovieTime::min()));
    if (mState != State::Writing || here - mDiskLookedAt < std::chrono::seconds(1))
        return;
    mDiskLookedAt = here;
    const auto room = media::freeBytes(mPath);
    if (room && *room < mDiskReserve)
        fail(media::failures::reserveReached(mPath));
}

void MovieRecording::captureDidEnd(MovieTime end, const std::optional<Failure> &why) {
    const bool wasWritten = mState == State::Writing;
    mState = State::Ended;
    if (!mFailure)
        mFailure = why;
    if (!mAVVideoWritter) {
        mEvents.finished(mPath, mFailure ? *mFailure : media::failures::noPicture(mPath));
        return;
    }
    if (wasWritten)
        mAVVideoWritter->setEndTime(end - _timeOffset);
    mAVVideoWritter->stopWritingWithFinishWrittingWithBlock([this] {
        if (!mFailure)
            mFailure = mAVVideoWritter->failure();
        tellCounts();
        mEvents.finished(mAVVideoWritter->file(), mFailure);
    });
}

void MovieRecording::tellCounts() {
    const MovieTime length = mAVVideoWritter->endTime() - mAVVideoWritter->startTime();
    std::uint64_t lost = 0;
    for (const auto &queue : mQueues)
        lost += queue->dropped();
    media::RecordingCounts counts;
    counts.rate = media::kPictureTimescale;
    counts.frames = media::MediaTime{length.count(), 1'000'000'000}.in(counts.rate).value;
    counts.bytes = static_cast<std::int64_t>(mAVVideoWritter->bytes());
    counts.droppedFrames = static_cast<std::int64_t>(lost);
    counts.droppedPictures = mCapture.droppedPictures();
    mTold.with([&](Told &told) { told = {counts, mAVVideoWritter->coder(), mAVVideoWritter->size()}; });
}

media::RecordingCounts MovieRecording::counts() const {
    return mTold.with([](const Told &told) { return told.counts; });
}

media::PictureSize MovieRecording::size() const {
    return mTold.with([](const Told &told) { return told.size; });
}

QString MovieRecording::coder() const {
    return mTold.with([](const Told &told) { return told.coder; });
}

} // namespace cantorel
