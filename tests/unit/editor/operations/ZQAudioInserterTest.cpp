#include "editor/operations/ZQAudioInserter.h"

#include "editor/operations/CutRange.h"
#include "tests/support/MemoryAsset.h"

#include <gtest/gtest.h>

namespace cantorel {
namespace {

using media::AssetPointer;
using media::MediaTime;
using test::MemoryAsset;

constexpr int kRate = 100;
constexpr std::int64_t kOther = 100000; // the first number of the frames that are put in

// Runs of consecutive numbers as "first+count", silence as "-count".
std::string runsOf(const media::Asset &asset) {
    const std::vector<float> samples = test::framesOf(asset);
    std::string runs;
    for (std::size_t i = 0; i < samples.size() / 2;) {
        const std::int64_t first = test::stampOf(samples[2 * i]);
        std::size_t count = 1;
        while (i + count < samples.size() / 2
               && test::stampOf(samples[2 * (i + count)])
                      == (first < 0 ? -1 : first + static_cast<std::int64_t>(count)))
            ++count;
        runs += (first < 0 ? "-" : std::to_string(first) + "+") + std::to_string(count) + " ";
        i += count;
    }
    return runs;
}

// Of a sound of 60 s and another of 10.5 s.
TEST(ZQAudioInserterTest, EachOperationPutsEveryFrameInItsPlace) {
    const AssetPointer main = MemoryAsset::numbered(6000, {kRate, 2});
    const AssetPointer other = MemoryAsset::numbered(1050, {kRate, 2}, kOther);
    const media::MediaTimeRange all{{}, other->duration()};
    const struct {
        InsertType type;
        media::MediaTimeRange range;
        MediaTime start;
        const char *runs;
    } cases[] = {
        {InsertType::Silence, {{}, {1500, 1000}}, {20000, 1000}, "0+2000 -150 2000+4000 "},
        {InsertType::Silence, {{}, {2, 1}}, {60, 1}, "0+6000 -200 "},
        {InsertType::Append, {}, {5, 1}, "0+6000 100000+1050 "}, // whole and at the end, whatever is given
        {InsertType::Insert, {{1, 1}, {2, 1}}, {10, 1}, "0+1000 100100+200 1000+5000 "},
        {InsertType::Insert, all, {61, 1}, "0+6000 -100 100000+1050 "},
        {InsertType::Overwrite, all, {58, 1}, "0+5800 100000+1050 "},           // 2 s go, the rest is appended
        {InsertType::Overwrite, all, {10, 1}, "0+1000 100000+1050 2000+4000 "}, // whole seconds go
        {InsertType::Overwrite, {{}, {999, 1000}}, {10, 1}, "0+1000 100000+100 1000+5000 "}, // none of them
        {InsertType::Overwrite, all, {59500, 1000}, "0+5950 100000+1050 5950+50 "},
        {InsertType::Overwrite, all, {60, 1}, "0+6000 100000+1050 "},
    };
    for (const auto &[type, range, start, runs] : cases) {
        const auto made = ZQAudioInserter().insertAudioAsset(other, main, type, range, start);
        ASSERT_TRUE(made) << runs;
        EXPECT_EQ(runsOf(*made.value()), runs);
    }
}

TEST(ZQAudioInserterTest, AMixSoundsTogetherAndCanBeWorkedOnLikeAnyOther) {
    const AssetPointer main = MemoryAsset::level(300, 0.25F, {kRate, 1}),
                       other = MemoryAsset::level(200, 0.5F, {kRate, 2});
    ZQAudioInserter inserter;
    const auto mix = inserter.insertAudioAsset(other, main, InsertType::Mix, {}, {2, 1});
    ASSERT_TRUE(mix);
    EXPECT_EQ(mix.value()->duration(), (MediaTime{4, 1})); // longer than the main sound
    const auto next = inserter.insertAudioAsset({}, mix.value(), InsertType::Silence, {{}, {1, 1}}, {2500, 1000});
    ASSERT_TRUE(next);
    const auto last = inserter.insertAudioAsset(other, next.value(), InsertType::Overwrite, {{}, {1, 1}}, {});
    ASSERT_TRUE(last);
    std::vector<float> wanted;
    for (const auto &[frames, level] :
         {std::pair{100, 0.5F}, {100, 0.25F}, {50, 0.75F}, {100, 0.0F}, {50, 0.75F}, {100, 0.5F}})
        wanted.insert(wanted.end(), 2 * frames, level);
    EXPECT_EQ(test::framesOf(*last.value()), wanted);
}

TEST(ZQAudioInserterTest, WhatCannotBeDoneIsRefused) {
    const AssetPointer main = MemoryAsset::numbered(100, {kRate, 2}), none = MemoryAsset::numbered(0, {0, 0});
    const auto made = [&](InsertType type, AssetPointer other, MediaTime length, MediaTime at) {
        return ZQAudioInserter().insertAudioAsset(std::move(other), main, type, {{}, length}, at).ok();
    };
    EXPECT_FALSE(made(InsertType::Silence, {}, {0, 1}, {}));
    EXPECT_FALSE(made(InsertType::Silence, {}, {2147483647, 1}, {}));
    EXPECT_TRUE(made(InsertType::Silence, {}, {359999999, 1000}, {}));
    EXPECT_FALSE(made(InsertType::Overwrite, main, {1, 1}, {1001, 1000}));
    for (const InsertType type : {InsertType::Append, InsertType::Insert, InsertType::Mix, InsertType::Overwrite}) {
        EXPECT_FALSE(made(type, none, {1, 1}, {}));
        EXPECT_FALSE(made(type, {}, {1, 1}, {}));
    }
    EXPECT_FALSE(ZQAudioInserter().insertAudioAsset(main, none, InsertType::Append, {}, {}));
}

TEST(ZQAudioInserterTest, ResultsAreNamedByBothSounds) {
    ZQAudioInserter inserter;
    EXPECT_EQ(inserter.resultName("a.b.mp3"), "a.b + empty");
    inserter.insertType = InsertType::Mix;
    inserter.insertURL = QUrl::fromLocalFile("/x/c d.wav");
    EXPECT_EQ(inserter.resultName("a"), "a + c d.wav");
}

// Cut off to the millisecond, but a thousandth that has no exact form in binary is not one less.
TEST(CutRangeTest, MillisecondsAreThoseThatWereTyped) {
    for (int typed = 0; typed < 200000; ++typed)
        ASSERT_EQ(milliseconds(typed / 1000.0), typed);
    EXPECT_EQ(milliseconds(1.0019), 1001);
}

} // namespace
} // namespace cantorel
