#pragma once

#include <algorithm>
#include <cstdint>

namespace cantorel::media {

// Says which pictures of a source are due when at most so many a second are wanted. Times in ns.
class PicturePace {
public:
    explicit PicturePace(int picturesPerSecond = 0)
        : mInterval(picturesPerSecond > 0 ? 1'000'000'000ULL / static_cast<std::uint64_t>(picturesPerSecond) : 0) {}

    // When the next picture may be handed over; one that comes a little early counts as in time.
    std::uint64_t due() const { return mDue - std::min(mDue, mInterval / 4); }
    bool isDue(std::uint64_t now) const { return now >= due(); }
    // A picture is handed over now. The pace is kept over uneven arrivals, and begins anew after a rest.
    void take(std::uint64_t now) { mDue = std::max(mDue, now - std::min(now, mInterval / 2)) + mInterval; }

private:
    std::uint64_t mInterval;
    std::uint64_t mDue = 0;
};

} // namespace cantorel::media
