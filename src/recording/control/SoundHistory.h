#pragma once

#include <cstddef>
#include <vector>

namespace cantorel {

// The last minute of sound as a picture shows it: one column for each level that the recorder tells, with what happened
// at it. Main thread.
class SoundHistory {
public:
    static constexpr std::size_t kColumns = 600; // a minute of levels every 0.1 s

    enum class Mark : unsigned char { None, Start, Split, LostFrames, DeviceLost };
    struct Column {
        float level = 0; // 0 to 1, as the meter shows it
        bool isRecorded = false;
        Mark mark = Mark::None;
    };

    // A new column at the end; the oldest goes.
    void add(float level, bool isRecorded);
    // Marks the newest column; the graver mark stays.
    void mark(Mark mark);
    void clear();

    std::size_t size() const { return mCount; }
    // All that were added since the history began, those that are gone too.
    std::size_t total() const { return mTotal; }
    // 0 is the oldest.
    const Column &column(std::size_t index) const;

private:
    std::vector<Column> mRing = std::vector<Column>(kColumns);
    std::size_t mNext = 0, mCount = 0, mTotal = 0;
};

// The height at which a level is shown, 0 to 1: -60 dB and below is 0, full scale is 1. level: a linear amplitude times
// 20, as the recorder tells it; what is not a number is 0.
float shownLevel(float level);

} // namespace cantorel
