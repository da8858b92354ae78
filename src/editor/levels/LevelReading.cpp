#include "editor/levels/LevelReading.h"

#include "editor/levels/GroupMeans.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>

namespace cantorel {

using foundation::Result;

namespace {

constexpr std::size_t kWalkedFrames = 8192; // of which only a part is visited where there are many channels
constexpr std::size_t kBlockFrames = kGroupFrames * 4096; // read at once
constexpr std::size_t kWideBlockFrames = kGroupFrames * kWalkedFrames;
constexpr std::size_t kSectionFrames = 16 * kWideBlockFrames; // about half a minute
constexpr unsigned kMostWorkers = 4;

} // namespace

// One thread's share.
class LevelReading::Worker {
public:
    Worker(LevelReading &reading, std::unique_ptr<media::SampleReader> reader)
        : mReading(reading),
          mReader(std::move(reader)),
          mChannels(mReader->format().channels),
          mBlockFrames(mChannels > 2 ? kWideBlockFrames : kBlockFrames),
          mBlock(mBlockFrames * static_cast<std::size_t>(mChannels)) {}

    // Reads sections until there are none left for it.
    void run(const std::stop_token &stop) {
        while (const auto section = mReading.take()) {
            seek(*section);
            const bool isRead = readSection(*section, stop, [&] { return *section > mReading.mDependent; });
            if (!isRead || !mReader->needsAllBefore())
                mReading.settle(*section, isRead);
            else if (mReading.isFirstDependent(*section) && reopen())
                readOn(*section, stop);
        }
    }
    // Reads all from there to the end in one go.
    void readOn(std::size_t section, const std::stop_token &stop) {
        mReading.mRead = static_cast<std::int64_t>(section * kSectionFrames);
        for (seek(section); section < mReading.mSections; ++section) {
            if (!readSection(section, stop, [] { return false; }))
                return;
            const std::scoped_lock lock(mReading.mMutex);
            mReading.setDone(section);
        }
    }

private:
    void seek(std::size_t section) { mReader->seek(static_cast<std::int64_t>(section * kSectionFrames)); }

    // What it has read has left its mark on this reader.
    bool reopen() {
        auto reader = mReading.mAsset->openSampleReader();
        if (!reader) {
            mReading.fail(reader.failure());
            return false;
        }
        mReader = std::move(reader).value();
        return true;
    }

    // False when it was not read to its end.
    template <class IsGivenUp>
    bool readSection(std::size_t section, const std::stop_token &stop, const IsGivenUp &isGivenUp) {
        const auto from = static_cast<std::int64_t>(section * kSectionFrames);
        auto left =
            static_cast<std::size_t>(std::min(mReading.mFrames - from, static_cast<std::int64_t>(kSectionFrames)));
        std::int16_t *levels = mReading.mSeries->values().data() + section * (kSectionFrames / kGroupFrames);
        while (left > 0) {
            if (stop.stop_requested() || mReading.mHasFailed || isGivenUp())
                return false;
            const std::size_t frames = std::min(left, mBlockFrames);
            const auto got = mReader->read(mBlock.data(), frames);
            if (!got) {
                mReading.fail(got.failure());
                return false;
            }
            // What is missing is silent.
            std::fill(mBlock.begin() + static_cast<std::ptrdiff_t>(got.value() * static_cast<std::size_t>(mChannels)),
                      mBlock.end(), std::int16_t(0));
            reduce(frames, levels);
            levels += frames / kGroupFrames;
            left -= frames;
            mReading.mRead += static_cast<std::int64_t>(frames);
        }
        return true;
    }

    void reduce(std::size_t frames, std::int16_t *levels) {
        if (mChannels > 2)
            for (std::size_t from = 0; from < frames; from += kWalkedFrames)
                std::copy_n(mBlock.begin() + static_cast<std::ptrdiff_t>(from * static_cast<std::size_t>(mChannels)),
                            std::min(kWalkedFrames, frames - from), mBlock.begin() + static_cast<std::ptrdiff_t>(from));
        groupMeans(mBlock.data(), mChannels == 2 ? 2 : 1, frames / kGroupFrames, levels);
    }

    LevelReading &mReading;
    std::unique_ptr<media::SampleReader> mReader;
    const int mChannels;
    const std::size_t mBlockFrames;
    std::vector<std::int16_t> mBlock;
};

Result<void> LevelReading::run(const std::stop_token &stop) {
    auto first = mAsset->openSampleReader();
    if (!first)
        return first.failure();
    {
        const std::scoped_lock lock(mMutex);
        mFrames = first.value()->frames();
        mSections = (static_cast<std::size_t>(mFrames) + kSectionFrames - 1) / kSectionFrames;
        mIsDone.assign(mSections, false);
        mSeries = LevelSeries::make(static_cast<std::size_t>(mFrames) / kGroupFrames, mFolder);
    }
    if (first.value()->needsAllBefore()) {
        Worker(*this, std::move(first).value()).readOn(0, stop);
        return mFailure ? Result<void>(*mFailure) : Result<void>();
    }
    const std::size_t workers =
        std::min<std::size_t>(std::clamp(std::thread::hardware_concurrency(), 1u, kMostWorkers), mSections);
    std::exception_ptr thrown;
    const auto work = [&](std::unique_ptr<media::SampleReader> reader) {
        try {
            Worker(*this, std::move(reader)).run(stop);
        } catch (...) {
            const std::scoped_lock lock(mMutex);
            thrown = std::current_exception();
            mHasFailed = true;
            mSettled.notify_all();
        }
    };
    {
        std::vector<std::jthread> others;
        for (std::size_t i = 1; i < workers; ++i)
            if (auto reader = mAsset->openSampleReader())
                others.emplace_back(work, std::move(reader).value());
        work(std::move(first).value());
    }
    if (thrown)
        std::rethrow_exception(thrown);
    return mFailure ? Result<void>(*mFailure) : Result<void>();
}

std::optional<std::size_t> LevelReading::take() {
    const std::scoped_lock lock(mMutex);
    if (mNext >= mSections || mHasFailed || mDependent != SIZE_MAX)
        return {};
    ++mTaken;
    return mNext++;
}

void LevelReading::setDone(std::size_t section) {
    mIsDone[section] = true;
    while (mContiguous < mSections && mIsDone[mContiguous])
        ++mContiguous;
}

void LevelReading::settle(std::size_t section, bool isRead) {
    const std::scoped_lock lock(mMutex);
    --mTaken;
    if (isRead && section < mDependent)
        setDone(section);
    mSettled.notify_all();
}

bool LevelReading::isFirstDependent(std::size_t section) {
    std::unique_lock lock(mMutex);
    mDependent = std::min<std::size_t>(mDependent, section);
    --mTaken;
    mSettled.notify_all();
    mSettled.wait(lock, [this] { return mTaken == 0 || mHasFailed; });
    if (mHasFailed || section != mDependent)
        return false;
    std::fill(mIsDone.begin() + static_cast<std::ptrdiff_t>(section), mIsDone.end(), false); // to be read again
    return true;
}

void LevelReading::fail(const foundation::Failure &failure) {
    const std::scoped_lock lock(mMutex);
    if (!mFailure)
        mFailure = failure;
    mHasFailed = true;
    mSettled.notify_all();
}

double LevelReading::progress() const {
    const std::scoped_lock lock(mMutex);
    return mFrames > 0 ? std::min(static_cast<double>(mRead) / static_cast<double>(mFrames), 1.0) : 0;
}

QByteArray LevelReading::preview() const {
    const std::scoped_lock lock(mMutex);
    return mSeries ? mSeries->bytes(mContiguous * (kSectionFrames / kGroupFrames)) : QByteArray();
}

std::shared_ptr<LevelSeries> LevelReading::series() const {
    const std::scoped_lock lock(mMutex);
    return mSeries;
}

} // namespace cantorel
