#include "platform/media/AudioFileOutput.h"

#include "platform/media/MediaFailures.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace cantorel::media {

using foundation::Failure;

AudioFileOutput::~AudioFileOutput() {
    stopRecording();
    if (mStream) {
        mStream->attach(nullptr);
        mStream->waitForCycle();
    }
    // The workers are waited for as they go.
}

void AudioFileOutput::startRecordingToOutputFile(const QString &path) {
    CaptureStream *stream = mFreshStream ? mFreshStream() : nullptr;
    const std::uint64_t number = mNextNumber++;
    if (!stream) {
        post([this, number, path] { workerFinished(number, path, failures::noDevice()); });
        return;
    }
    RecordingWorker::Events events;
    events.tap = tap;
    events.started = [=, this] { post([=, this] { workerStarted(number, path); }); };
    events.finished = [=, this](const std::optional<Failure> &failure) {
        post([=, this] { workerFinished(number, path, failure); });
    };
    auto recording = std::make_unique<Recording>();
    recording->number = number;
    recording->path = path;
    recording->sampleRate = stream->sampleRate();
    recording->worker =
        std::make_unique<RecordingWorker>(path, stream->sampleRate(), stream->sourceChannels(), std::move(events));
    // The exchange is what keeps two files of a split next to each other.
    retire(&recording->worker->queue());
    mCurrent = std::move(recording);
}

void AudioFileOutput::post(std::function<void()> call) {
    mPosted.with([&](auto &calls) { calls.push_back(std::move(call)); });
    QCoreApplication::postEvent(this, new QEvent(QEvent::User)); // the event loop's from here on
}

void AudioFileOutput::customEvent(QEvent *) {
    for (const auto &call : mPosted.with([](auto &calls) { return std::exchange(calls, {}); }))
        call();
}

void AudioFileOutput::retire(FrameQueue *successor) {
    const bool endsWithBlock = mStream && mCurrent && !successor && !mPaused;
    mPaused = false;
    if (mStream && !endsWithBlock) {
        mStream->attach(successor);
        mStream->waitForCycle();
    }
    if (!mCurrent)
        return;
    mLast = countsOf(*mCurrent);
    mCurrent->worker->stop(endsWithBlock ? RecordingWorker::End::WithBlock : RecordingWorker::End::Now);
    mEnding.push_back(std::move(mCurrent));
}

void AudioFileOutput::stopRecording() { retire(nullptr); }

void AudioFileOutput::pauseRecording() {
    if (!mCurrent || mPaused)
        return;
    mPaused = true;
    if (mStream)
        mStream->attach(nullptr);
}

void AudioFileOutput::resumeRecording() {
    if (!mCurrent || !mPaused)
        return;
    mPaused = false;
    if (mStream)
        mStream->attach(&mCurrent->worker->queue());
}

void AudioFileOutput::setStream(CaptureStream *stream) {
    if (stream == mStream)
        return;
    stopRecording();
    mStream = stream;
}

void AudioFileOutput::deviceAlive(bool alive) {
    if (!mCurrent)
        return;
    if (alive)
        delegate->captureOutputDeviceBack(*this);
    else
        delegate->captureOutputDeviceLost(*this);
}

void AudioFileOutput::workerStarted(std::uint64_t, const QString &path) {
    delegate->captureOutputDidStartRecording(*this, path);
}

void AudioFileOutput::workerFinished(std::uint64_t number, const QString &path, const std::optional<Failure> &failure) {
    if (mCurrent && mCurrent->number == number)
        stopRecording(); // it ended by itself
    const auto ended = std::find_if(mEnding.begin(), mEnding.end(),
                                    [number](const auto &recording) { return recording->number == number; });
    if (ended != mEnding.end()) {
        if (mStream)
            mStream->detach(&(*ended)->worker->queue());
        if (!mCurrent)
            mLast = countsOf(**ended);
        mEnding.erase(ended);
    }
    delegate->captureOutputDidFinishRecording(*this, path, failure);
}

AudioFileOutput::Counts AudioFileOutput::countsOf(const Recording &recording) {
    const FrameQueue &queue = recording.worker->queue();
    return {{static_cast<std::int64_t>(queue.accepted()), static_cast<std::int32_t>(std::lround(recording.sampleRate))},
            recording.worker->bytes(),
            queue.dropped(),
            queue.discontinuities(),
            recording.worker->limitedSamples()};
}

MediaTime AudioFileOutput::recordedDuration() const { return counts().duration; }
std::uint64_t AudioFileOutput::recordedFileSize() const { return counts().bytes; }
std::uint64_t AudioFileOutput::droppedFrames() const { return counts().dropped; }
std::uint64_t AudioFileOutput::discontinuities() const { return counts().discontinuities; }
std::uint64_t AudioFileOutput::limitedSamples() const { return counts().limited; }

std::vector<CaptureConnection> AudioFileOutput::connections() const {
    if (!mStream)
        return {};
    CaptureConnection connection;
    for (const float level : mStream->levels())
        connection.audioChannels.push_back({level, true});
    return {connection};
}

} // namespace cantorel::media
