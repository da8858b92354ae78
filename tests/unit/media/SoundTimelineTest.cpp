#include "platform/media/movie/SoundTimeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>

namespace cantorel::media {
namespace {

constexpr int kRate = 1000; // so that a frame is a millisecond
constexpr std::uint64_t kBegin = 5'000'000'000;
constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

std::uint64_t at(std::int64_t milliseconds) { return kBegin + static_cast<std::uint64_t>(milliseconds * 1'000'000); }

// A device whose frames carry their number, from 1 on.
struct Device {
    explicit Device(int channels = 1, int rate = kRate)
        : queue(std::make_shared<FrameQueue>(channels, 8192)), rate(rate) {}
    // So many frames, the last of which ends at that moment.
    void bring(int frames, std::int64_t until) {
        const auto channels = static_cast<std::size_t>(queue->channels());
        std::vector<float> samples;
        for (int i = 0; i < frames; ++i)
            samples.insert(samples.end(), channels, static_cast<float>(++sent) / 8192);
        queue->push(samples.data(), static_cast<std::size_t>(frames));
        moment = CaptureStream::Moment{queue->accepted(), at(until)};
    }
    SoundInput input(std::vector<int> sources = {}) {
        if (sources.empty())
            sources = {queue->channels()};
        return {queue, rate, sources, [this] { return moment; }};
    }
    std::shared_ptr<FrameQueue> queue;
    int rate;
    int sent = 0;
    std::optional<CaptureStream::Moment> moment;
};

// The numbers of the frames that can be taken; 0 for silence.
std::vector<int> taken(SoundTimeline &timeline, std::int64_t now, std::int64_t until = kAll) {
    std::vector<int> numbers;
    for (auto frames = timeline.take(until, at(now)); !frames.empty(); frames = timeline.take(until, at(now)))
        for (std::size_t i = 0; i < frames.size(); i += static_cast<std::size_t>(timeline.channels()))
            numbers.push_back(static_cast<int>(std::lround(frames[i] * 8192)));
    return numbers;
}

std::vector<int> numbers(int first, int count) {
    std::vector<int> all(static_cast<std::size_t>(count));
    std::iota(all.begin(), all.end(), first);
    return all;
}

std::vector<int> operator+(std::vector<int> left, const std::vector<int> &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST(SoundTimeline, BeginsWithTheFirstFrameWhereThatWasHeard) {
    Device device;
    SoundTimeline timeline({device.input()}, kBegin);
    EXPECT_TRUE(taken(timeline, 100).empty());
    device.bring(50, 120);
    EXPECT_EQ(taken(timeline, 120), numbers(1, 50));
    EXPECT_EQ(timeline.position(), 120);
    EXPECT_EQ(timeline.placeOf(at(130)), 130);
}

TEST(SoundTimeline, SilenceStandsInForWhatIsLateAndSoundGoesOnWhereItBelongs) {
    Device device;
    SoundTimeline timeline({device.input()}, kBegin);
    EXPECT_EQ(taken(timeline, 700), std::vector<int>(200, 0));
    device.bring(100, 800); // from 700 on
    EXPECT_EQ(taken(timeline, 800), std::vector<int>(500, 0) + numbers(1, 100));
    EXPECT_EQ(taken(timeline, 1600), std::vector<int>(300, 0)) << "it is gone";
    device.queue->noteHole(1000);
    device.bring(100, 1900);
    EXPECT_EQ(taken(timeline, 1900), std::vector<int>(700, 0) + numbers(101, 100));
}

TEST(SoundTimeline, AHoleIsFilledWhereItWasAndADeviceMadeAnewStandsWhereItIsHeard) {
    Device device;
    SoundTimeline timeline({device.input()}, kBegin);
    device.bring(10, 10);
    EXPECT_EQ(taken(timeline, 10, 5), numbers(1, 5));
    device.queue->noteHole(30);
    device.bring(10, 50);
    EXPECT_EQ(taken(timeline, 50), numbers(6, 5) + std::vector<int>(30, 0) + numbers(11, 10));
    device.bring(10, 260); // 200 are missing without a word
    EXPECT_EQ(taken(timeline, 260), std::vector<int>(200, 0) + numbers(21, 10));
}

// A clock that runs by another speed moves the pictures, not the sound.
TEST(SoundTimeline, TheSoundsClockIsThatOfAll) {
    Device device;
    SoundTimeline timeline({device.input()}, kBegin);
    std::int64_t here = 0;
    for (int i = 0; i < 100; ++i) {
        here += 101; // it is one in a hundred slow
        device.bring(100, here);
        EXPECT_EQ(taken(timeline, here).size(), i == 0 ? 100u : 100u);
    }
    EXPECT_EQ(timeline.placeOf(at(here)), timeline.position());
}

TEST(SoundTimeline, OthersAreMixedInWhereTheyWereHeardAtTheirOwnRate) {
    Device first(2), other(1, 2 * kRate);
    SoundTimeline timeline({first.input(), other.input()}, kBegin);
    EXPECT_EQ(timeline.channels(), 2);
    first.bring(400, 400);
    other.bring(400, 300); // from 100 on, half of its frames are heard
    const auto mixed = taken(timeline, 460);
    ASSERT_EQ(mixed.size(), 400u);
    EXPECT_EQ(mixed[50], 51);
    EXPECT_EQ(mixed[150], 151 + 101);
    EXPECT_EQ(mixed[250], 251 + 301);
    EXPECT_EQ(mixed[350], 351);
    first.sent = other.sent = 8000; // as loud as can be
    first.bring(190, 590);
    other.bring(380, 590);
    const auto loud = taken(timeline, 650);
    ASSERT_FALSE(loud.empty());
    EXPECT_EQ(*std::max_element(loud.begin(), loud.end()), 8192);
}

TEST(SoundTimeline, OnlyWhatAFileCanTellKeepsItsChannels) {
    for (const auto &[channels, sources, kept] :
         {std::tuple(1, std::vector{1}, 1), {2, {2}, 2}, {4, {4}, 4}, {3, {3}, 2}, {6, {6}, 2}, {4, {2, 2}, 2}}) {
        Device device(channels);
        EXPECT_EQ(SoundTimeline({device.input(sources)}, kBegin).channels(), kept) << channels;
    }
}

TEST(SoundTimeline, WhatIsSkippedIsNotHeard) {
    Device device;
    SoundTimeline timeline({device.input()}, kBegin);
    device.bring(100, 100);
    EXPECT_EQ(taken(timeline, 100, 40), numbers(1, 40));
    timeline.skipTo(90);
    device.bring(100, 200);
    EXPECT_EQ(taken(timeline, 200), numbers(91, 110));
}

} // namespace
} // namespace cantorel::media
