#include "platform/media/RecordingWorker.h"

#include "platform/media/AudioFileWriter.h"
#include "platform/media/DiskSpace.h"
#include "platform/media/MediaFailures.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr double kQueueSeconds = 10; // a disk that sleeps longer costs frames, which are counted
constexpr double kBatchSeconds = 0.5;
// A recording that ends with a whole block is as long in every player as it was captured.
constexpr std::uint64_t kBlockFrames = kFramesPerPacket;
constexpr auto kBlockWait = std::chrono::milliseconds(200); // a device that brings nothing by then is gone

std::size_t framesOf(double seconds, double rate) { return static_cast<std::size_t>(seconds * rate); }

// A file size limit shall be an error of the write, not the end of the program.
void blockFileSizeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

std::shared_ptr<FrameQueue> makeRecordingQueue(int channels, double sampleRate) {
    return std::make_shared<FrameQueue>(channels, framesOf(kQueueSeconds, sampleRate));
}

RecordingWorker::RecordingWorker(QString path, RecordingInput input, std::uint64_t diskReserve, Events events)
    : mPath(std::move(path)),
      mInput(std::move(input)),
      mDiskReserve(diskReserve),
      mEvents(std::move(events)),
      mMix(mInput.sourceChannels),
      mBatch(std::max<std::size_t>(1, framesOf(kBatchSeconds, mInput.sampleRate)) * mInput.queue->channels()),
      mBegin(mInput.queue->taken()),
      mThread([this] { run(); }) {}

RecordingWorker::~RecordingWorker() {
    stop(End::Now);
    mThread.join();
}

void RecordingWorker::hold(std::size_t keptFrames) {
    const std::lock_guard lock(mMutex);
    mKept = keptFrames;
    mHolds.push_back({mInput.queue->accepted(), kNever});
}

void RecordingWorker::release(Release release) {
    const std::lock_guard lock(mMutex);
    if (mHolds.empty() || mHolds.back().to != kNever)
        return;
    Hold &hold = mHolds.back();
    const std::uint64_t now = mInput.queue->accepted();
    const std::uint64_t kept = release == Release::WithKept ? mKept : 0;
    hold.to = std::max(hold.from, now - std::min(now, kept));
    hold.released = now;
    mLeftOut += hold.to - hold.from;
    mWake.notify_one();
}

void RecordingWorker::stop(End end, std::size_t nextKeeps) {
    const std::lock_guard lock(mMutex);
    if (!mStopping) {
        mStopping = true;
        mEnd = end;
        mStopAt = mInput.queue->accepted();
        if (!mHolds.empty() && mHolds.back().to == kNever) {
            Hold &hold = mHolds.back();
            hold.released = mStopAt;
            hold.to = std::max(hold.from, mStopAt - std::min<std::uint64_t>(mStopAt, std::min(nextKeeps, mKept)));
            mStopAt = hold.from;
            mEnd = End::Now;
        }
    }
    mWake.notify_one();
}

void RecordingWorker::waitAt(std::uint64_t position) {
    const std::lock_guard lock(mMutex);
    if (!mStopping)
        mStopAt = position;
}

void RecordingWorker::goOn() {
    const std::lock_guard lock(mMutex);
    if (!mStopping)
        mStopAt = kNever;
    mWake.notify_one();
}

void RecordingWorker::stopAt(std::uint64_t position) {
    const std::lock_guard lock(mMutex);
    if (!mStopping) {
        mStopping = true;
        mEnd = End::Now;
        mStopAt = std::min(mInput.queue->accepted(), position);
        if (!mHolds.empty() && mHolds.back().to == kNever) {
            Hold &hold = mHolds.back();
            hold.to = hold.released = hold.from;
            mStopAt = std::min(mStopAt, hold.from);
        }
    }
    mWake.notify_one();
}

std::uint64_t RecordingWorker::frames() const {
    const std::lock_guard lock(mMutex);
    std::uint64_t end = std::min(mInput.queue->accepted(), mStopAt);
    if (!mHolds.empty() && mHolds.back().to == kNever)
        end = mHolds.back().from;
    return end - std::min(end, mBegin + mLeftOut) + mFilled;
}

std::uint64_t RecordingWorker::filledFrames() const {
    const std::lock_guard lock(mMutex);
    return mFilled;
}

void RecordingWorker::run() {
    pthread_setname_np(pthread_self(), "recorder");
    blockFileSizeSignal();
    const std::optional<Failure> failure = record();
    mEvents.finished(mPath, failure);
}

std::optional<Failure> RecordingWorker::record() {
    auto opened = AudioFileWriter::open(mPath, static_cast<int>(std::lround(mInput.sampleRate)));
    if (!opened)
        return opened.failure();
    AudioFileWriter &writer = *opened.value();
    mBytes.store(writer.bytes(), std::memory_order_relaxed);
    Result<void> written;
    {
        const std::lock_guard reading(mInput.queue->reading());
        {
            const std::lock_guard lock(mMutex);
            mBegin = mInput.queue->taken();
        }
        while (written && waitForFrames())
            written = drain(writer);
        while (written && readyNow() > 0)
            written = drain(writer);
        if (written)
            completeBlock();
        while (written && readyNow() > 0)
            written = drain(writer);
    }
    // Also after a failure: what is in the file shall be played.
    const auto closed = writer.finish();
    mBytes.store(writer.bytes(), std::memory_order_relaxed);
    const auto rescued = rescue(writer);
    if (!written)
        return written.failure();
    if (!rescued)
        return rescued.failure();
    return closed ? std::nullopt : std::optional(closed.failure());
}

Result<void> RecordingWorker::rescue(const AudioFileWriter &writer) {
    if (!mEvents.rescue || mWritten == 0 || !writer.isLost())
        return {};
    const QString path = mEvents.rescue(mPath);
    const auto copied = writer.copyTo(path);
    if (!copied)
        return failures::notRescued(mPath, copied.failure());
    mPath = path;
    return {};
}

void RecordingWorker::completeBlock() {
    const auto deadline = std::chrono::steady_clock::now() + kBlockWait;
    std::unique_lock lock(mMutex);
    if (mEnd != End::WithBlock)
        return;
    const std::uint64_t lacking = (kBlockFrames - mWritten % kBlockFrames) % kBlockFrames;
    mStopAt = mInput.queue->taken() + lacking;
    while (mInput.queue->available() < lacking && std::chrono::steady_clock::now() < deadline)
        mWake.wait_for(lock, std::chrono::milliseconds(2));
    mStopAt = std::min(mStopAt, mInput.queue->accepted());
}

bool RecordingWorker::passHolds() {
    FrameQueue &queue = *mInput.queue;
    while (!mHolds.empty() && mHolds.front().from <= queue.taken()) {
        Hold &hold = mHolds.front();
        const bool lasts = hold.to == kNever;
        const std::uint64_t accepted = queue.accepted();
        std::uint64_t to = lasts ? accepted - std::min<std::uint64_t>(accepted, mKept) : hold.to;
        // What lies before a hole is no longer the sound that went just before, and the hole itself was left out.
        for (auto hole = queue.nextHole(); hole && hole->position <= (lasts ? accepted : hold.released);
             hole = queue.nextHole()) {
            to = std::max(to, hole->position);
            queue.passHole();
        }
        if (to > queue.taken())
            queue.discard(to - queue.taken());
        if (!lasts && queue.taken() > hold.to)
            mLeftOut += queue.taken() - hold.to;
        if (lasts)
            return false;
        mHolds.pop_front();
    }
    return true;
}

std::size_t RecordingWorker::ready() {
    FrameQueue &queue = *mInput.queue;
    if (!passHolds())
        return 0;
    const std::uint64_t accepted = queue.accepted(); // before the holes: what lies in front of these is noted then
    const auto hole = queue.nextHole();
    if (hole && hole->position <= queue.taken() && queue.taken() < mStopAt) {
        mSilence += hole->frames;
        mFilled += hole->frames;
        queue.passHole();
    }
    if (mSilence > 0)
        return mSilence;
    const std::uint64_t limit = std::min({accepted, mStopAt, hole ? std::max(hole->position, queue.taken()) : kNever,
                                          mHolds.empty() ? kNever : mHolds.front().from});
    return limit - std::min(limit, queue.taken());
}

std::size_t RecordingWorker::readyNow() {
    const std::lock_guard lock(mMutex);
    return ready();
}

bool RecordingWorker::waitForFrames() {
    const std::size_t wanted = mBatch.size() / static_cast<std::size_t>(mInput.queue->channels());
    std::unique_lock lock(mMutex);
    while (!mStopping) {
        // The first frames are told at once, then a batch is waited for, or what lies before a hold, or fills a hole.
        const std::size_t frames = ready();
        if (frames >= wanted
            || (frames > 0 && (!mStarted || mSilence > 0 || !mHolds.empty() || mInput.queue->nextHole())))
            return true;
        mWake.wait_for(lock, mInput.pollInterval);
    }
    return false;
}

Result<void> RecordingWorker::drain(AudioFileWriter &writer) {
    if (!mStarted) {
        mStarted = true;
        if (mEvents.started)
            mEvents.started();
    }
    const auto channels = static_cast<std::size_t>(mInput.queue->channels());
    std::size_t frames = std::min(readyNow(), mBatch.size() / channels);
    if (mSilence > 0) {
        mSilence -= frames;
        std::fill_n(mBatch.begin(), frames * channels, 0.0f);
    } else {
        frames = mInput.queue->pop(mBatch.data(), frames);
    }
    mWritten += frames;
    const std::span<const float> stereo = mMix.mix(std::span(mBatch.data(), frames * channels));
    if (mEvents.tap)
        mEvents.tap(stereo);
    const Result<void> written = writer.append(stereo);
    mBytes.store(writer.bytes(), std::memory_order_relaxed);
    const auto room = written ? freeBytes(mPath) : std::nullopt;
    return room && *room < mDiskReserve ? failures::reserveReached(mPath) : written;
}

} // namespace cantorel::media
