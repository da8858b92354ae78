#include "editor/models/SilenceFinder.h"

#include <gtest/gtest.h>

#include <vector>

namespace cantorel {
namespace {

using Times = std::vector<double>;

// 1000 values a second; one second of 100 for each 's', of 10000 for each 'L', of nothing for each '.'; a tenth of that
// for each in brackets.
QByteArray series(const char *picture) {
    QByteArray bytes;
    int width = 1000;
    for (; *picture; ++picture) {
        width = *picture == '(' ? 100 : *picture == ')' ? 1000 : width;
        const std::int16_t level = *picture == 's' ? 100 : *picture == 'L' ? -10000 : 0;
        for (int i = 0; i < width && *picture != '(' && *picture != ')'; ++i)
            bytes.append(reinterpret_cast<const char *>(&level), sizeof level);
    }
    return bytes;
}

TEST(SilenceFinder, WhatLiesBetweenSilencesOfThatLengthIsFound) {
    const struct {
        const char *picture;
        double decibels, least;
        Times expected;
        double longest;
    } cases[] = {
        {"LL..LLL", -40, 2, {0, 2, 4, 7}, 2},
        {"LL..LLL", -40, 2.01, {}, 2},
        {"..LL...L", -40, 1, {2, 4, 7, 8}, 3},
        {"LL..", -40, 1, {0, 2}, 2},
        {"(....)LLL..", -40, 0.5, {0, 3.4}, 2}, // what is short in front is no silence
        {"LssL", -40, 1, {0, 1, 3, 4}, 2},      // 100 is some 50 dB below full scale
        {"LssL", -60, 1, {}, 0},
        {"sLs", -5, 1, {}, 3}, // nothing but silence
        {"L(.......)L(.......)L(......)", -40, 1, {}, 0.7},
        {"L..L(.L)", -40, 1, {0, 1, 3, 4}, 2}, // up to the last whole second
        {"L...(L)", -40, 1, {0, 1}, 3},
        {"", -40, 1, {}, 0},
    };
    for (const auto &[picture, decibels, least, expected, longest] : cases) {
        const QByteArray levels = series(picture);
        const auto found = SilenceFinder(levels, static_cast<double>(levels.size()) / 2000).find(decibels, least);
        Times times;
        for (const auto &range : found.sound)
            times.insert(times.end(), {range.start, range.end});
        EXPECT_EQ(times, expected) << picture;
        EXPECT_NEAR(found.longest, longest, 1e-9) << picture;
        EXPECT_EQ(found.hasSilence, longest >= least) << picture;
        if (levels.contains(series("L"))) {
            EXPECT_NEAR(found.loudest, -10.31, 0.01) << picture;
        }
    }
}

} // namespace
} // namespace cantorel
