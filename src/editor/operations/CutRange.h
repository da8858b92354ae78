#pragma once

#include "platform/media/asset/MediaTime.h"

namespace cantorel {

// A stretch of the sound, in seconds.
struct CutRange {
    double start = 0;
    double end = 0;
};

// Milliseconds as the editor counts them: cut off, but for what a fraction in binary falls short.
inline std::int64_t milliseconds(double seconds) { return static_cast<std::int64_t>(seconds * 1000 + 1e-6); }

inline media::MediaTimeRange timeRange(const CutRange &range) {
    return {{milliseconds(range.start), 1000}, {milliseconds(range.end) - milliseconds(range.start), 1000}};
}

} // namespace cantorel
