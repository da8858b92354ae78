#pragma once

namespace cantorel {

// What a level meter shows between two levels: rises at once, falls slowly, and holds the peak for a moment. All
// heights are 0 to 1. Main thread.
class LevelDisplay {
public:
    static constexpr int kSteps = 20;

    // A new level, every 0.1 s.
    void setLevel(float height);
    // Time goes on by so many seconds.
    void advance(float seconds);

    float average() const { return mShown; }
    float peak() const { return mPeak; }
    // How many of the steps are lit, and which one is the peak's; 0 when there is none.
    int litSteps() const;
    int peakStep() const;
    // Nothing moves any more until the next level.
    bool isAtRest() const { return mShown <= mLevel && mPeak <= mShown; }

private:
    float mLevel = 0, mShown = 0, mPeak = 0, mPeakAge = 0;
};

} // namespace cantorel
