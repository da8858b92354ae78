#include "editor/models/WaveGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <utility>

namespace cantorel {

bool WaveGeometry::setSize(QSizeF size) {
    if (std::exchange(mSize, size) == size)
        return false;
    parseSamples();
    return true;
}

void WaveGeometry::addAudioWaveData(const QByteArray &levels, double part) {
    mAudioWavaData = levels;
    mPart = part > 0 ? part : 1;
    mLoudest.clear();
    parseSamples();
}

double WaveGeometry::scaleOffset() const { return waveWidth() < 1 ? 0 : mAudioDuration / waveWidth() / mZoom; }

double WaveGeometry::levelsPerSecond() const {
    return mLevelsPerSecond > 0 ? mLevelsPerSecond
           : mAudioDuration > 0 ? static_cast<double>(count()) / mPart / mAudioDuration
                                : 0;
}

double WaveGeometry::mostZoom() const {
    return waveWidth() < 1 ? 1 : std::max(1.0, levelsPerSecond() * mAudioDuration / waveWidth());
}

bool WaveGeometry::setView(double start, double zoom) {
    zoom = std::clamp(zoom, 1.0, mostZoom());
    start = std::clamp(start, 0.0, mAudioDuration - mAudioDuration / zoom);
    if (start == mViewStart && zoom == mZoom)
        return false;
    mViewStart = start;
    mZoom = zoom;
    parseSamples();
    return true;
}

bool WaveGeometry::zoomAbout(double seconds, double factor) {
    const double zoom = std::clamp(mZoom * factor, 1.0, mostZoom());
    return setView(seconds - (seconds - mViewStart) * mZoom / zoom, zoom);
}

QPointF WaveGeometry::getPointWithTime(double seconds) const {
    const double scale = scaleOffset();
    return {(scale > 0 ? (seconds - mViewStart) / scale : 0) + kInset, 0};
}

double WaveGeometry::transformTimeWithPoint(QPointF point) const {
    return mViewStart + scaleOffset() * (std::max(point.x(), kInset) - kInset);
}

QRectF WaveGeometry::getNewSelectedCutRectWithStartTime(double startTime, double EndTime) const {
    const double left = getPointWithTime(startTime).x();
    return {left, 0, getPointWithTime(EndTime).x() - left, mSize.height()};
}

void WaveGeometry::parseSamples() {
    mAdjustAudioData.clear();
    mSampleData.clear();
    if (waveWidth() < 1) // Once there is room, this is done.
        return;
    if (mZoom > 1)
        return parseView();
    const std::int64_t count = this->count();
    // Single precision is deliberate: of a long series it may leave a column more than there are points.
    const auto whole = static_cast<float>(static_cast<double>(count) / mPart);
    const auto step = static_cast<std::int64_t>(std::ceil(whole / static_cast<float>(waveWidth())));
    int loudest = 0;
    for (std::int64_t first = 0; first < count; first += step) {
        std::uint16_t sum = 0; // It wraps around deliberately: loud passages look as they always have.
        const std::int64_t end = std::min(first + step, count);
        for (std::int64_t i = first; i < end; ++i) {
            std::uint16_t level = 0;
            std::memcpy(&level, mAudioWavaData.constData() + 2 * i, sizeof level);
            sum = static_cast<std::uint16_t>(sum + level);
        }
        const auto mean = static_cast<int>(std::abs(static_cast<int>(static_cast<std::int16_t>(sum))) / step);
        mAdjustAudioData.push_back(static_cast<std::int16_t>(mean));
        loudest = std::max(loudest, mean);
    }
    const auto factor = static_cast<float>(2 * waveHeight() / 3 / loudest); // The loudest takes two thirds.
    mSampleData.reserve(mAdjustAudioData.size());
    for (const std::int16_t level : mAdjustAudioData)
        addBar(level, loudest > 0 ? factor : -1);
}

// Below a factor of 0 there is no loudest.
void WaveGeometry::addBar(int level, double factor) {
    float height = factor < 0 ? -1 : static_cast<float>(level) * static_cast<float>(factor);
    if (static_cast<int>(height) < 7) // Silence shows as a thin band.
        height = height < 0 ? 6.0F : height + 6;
    mSampleData.emplace_back(kInset + 1 + static_cast<double>(mSampleData.size()), waveCenterY() - height / 2);
}

// Each bar is the mean of the levels of its own time, without a wrap.
void WaveGeometry::parseView() {
    const double perPoint = scaleOffset() * levelsPerSecond(), begin = mViewStart * levelsPerSecond();
    const double loudest = loudestMean(perPoint);
    const double factor = loudest > 0 ? 2 * waveHeight() / 3 / loudest : -1;
    const auto *levels = reinterpret_cast<const std::int16_t *>(mAudioWavaData.constData());
    const auto points = static_cast<std::int64_t>(waveWidth());
    for (std::int64_t point = 0; point < points; ++point) {
        const auto from = static_cast<std::int64_t>(begin + static_cast<double>(point) * perPoint);
        const auto to = std::min(
            std::max(from + 1, static_cast<std::int64_t>(begin + static_cast<double>(point + 1) * perPoint)), count());
        if (from >= to)
            break;
        std::int64_t sum = 0;
        for (std::int64_t i = from; i < to; ++i)
            sum += std::abs(static_cast<int>(levels[i]));
        const auto mean = static_cast<int>(sum / (to - from));
        mAdjustAudioData.push_back(static_cast<std::int16_t>(std::min<int>(mean, INT16_MAX)));
        addBar(std::min(mean, static_cast<int>(loudest)), factor);
    }
}

// Bars keep their height while the view moves, and grow smoothly while it widens.
double WaveGeometry::loudestMean(double levels) {
    constexpr std::size_t kStep = 8;
    if (mLoudest.empty()) {
        const auto *all = reinterpret_cast<const std::int16_t *>(mAudioWavaData.constData());
        std::vector<std::uint32_t> means;
        means.reserve(static_cast<std::size_t>(count()) / kStep);
        std::uint32_t most = 0;
        for (std::int64_t i = 0; i < count();) {
            std::uint32_t sum = 0;
            const std::int64_t from = i, end = std::min<std::int64_t>(i + kStep, count());
            for (; i < end; ++i) {
                const auto level = static_cast<std::uint32_t>(std::abs(static_cast<int>(all[i])));
                most = std::max(most, level);
                sum += level;
            }
            if (i - from == kStep)
                means.push_back(sum / kStep);
        }
        mLoudest.push_back(most);
        while (!means.empty()) {
            mLoudest.push_back(*std::max_element(means.begin(), means.end()));
            const std::size_t next = means.size() / kStep;
            for (std::size_t i = 0; i < next; ++i)
                means[i] = std::accumulate(means.begin() + static_cast<std::ptrdiff_t>(kStep * i),
                                           means.begin() + static_cast<std::ptrdiff_t>(kStep * (i + 1)), 0U)
                           / kStep;
            means.resize(next);
        }
    }
    const double place = std::max(0.0, std::log2(std::max(levels, 1.0)) / 3); // of 8
    const auto below = std::min(static_cast<std::size_t>(place), mLoudest.size() - 1);
    const auto above = std::min(below + 1, mLoudest.size() - 1);
    return std::lerp(mLoudest[below], mLoudest[above], std::min(1.0, place - static_cast<double>(below)));
}

} // namespace cantorel
