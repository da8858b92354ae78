#include "editor/models/SilenceFinder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace cantorel {

namespace {

constexpr double kFullScale = 32768;
constexpr double kSlack = 1e-9; // Sums of steps are not exact.

double toMilliseconds(double seconds) { return std::round(seconds * 1000) / 1000; }

} // namespace

SilenceFinder::SilenceFinder(const QByteArray &levels, double seconds) : mEnd(std::floor(seconds)) {
    const qsizetype count = levels.size() / 2;
    if (count == 0 || seconds <= 0)
        return;
    const auto width = std::max<qsizetype>(1, std::llround(kStep * static_cast<double>(count) / seconds));
    mStep = seconds * static_cast<double>(width) / static_cast<double>(count);
    mPeaks.reserve(static_cast<std::size_t>(count / width + 1));
    for (qsizetype first = 0; first < count; first += width) {
        int peak = 0;
        for (qsizetype i = first; i < std::min(first + width, count); ++i) {
            std::int16_t level = 0;
            std::memcpy(&level, levels.constData() + 2 * i, sizeof level);
            peak = std::max(peak, std::abs(static_cast<int>(level)));
        }
        mPeaks.push_back(static_cast<std::uint16_t>(peak));
    }
}

SilenceFinder::Found SilenceFinder::find(double decibels, double leastSeconds) const {
    Found found;
    const double threshold = kFullScale * std::pow(10, decibels / 20);
    std::size_t soundStart = 0; // of what goes on since the last silence
    const auto addSound = [&](std::size_t end) {
        const double from = toMilliseconds(static_cast<double>(soundStart) * mStep);
        const double to = std::min(toMilliseconds(static_cast<double>(end) * mStep), mEnd);
        if (to - from >= CutList::kLeastTime)
            found.sound.append({from, to});
    };
    int loudest = 1;
    std::size_t quietStart = 0;
    for (std::size_t i = 0; i <= mPeaks.size(); ++i) {
        if (i < mPeaks.size()) {
            loudest = std::max<int>(loudest, mPeaks[i]);
            if (mPeaks[i] < threshold)
                continue;
        }
        const double quiet = static_cast<double>(i - quietStart) * mStep;
        found.longest = std::max(found.longest, quiet);
        if (i > quietStart && quiet >= leastSeconds - kSlack) {
            found.hasSilence = true;
            addSound(quietStart);
            soundStart = i;
        }
        quietStart = i + 1;
    }
    if (found.hasSilence)
        addSound(mPeaks.size());
    found.loudest = 20 * std::log10(loudest / kFullScale);
    return found;
}

} // namespace cantorel
