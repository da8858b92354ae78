#include "recording/control/LevelDisplay.h"

#include <algorithm>
#include <cmath>

namespace cantorel {

namespace {

constexpr float kFall = 0.9F;     // of the whole height a second
constexpr float kPeakHold = 1.2F; // seconds
constexpr float kPeakFall = 0.6F; // of the whole height a second

int stepsOf(float height) { return static_cast<int>(std::ceil(height * LevelDisplay::kSteps - 1e-4F)); }

} // namespace

void LevelDisplay::setLevel(float height) {
    mLevel = std::clamp(height, 0.0F, 1.0F);
    mShown = std::max(mShown, mLevel);
    if (mLevel >= mPeak) {
        mPeak = mLevel;
        mPeakAge = 0;
    }
}

void LevelDisplay::advance(float seconds) {
    mShown = std::max(mLevel, mShown - kFall * seconds);
    mPeakAge += seconds;
    if (mPeakAge > kPeakHold)
        mPeak = std::max(mShown, mPeak - kPeakFall * std::min(seconds, mPeakAge - kPeakHold));
}

int LevelDisplay::litSteps() const { return std::max(0, stepsOf(mShown)); }

int LevelDisplay::peakStep() const { return std::max(0, stepsOf(mPeak)); }

} // namespace cantorel
