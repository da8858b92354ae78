#pragma once

#include "editor/models/CutList.h"

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <vector>

namespace cantorel {

// Where a sound is silent, by its series of levels; that is reduced once, so that thresholds can be tried out. Main
// thread.
class SilenceFinder {
public:
    // levels: signed 16-bit values in the machine's order, spread over that many seconds. Not kept.
    SilenceFinder(const QByteArray &levels, double seconds);

    struct Found {
        QList<CutList::Range> sound; // between silences; empty where there is no silence, or nothing else
        double longest = 0;          // of all that is quiet, in seconds
        double loudest = 0;          // of the whole sound, in decibels of full scale
        bool hasSilence = false;
    };
    // Quiet is what stays below that many decibels of full scale; quiet for that many seconds is a silence. What is
    // found ends at the last whole second, as selections do.
    Found find(double decibels, double leastSeconds) const;

    static constexpr double kStep = 0.01; // the least that is told apart, about, in seconds

private:
    std::vector<std::uint16_t> mPeaks; // one a step
    double mStep = kStep, mEnd = 0;    // in seconds
};

} // namespace cantorel
