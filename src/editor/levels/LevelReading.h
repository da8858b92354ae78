#pragma once

#include "editor/levels/LevelSeries.h"
#include "platform/foundation/Result.h"
#include "platform/media/asset/Asset.h"

#include <QByteArray>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

namespace cantorel {

// Reduces the sound of an asset to its series of levels, on as many threads as help. Sound is cut into sections that
// are read in turn by whoever is free. Where what was read turns out to depend on all before it, one thread goes on
// alone from there.
//
// Of more than two channels only the first part of each 8192 frames is visited, sample by sample: as many samples as
// there are frames, each as a frame of its own. That is deliberate; the series has the same length for any number.
class LevelReading {
public:
    LevelReading(media::AssetPointer asset, QString folder) : mAsset(std::move(asset)), mFolder(std::move(folder)) {}

    // Returns when all is read, when it fails, or soon after a stop was asked for; the series is whole only in the
    // first case. Once only.
    foundation::Result<void> run(const std::stop_token &stop);

    // From 0 to 1. Any thread.
    double progress() const;
    // What is there of the series from its beginning on; valid as long as the series lives. Any thread.
    QByteArray preview() const;
    std::shared_ptr<LevelSeries> series() const;

private:
    class Worker;

    // The next section to be read, nothing when there is none left.
    std::optional<std::size_t> take();
    // A section that was taken is read, or given up.
    void settle(std::size_t section, bool isRead);
    // It depends on all before it. Waits until all that were taken are settled; answers whether it was the first.
    bool isFirstDependent(std::size_t section);
    void setDone(std::size_t section);
    void fail(const foundation::Failure &failure);

    const media::AssetPointer mAsset;
    const QString mFolder;
    std::int64_t mFrames = 0;
    std::size_t mSections = 0;
    std::atomic<std::int64_t> mRead{0}; // frames

    mutable std::mutex mMutex;
    std::condition_variable mSettled;
    std::shared_ptr<LevelSeries> mSeries;
    std::size_t mNext = 0;       // section
    std::size_t mTaken = 0;      // sections that are not settled
    std::vector<bool> mIsDone;   // by section
    std::size_t mContiguous = 0; // sections from the beginning on that are done
    // The first section known to depend on all before it: from there on one worker reads alone.
    std::atomic<std::size_t> mDependent{SIZE_MAX};
    std::optional<foundation::Failure> mFailure;
    std::atomic<bool> mHasFailed{false};
};

} // namespace cantorel
