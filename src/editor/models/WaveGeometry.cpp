#include "editor/models/WaveGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
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
    parseSamples();
}

double WaveGeometry::scaleOffset() const { return waveWidth() < 1 ? 0 : mAudioDuration / waveWidth(); }

QPointF WaveGeometry::getPointWithTime(double seconds) const {
    const double scale = scaleOffset();
    return {(scale > 0 ? seconds / scale : 0) + kInset, 0};
}

double WaveGeometry::transformTimeWithPoint(QPointF point) const {
    return scaleOffset() * (std::max(point.x(), kInset) - kInset);
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
    const std::int64_t count = mAudioWavaData.size() / 2;
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
    for (const std::int16_t level : mAdjustAudioData) {
        float height = loudest > 0 ? static_cast<float>(level) * factor : -1;
        if (static_cast<int>(height) < 7) // Silence shows as a thin band.
            height = height < 0 ? 6.0F : height + 6;
        mSampleData.emplace_back(kInset + 1 + static_cast<double>(mSampleData.size()), waveCenterY() - height / 2);
    }
}

} // namespace cantorel
