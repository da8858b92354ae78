#include "platform/media/composition/CompositionBuilder.h"
#include "tests/support/MemoryAsset.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace cantorel::media {
namespace {

using test::framesOf;
using test::MemoryAsset;

// The numbers of the frames, -1 for silence.
std::vector<std::int64_t> numbersOf(const Asset &asset) {
    std::vector<std::int64_t> numbers;
    const std::vector<float> samples = framesOf(asset);
    for (std::size_t i = 0; i < samples.size(); i += 2)
        numbers.push_back(test::stampOf(samples[i]));
    return numbers;
}

// A plain list of frames beside the composition, through random insertions, silences and removals.
TEST(CompositionTest, AnySequenceIsExactToTheFrameAtEveryPlace) {
    std::mt19937 random(1);
    const auto below = [&](std::int64_t limit) {
        return std::uniform_int_distribution<std::int64_t>(0, limit)(random);
    };
    for (int round = 0; round < 60; ++round) {
        CompositionBuilder builder;
        const auto track = builder.addTrack();
        std::vector<std::int64_t> model;
        for (int step = 0; step < 8; ++step) {
            const auto size = static_cast<std::int64_t>(model.size());
            const std::int64_t at = below(size + (step ? 3 : 0)), length = below(40);
            const auto padded = [&] { model.resize(static_cast<std::size_t>(std::max(size, at)), -1); };
            switch (step == 0 ? 0 : below(2)) {
            case 0: {
                const auto source = MemoryAsset::numbered(50, {1000, 2}, 100 * step);
                const std::int64_t from = below(60), taken = std::clamp<std::int64_t>(50 - from, 0, length);
                ASSERT_TRUE(builder.insertTimeRange({{from, 1000}, {length, 1000}}, source, {at, 1000}, track));
                if (taken > 0)
                    padded();
                std::vector<std::int64_t> inserted;
                for (std::int64_t i = 0; i < taken; ++i)
                    inserted.push_back(100 * step + from + i);
                model.insert(model.begin() + (taken ? at : 0), inserted.begin(), inserted.end());
                break;
            }
            case 1:
                ASSERT_TRUE(builder.insertEmptyTimeRange({{at, 1000}, {length, 1000}}));
                if (length > 0)
                    padded();
                model.insert(model.begin() + std::min<std::int64_t>(at, static_cast<std::int64_t>(model.size())),
                             static_cast<std::size_t>(length), -1);
                break;
            default:
                builder.removeTimeRange({{at, 1000}, {length, 1000}});
                model.erase(model.begin() + std::min(at, size), model.begin() + std::min(at + length, size));
            }
        }
        const auto composition = builder.build();
        ASSERT_EQ(composition->duration().value, static_cast<std::int64_t>(model.size()));
        ASSERT_EQ(numbersOf(*composition), model) << "round " << round;
        ASSERT_EQ(test::framesBackwards(*composition), framesOf(*composition)) << "round " << round;
    }
}

TEST(CompositionTest, TracksSoundTogetherAndWhatExceedsFullScaleIsLimitedAndCounted) {
    CompositionBuilder builder;
    const auto first = builder.addTrack(), second = builder.addTrack();
    ASSERT_TRUE(builder.insertTimeRange({{}, {4, 1000}}, MemoryAsset::level(4, 0.75F, {1000, 1}), {}, first));
    ASSERT_TRUE(builder.insertTimeRange({{}, {4, 1000}}, MemoryAsset::level(4, 0.5F), {2, 1000}, second));
    const auto composition = builder.build();
    EXPECT_EQ(composition->format(), (SoundFormat{1000, 2}));
    EXPECT_EQ(framesOf(*composition), (std::vector<float>{.75F, .75F, .75F, .75F, 1, 1, 1, 1, .5F, .5F, .5F, .5F}));
    // A mix is one track for the next one, which counts what was limited in it.
    CompositionBuilder next;
    ASSERT_TRUE(next.insertTimeRange({{}, {6, 1000}}, composition, {}, next.addTrack()));
    auto reader = next.build()->openReader({1000, 2});
    std::vector<float> samples(12);
    EXPECT_EQ(reader.value()->read(samples.data(), 6).value(), 6U);
    EXPECT_EQ(samples, framesOf(*composition));
    EXPECT_EQ(reader.value()->limited(), 4);
}

// A piece has as many frames of its source as its slot has, wherever rounding falls.
TEST(CompositionTest, RoundingDoesNotAddUp) {
    CompositionBuilder builder;
    const auto source = MemoryAsset::numbered(50000, {44100, 2});
    std::int64_t cursor = 0;
    for (int i = 0; i < 300; ++i, cursor += 4)
        ASSERT_TRUE(builder.insertTimeRange({{3 * i, 1000}, {3, 1000}}, source, {cursor, 1000}, builder.addTrack()));
    EXPECT_EQ(builder.duration(), (MediaTime{(1199 * 44100 + 500) / 1000, 44100}));
    const auto composition = builder.build();
    for (const auto &piece : composition->pieces()) {
        const auto i = static_cast<std::int64_t>(piece.track);
        EXPECT_EQ(piece.start, (4 * i * 44100 + 500) / 1000);
        EXPECT_EQ(piece.length, ((4 * i + 3) * 44100 + 500) / 1000 - piece.start);
        EXPECT_EQ(piece.sourceStart, (3 * i * 44100 + 500) / 1000);
    }
}

TEST(CompositionTest, NoLengthOverflows) {
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    CompositionBuilder builder;
    const auto track = builder.addTrack();
    ASSERT_TRUE(builder.insertTimeRange({{}, {3, 1}}, MemoryAsset::numbered(192000, {192000, 2}), {}, track));
    EXPECT_FALSE(builder.insertEmptyTimeRange({{kMost, 1}, {kMost, 1}}));
    EXPECT_FALSE(builder.insertEmptyTimeRange({{1, 1}, {kMost, 1}}));
    EXPECT_FALSE(builder.insertTimeRange({{}, {1, 1}}, MemoryAsset::numbered(9), {kMost, 2}, track));
    builder.removeTimeRange({{-kMost, 1}, {kMost, 1000}});
    EXPECT_EQ(builder.duration().value, 192000);
    ASSERT_TRUE(builder.insertEmptyTimeRange({{1, 2}, {36000, 1}})); // ten hours in the middle
    const auto composition = builder.build();
    EXPECT_EQ(composition->duration().value, 192000LL * 36001);
    auto reader = composition->openReader(composition->format());
    std::vector<float> frame(2);
    reader.value()->seek(192000LL * 36001 - 1);
    ASSERT_EQ(reader.value()->read(frame.data(), 5).value(), 1U);
    EXPECT_EQ(test::stampOf(frame[0]), 191999);
    builder.removeTimeRange({{1, 2}, {kMost, 1}});
    EXPECT_EQ(builder.duration().value, 96000);
}

TEST(CompositionTest, ASourceThatEndsEarlyIsAFailureAndNotSilence) {
    const auto source = MemoryAsset::numbered(50);
    source->promisedFrames = 60;
    CompositionBuilder builder;
    ASSERT_TRUE(builder.insertTimeRange({{}, {60, 1000}}, source, {}, builder.addTrack()));
    auto reader = builder.build()->openReader({1000, 2});
    std::vector<float> samples(200);
    EXPECT_FALSE(reader.value()->read(samples.data(), 60));
    EXPECT_EQ(reader.value()->read(samples.data(), 50).value(), 50U); // what is there can still be read
}

} // namespace
} // namespace cantorel::media
