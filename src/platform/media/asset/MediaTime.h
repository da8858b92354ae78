#pragma once

#include <cstdint>

namespace cantorel::media {

// A time or a length as a count of units of which `timescale` make a second. Sound counts in frames: its timescale is
// its rate. All arithmetic is in integers and holds for any length that a disk can.
struct MediaTime {
    std::int64_t value = 0;
    std::int32_t timescale = 1; // above 0

    // The same time in other units, rounded to the nearest, halves away from zero.
    constexpr MediaTime in(std::int32_t units) const {
        const __int128 scaled = static_cast<__int128>(value) * units;
        const __int128 half = (scaled < 0 ? -timescale : timescale) / 2;
        return {static_cast<std::int64_t>((scaled + half) / timescale), units};
    }
    constexpr double seconds() const { return static_cast<double>(value) / timescale; }
    constexpr std::int64_t wholeSeconds() const { return value / timescale; } // toward zero
};

constexpr bool operator==(MediaTime left, MediaTime right) {
    return static_cast<__int128>(left.value) * right.timescale == static_cast<__int128>(right.value) * left.timescale;
}
constexpr bool operator<(MediaTime left, MediaTime right) {
    return static_cast<__int128>(left.value) * right.timescale < static_cast<__int128>(right.value) * left.timescale;
}

// From start, for that long.
struct MediaTimeRange {
    MediaTime start;
    MediaTime duration;
};

// Far more frames than any disk holds, and far from where 64 bits end.
inline constexpr std::int64_t kMostFrames = std::int64_t{1} << 53;

// The frame that lies at the sum of both times, rounded once; from 0 to just above kMostFrames.
constexpr std::int64_t frameAt(int rate, MediaTime first, MediaTime second = {}) {
    const __int128 units = static_cast<__int128>(first.timescale) * second.timescale;
    const __int128 sum =
        static_cast<__int128>(first.value) * second.timescale + static_cast<__int128>(second.value) * first.timescale;
    if (sum <= 0)
        return 0;
    if (sum / units > kMostFrames / rate)
        return kMostFrames + 1;
    return static_cast<std::int64_t>((sum * rate + units / 2) / units);
}

} // namespace cantorel::media
