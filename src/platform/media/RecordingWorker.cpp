#include "platform/media/RecordingWorker.h"

#include "platform/media/AudioFileWriter.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <numeric>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr double kQueueSeconds = 5; // a disk that sleeps longer costs frames, which are counted
constexpr double kBatchSeconds = 0.5;
constexpr auto kBlockWait = std::chrono::milliseconds(200);    // a device that brings nothing by then is gone
constexpr auto kPollInterval = std::chrono::milliseconds(100); // the real-time side never wakes anybody

int totalChannels(const std::vector<int> &sources) { return std::accumulate(sources.begin(), sources.end(), 0); }

std::size_t framesOf(double seconds, double rate) { return static_cast<std::size_t>(seconds * rate); }

// A file size limit shall be an error of the write, not the end of the program.
void blockFileSizeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

RecordingWorker::RecordingWorker(QString path, double sampleRate, std::vector<int> sourceChannels, Events events)
    : mPath(std::move(path)),
      mSampleRate(sampleRate),
      mEvents(std::move(events)),
      mQueue(totalChannels(sourceChannels), framesOf(kQueueSeconds, sampleRate)),
      mMix(std::move(sourceChannels)),
      mBatch(std::max<std::size_t>(1, framesOf(kBatchSeconds, sampleRate)) * mQueue.channels()),
      mThread([this] { run(); }) {}

RecordingWorker::~RecordingWorker() {
    stop(End::Now);
    mThread.join();
}

void RecordingWorker::stop(End end) {
    const std::lock_guard lock(mMutex);
    if (end == End::WithBlock)
        mQueue.end();
    mStopping = true;
    mEnd = end;
    mWake.notify_one();
}

void RecordingWorker::run() {
    pthread_setname_np(pthread_self(), "recorder");
    blockFileSizeSignal();
    mEvents.finished(record());
}

std::optional<Failure> RecordingWorker::record() {
    auto opened = AudioFileWriter::open(mPath, static_cast<int>(std::lround(mSampleRate)));
    if (!opened)
        return opened.failure();
    AudioFileWriter &writer = *opened.value();
    mBytes.store(writer.bytes(), std::memory_order_relaxed);
    Result<void> written;
    while (written && waitForFrames())
        written = drain(writer);
    settle();
    while (written && mQueue.available() > 0)
        written = drain(writer);
    // Also after a failure: what is in the file shall be played.
    const auto closed = writer.finish();
    mBytes.store(writer.bytes(), std::memory_order_relaxed);
    if (!written)
        return written.failure();
    return closed ? std::nullopt : std::optional(closed.failure());
}

void RecordingWorker::settle() {
    const auto deadline = std::chrono::steady_clock::now() + kBlockWait;
    std::unique_lock lock(mMutex);
    while (mEnd == End::WithBlock && !mQueue.complete() && std::chrono::steady_clock::now() < deadline)
        mWake.wait_for(lock, std::chrono::milliseconds(2));
    mQueue.close();
}

bool RecordingWorker::waitForFrames() {
    const std::size_t wanted = mBatch.size() / mQueue.channels();
    std::unique_lock lock(mMutex);
    while (!mStopping) {
        // The first frames are told at once, then a batch is waited for.
        if (mQueue.available() >= wanted || (!mStarted && mQueue.available() > 0))
            return true;
        mWake.wait_for(lock, kPollInterval);
    }
    return false;
}

Result<void> RecordingWorker::drain(AudioFileWriter &writer) {
    if (!mStarted) {
        mStarted = true;
        if (mEvents.started)
            mEvents.started();
    }
    const std::size_t frames = mQueue.pop(mBatch.data(), mBatch.size() / mQueue.channels());
    const std::span<const float> stereo =
        mMix.mix(std::span(mBatch.data(), frames * static_cast<std::size_t>(mQueue.channels())));
    mLimited.store(mMix.limitedSamples(), std::memory_order_relaxed);
    if (mEvents.tap)
        mEvents.tap(stereo);
    const Result<void> written = writer.append(stereo);
    mBytes.store(writer.bytes(), std::memory_order_relaxed);
    return written;
}

} // namespace cantorel::media
