#include "editor/models/WaveGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace cantorel {
namespace {

using Levels = std::vector<std::int16_t>;

WaveGeometry wave(double width, std::int32_t seconds, const Levels &levels) {
    WaveGeometry geometry;
    geometry.setSize({width, 120});
    geometry.addAudioDuration(seconds);
    geometry.addAudioWaveData(
        QByteArray(reinterpret_cast<const char *>(levels.data()), static_cast<qsizetype>(2 * levels.size())));
    return geometry;
}

double height(const WaveGeometry &geometry, std::size_t column) {
    return 2 * geometry.halfHeight(geometry.sampleData().at(column));
}

TEST(WaveGeometry, TimesSpanTheWidthAndWhatIsLeftOfTheInsetIsTimeZero) {
    const WaveGeometry geometry = wave(210, 100, {});
    EXPECT_EQ(geometry.scaleOffset(), 0.5);
    EXPECT_EQ(geometry.getPointWithTime(50), QPointF(105, 0));
    EXPECT_EQ(geometry.transformTimeWithPoint({105, 7}), 50);
    EXPECT_EQ(geometry.transformTimeWithPoint({3, 0}), 0);
    EXPECT_EQ(geometry.getNewSelectedCutRectWithStartTime(10, 20), QRectF(25, 0, 20, 120));
    for (const WaveGeometry &without : {wave(210, 0, {}), wave(10.5, 100, {})}) {
        EXPECT_EQ(without.getPointWithTime(50).x(), 5);
        EXPECT_EQ(without.transformTimeWithPoint({105, 0}), 0);
    }
}

TEST(WaveGeometry, ABarStandsOnEachPointAndTheLoudestTakesTwoThirds) {
    Levels levels(1000, 100);
    for (std::size_t i = 500; i < 505; ++i)
        levels[i] = -1000;
    const WaveGeometry geometry = wave(210, 100, levels);
    ASSERT_EQ(geometry.sampleData().size(), 200u);
    EXPECT_EQ(geometry.sampleData()[0].x(), 6);
    EXPECT_EQ(geometry.sampleData()[199].x(), 205);
    EXPECT_NEAR(height(geometry, 100), 200 / 3.0, 1e-4);
    EXPECT_NEAR(height(geometry, 99), 20 / 3.0 + 6, 1e-4) << "below 7 points it is lifted by 6";
    EXPECT_EQ(wave(210, 100, Levels(201, 5)).sampleData().size(), 101u) << "two values a column end early";
    EXPECT_EQ(wave(210, 100, Levels(7, 5)).sampleData().size(), 7u);
    EXPECT_TRUE(wave(210, 100, {}).sampleData().empty());
    EXPECT_TRUE(wave(10, 100, levels).sampleData().empty()) << "no room, and no endless walk";
    EXPECT_EQ(height(wave(210, 100, Levels(300, 0)), 9), 6) << "silence is a thin band";
}

TEST(WaveGeometry, SumsWrapAroundAtSixteenBits) {
    const WaveGeometry geometry = wave(12, 1, {30000, 30000, 30000, 1000, 1000, 1000});
    ASSERT_EQ(geometry.sampleData().size(), 2u);
    EXPECT_NEAR(height(geometry, 0), 200 / 3.0, 1e-4) << "3 x 30000 is 24464 here";
    EXPECT_NEAR(height(geometry, 1), 1000.0 / (24464 / 3) * 200 / 3, 1e-3);
    const WaveGeometry least = wave(12, 1, {-32768, 16384});
    EXPECT_EQ(height(least, 0), 6) << "as a 16-bit value it stays below 0";
    EXPECT_NEAR(height(least, 1), 100 / 3.0, 1e-3);
}

TEST(WaveGeometry, ColumnsEqualThoseOfAPlainComputationAtEveryWidth) {
    std::mt19937 random(7);
    for (int turn = 0; turn < 40; ++turn) {
        Levels levels(random() % 20000);
        for (auto &level : levels)
            level = static_cast<std::int16_t>(random());
        WaveGeometry geometry = wave(900, 60, levels);
        const double width = 11 + random() % 1500;
        geometry.setSize({width, 120});
        const auto n = levels.size();
        const auto step = static_cast<std::size_t>(std::ceil(static_cast<float>(n) / static_cast<float>(width - 10)));
        std::vector<int> means;
        for (std::size_t i = 0; i < n; i += step) {
            int sum = 0;
            for (std::size_t j = i; j < std::min(n, i + step); ++j)
                sum += levels[j];
            const int wrapped = ((sum + 32768) % 65536 + 65536) % 65536 - 32768;
            means.push_back(static_cast<int>(static_cast<std::size_t>(std::abs(wrapped)) / step));
        }
        ASSERT_EQ(geometry.sampleData().size(), means.size());
        const int most = means.empty() ? 0 : *std::max_element(means.begin(), means.end());
        for (std::size_t i = 0; i < means.size(); ++i) {
            const double plain = means[i] * (200 / 3.0 / most);
            ASSERT_NEAR(height(geometry, i), plain < 7 ? plain + 6 : plain, 0.01) << turn << ", " << i;
        }
    }
}

TEST(WaveGeometry, AStretchIsSeenAtItsOwnTimesAndAllOfItIsAsItWasBefore) {
    std::mt19937 random(3);
    Levels levels(60'000); // 600 a second
    for (auto &level : levels)
        level = static_cast<std::int16_t>(static_cast<int>(random() % 4000) - 2000);
    const WaveGeometry whole = wave(210, 100, levels);
    WaveGeometry geometry = wave(210, 100, levels);
    geometry.setLevelsPerSecond(600);
    EXPECT_EQ(geometry.mostZoom(), 300);
    EXPECT_FALSE(geometry.setView(7, 1)) << "all is seen";
    for (int i = 0; i < 300; ++i) {
        const double seconds = geometry.viewStart() + random() % 100 / 100.0 * geometry.viewSeconds();
        const double x = geometry.getPointWithTime(seconds).x(), before = geometry.viewSeconds();
        geometry.zoomAbout(seconds, random() % 3 ? 1.4 : 0.5);
        ASSERT_GE(geometry.viewStart(), 0);
        ASSERT_LE(geometry.viewStart() + geometry.viewSeconds(), 100 + 1e-9);
        ASSERT_GE(geometry.viewSeconds(), 100 / 300.0 - 1e-9);
        const bool isAtEnd = geometry.viewStart() == 0 || geometry.sees(100 - 1e-9);
        if (!isAtEnd || geometry.viewSeconds() < before) {
            ASSERT_NEAR(geometry.getPointWithTime(seconds).x(), x, 1e-6) << "it stays below the pointer";
        }
        ASSERT_NEAR(geometry.transformTimeWithPoint(geometry.getPointWithTime(seconds)), seconds, 1e-6);
    }
    geometry.setView(20, 10); // 30 levels a point
    ASSERT_EQ(geometry.sampleData().size(), 200u);
    std::vector<double> means;
    for (std::size_t point = 0; point < 200; ++point) {
        double sum = 0;
        for (std::size_t i = 0; i < 30; ++i)
            sum += std::abs(levels[12'000 + 30 * point + i]);
        means.push_back(std::floor(sum / 30));
    }
    const double factor = height(geometry, 0) / means[0];
    EXPECT_GT(factor, 2 * 100 / 3.0 / 2000) << "the loudest fills its part of the height";
    for (std::size_t point = 0; point < 200; ++point)
        ASSERT_NEAR(height(geometry, point), std::min(means[point] * factor, 200 / 3.0), 1e-3) << point;
    geometry.setView(50, 0);
    EXPECT_EQ(geometry.sampleData(), whole.sampleData());
    EXPECT_EQ(geometry.getPointWithTime(33.3), whole.getPointWithTime(33.3));
}

} // namespace
} // namespace cantorel
