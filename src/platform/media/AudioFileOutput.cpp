#include "platform/media/AudioFileOutput.h"

#include "platform/hal/HardwareSystem.h"
#include "platform/media/MediaFailures.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace cantorel::media {

using foundation::Failure;

namespace {

// Sound that ends a silence is noticed late: levels look back over 0.1 s, are told every 0.1 s and looked at every
// 0.2 s. What lies in front of it shall be in the file as well.
constexpr double kNoticeSeconds = 0.4;
constexpr double kPreRollSeconds = 0.5 + kNoticeSeconds;
constexpr std::chrono::milliseconds kSettling(500);

} // namespace

AudioFileOutput::~AudioFileOutput() {
    mJoins = false;
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
    events.rescue = rescue;
    events.finished = [=, this](const QString &file, const std::optional<Failure> &failure) {
        post([=, this] { workerFinished(number, file, failure); });
    };
    RecordingContinuation before = std::exchange(mNext, {});
    auto queue = before.queue ? before.queue : makeRecordingQueue(stream->channels(), stream->sampleRate());
    auto recording = std::make_unique<Recording>();
    recording->number = number;
    recording->path = path;
    recording->dropped = before.dropped;
    recording->filled = before.filled;
    recording->worker = std::make_unique<RecordingWorker>(
        path, RecordingInput{queue, stream->sampleRate(), stream->sourceChannels(), pollInterval}, diskReserve,
        std::move(events));
    // Swapping the queues in one step loses no frame between the two files of a split.
    mJoins = false;
    retire(queue.get(), before.queue != nullptr);
    mCurrent = std::move(recording);
    mLostAt.reset();
}

void AudioFileOutput::post(std::function<void()> call) {
    auto event = std::make_unique<QEvent>(QEvent::User);
    mPosted.with([&](auto &calls) { calls.push_back(std::move(call)); });
    QCoreApplication::postEvent(this, event.release()); // the event loop's from here on
}

void AudioFileOutput::customEvent(QEvent *) {
    for (const auto &call : mPosted.with([](auto &calls) { return std::exchange(calls, {}); }))
        call();
}

void AudioFileOutput::retire(FrameQueue *successor, bool continues) {
    const bool joins = std::exchange(mJoins, false) && mStream && mCurrent;
    const bool runs = mStream && mCurrent && !successor && mPause != Pause::ByPerson;
    mPause.reset();
    mDoubt.reset();
    if (mStream && !runs) {
        if (!mStream->isAlive() && successor && !continues)
            mStream->beginHoleHere();
        mStream->attach(successor);
        mStream->waitForCycle();
    }
    if (!mCurrent)
        return;
    mCurrent->worker->stop(runs ? RecordingWorker::End::WithBlock : RecordingWorker::End::Now,
                           framesOf(joins ? kNoticeSeconds : 0));
    mLast = countsOf(*mCurrent);
    mCurrent->droppedFrames = mLast.droppedFrames;
    if (joins) {
        mNext = {mCurrent->worker->queue(), nullptr, mCurrent->worker->queue()->dropped(),
                 mCurrent->worker->queue()->filled()};
        mStream->attach(mNext.queue.get()); // it was not while the person had paused
    }
    mEnding.push_back(std::move(mCurrent));
}

void AudioFileOutput::stopRecording() { retire(nullptr); }

std::size_t AudioFileOutput::framesOf(double seconds) const {
    return mStream ? static_cast<std::size_t>(seconds * mStream->sampleRate()) : 0;
}

void AudioFileOutput::forgetNextRecording() {
    mJoins = false;
    if (const auto queue = std::exchange(mNext, {}).queue; queue && mStream && !isUsed(*queue))
        mStream->detach(queue.get());
}

RecordingContinuation AudioFileOutput::letGo() {
    if (mNext.queue)
        mStream = nullptr; // as it is, with its queue
    return std::exchange(mNext, {});
}

bool AudioFileOutput::isUsed(const FrameQueue &queue) const {
    const auto uses = [&](const auto &recording) { return recording && recording->worker->queue().get() == &queue; };
    return mNext.queue.get() == &queue || uses(mCurrent) || std::any_of(mEnding.begin(), mEnding.end(), uses);
}

void AudioFileOutput::pauseRecording(Pause pause) {
    if (!mCurrent || mPause == Pause::ByPerson || mPause == pause)
        return;
    if (pause == Pause::ForSilence) {
        mCurrent->worker->hold(framesOf(kPreRollSeconds));
    } else if (mStream) {
        mStream->attach(nullptr);
        mStream->waitForCycle();
        mCurrent->worker->release(RecordingWorker::Release::WithoutKept);
    }
    mPause = pause;
}

void AudioFileOutput::resumeRecording() {
    if (!mCurrent || !mPause)
        return;
    if (*mPause == Pause::ForSilence)
        mCurrent->worker->release(RecordingWorker::Release::WithKept);
    else if (mStream) {
        if (!mStream->isAlive())
            mStream->beginHoleHere(); // the time of the pause is not filled
        mStream->attach(mCurrent->worker->queue().get());
    }
    mPause.reset();
}

void AudioFileOutput::setStream(CaptureStream *stream) {
    if (stream == mStream)
        return;
    stopRecording();
    mNext = {};
    mStream = stream;
}

void AudioFileOutput::deviceAlive(bool alive) {
    if (!alive)
        mSecondsAway = 0;
    else if (mStream)
        mSecondsAway = mStream->secondsAway();
    mLostAt.reset();
    if (!mCurrent)
        return;
    if (!alive)
        mLostAt = mCurrent->worker->queue()->accepted();
    if (alive)
        delegate->captureOutputDeviceBack(*this);
    else
        delegate->captureOutputDeviceLost(*this);
}

void AudioFileOutput::partsThere(bool allThere, double secondsAway) {
    mSecondsAway = secondsAway;
    if (!mCurrent)
        return;
    if (allThere)
        delegate->captureOutputDeviceBack(*this);
    else
        delegate->captureOutputDeviceLost(*this);
}

void AudioFileOutput::formatChanged(const QString &deviceName) {
    if (!mCurrent || !mStream)
        return;
    if (mStream->matchesDevice()) {
        if (std::exchange(mDoubt, nullptr))
            mCurrent->worker->goOn();
    } else if (!mDoubt) {
        // What comes now would be heard at a wrong pitch.
        mDoubtAt = mLostAt.value_or(mCurrent->worker->queue()->accepted());
        mCurrent->worker->waitAt(mDoubtAt);
        mDoubt = hal::HardwareSystem::clock().after(kSettling, [this, deviceName] { endDoubt(deviceName); });
    }
}

void AudioFileOutput::endDoubt(const QString &deviceName) {
    mDoubt.reset();
    if (!mCurrent)
        return;
    if (!mStream || mStream->matchesDevice()) {
        mCurrent->worker->goOn();
        return;
    }
    mCurrent->failure = failures::formatChanged(deviceName);
    mCurrent->worker->stopAt(mDoubtAt);
    mJoins = false; // nothing can follow it without a gap
    stopRecording();
}

void AudioFileOutput::workerStarted(std::uint64_t, const QString &path) {
    delegate->captureOutputDidStartRecording(*this, path);
}

void AudioFileOutput::workerFinished(std::uint64_t number, const QString &path, const std::optional<Failure> &failure) {
    if (mCurrent && mCurrent->number == number)
        stopRecording(); // it ended by itself
    const auto ended = std::find_if(mEnding.begin(), mEnding.end(),
                                    [number](const auto &recording) { return recording->number == number; });
    std::optional<Failure> reason = failure;
    RecordingCounts counts = recordingCounts();
    if (ended != mEnding.end()) {
        const std::unique_ptr<Recording> recording = std::move(*ended);
        reason = failure ? failure : recording->failure;
        mEnding.erase(ended);
        if (mStream && !isUsed(*recording->worker->queue()))
            mStream->detach(recording->worker->queue().get());
        counts = countsOf(*recording);
        counts.droppedFrames = recording->droppedFrames; // The queue may have dropped more frames since the stop; those
                                                         // belong to the next file.
        if (!mCurrent)
            mLast = counts;
        counts.secondsAway = mSecondsAway;
    }
    delegate->captureOutputDidFinishRecording(*this, path, counts, reason);
}

RecordingCounts AudioFileOutput::countsOf(const Recording &recording) {
    const RecordingWorker &worker = *recording.worker;
    RecordingCounts counts;
    counts.frames = static_cast<std::int64_t>(worker.frames());
    counts.rate = static_cast<std::int32_t>(std::lround(worker.sampleRate()));
    counts.bytes = static_cast<std::int64_t>(worker.bytes());
    counts.droppedFrames = static_cast<std::int64_t>(worker.queue()->dropped() - recording.dropped);
    counts.filledFrames =
        static_cast<std::int64_t>(worker.filledFrames() + worker.queue()->filled() - recording.filled);
    return counts;
}

RecordingCounts AudioFileOutput::recordingCounts() const {
    RecordingCounts counts = mCurrent ? countsOf(*mCurrent) : mLast;
    counts.secondsAway = mSecondsAway;
    return counts;
}

std::vector<CaptureConnection> AudioFileOutput::connections() const {
    if (!mStream)
        return {};
    CaptureConnection connection;
    const std::vector<float> levels = mStream->levels();
    const std::vector<int> &sources = mStream->sourceChannels();
    std::size_t channel = 0;
    for (std::size_t source = 0; source < sources.size(); ++source)
        for (const std::size_t end = channel + static_cast<std::size_t>(sources[source]); channel < end; ++channel)
            connection.audioChannels.push_back({levels[channel], true, static_cast<int>(source)});
    return {connection};
}

} // namespace cantorel::media
