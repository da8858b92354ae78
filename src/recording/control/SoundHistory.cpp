#include "recording/control/SoundHistory.h"

#include <algorithm>
#include <cmath>

namespace cantorel {

void SoundHistory::add(float level, bool isRecorded) {
    mRing[mNext] = {level, isRecorded, Mark::None};
    mNext = (mNext + 1) % kColumns;
    mCount = std::min(mCount + 1, kColumns);
    ++mTotal;
}

void SoundHistory::mark(Mark mark) {
    if (mCount == 0)
        add(0, false);
    Column &newest = mRing[(mNext + kColumns - 1) % kColumns];
    newest.mark = std::max(newest.mark, mark);
}

void SoundHistory::clear() { mNext = mCount = mTotal = 0; }

const SoundHistory::Column &SoundHistory::column(std::size_t index) const {
    return mRing[(mNext + kColumns - mCount + index) % kColumns];
}

float shownLevel(float level) {
    constexpr float kFullScale = 20, kSpan = 60; // dB
    if (!(level > 0))
        return 0;
    return std::clamp((20 * std::log10(level / kFullScale) + kSpan) / kSpan, 0.0F, 1.0F);
}

} // namespace cantorel
