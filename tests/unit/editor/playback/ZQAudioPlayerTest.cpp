#include "editor/playback/ZQAudioPlayer.h"

#include "platform/media/asset/OpenAsset.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <gtest/gtest.h>

namespace cantorel {
namespace {

constexpr std::int64_t kFrames = 96000;

// What is heard of a stamped sound of two seconds, and what the player tells meanwhile.
struct ZQAudioPlayerTest : testing::Test, QObject, AudioPlayerDelegate {
    void SetUp() override {
        world.backend->setTap("builtin_output", [this](std::span<const float> samples, int, std::int64_t) {
            for (std::size_t i = 0; i < samples.size(); i += 2) {
                if (samples[i] != 0)
                    heard.push_back(test::stampOf(samples[i]));
            }
        });
        player.delegate = this;
        prepare(kFrames);
        ASSERT_TRUE(player.isPrepared());
        EXPECT_EQ(player.duration(), 2);
    }
    void prepare(std::size_t frames) {
        const QString path = QDir::homePath() + "/stamped.wav";
        ASSERT_TRUE(test::writeWav(path, test::stamped(frames)));
        auto asset = media::openAsset(QUrl::fromLocalFile(path));
        ASSERT_TRUE(asset);
        bool isReady = false;
        player.prepareForPlayWithAsset(asset.value(), [&] { isReady = true; });
        EXPECT_FALSE(isReady);
        EXPECT_TRUE(test::eventually([&] { return isReady; }));
    }
    bool runUntil(const std::function<bool()> &condition) {
        return test::eventually([&] {
            world.advance(10);
            return condition();
        });
    }
    void AudioPlayerDelegate_UpdateCurrentPlayingTime(double seconds) override {
        told.push_back(seconds);
        if (onTold)
            onTold(seconds);
    }

    test::EmbeddedWorld world;
    ZQAudioPlayer player{*world.clock};
    std::vector<std::int64_t> heard;
    std::vector<double> told;
    std::function<void(double)> onTold;
};

TEST_F(ZQAudioPlayerTest, ASeekGoesOnWithExactlyThatFrame) {
    EXPECT_TRUE(player.Play_());
    player.play();
    ASSERT_TRUE(runUntil([&] { return heard.size() > 2000; }));
    for (const double seconds : {1.0, 0.25, 1.75003}) {
        const std::size_t before = heard.size();
        player.setCurrentPlayTime(seconds);
        const auto wanted = static_cast<std::int64_t>(48000 * seconds);
        EXPECT_EQ(player.currentMediaTime().value, wanted) << "though nothing of it was heard";
        EXPECT_EQ(told.back(), static_cast<float>(wanted / 48000.0));
        ASSERT_TRUE(runUntil([&] { return heard.size() > before + 5000; }));
        EXPECT_EQ(heard[before], wanted);
        EXPECT_EQ(heard[before + 5000], wanted + 5000);
        EXPECT_GT(player.currentMediaTime().value, wanted);
    }
    EXPECT_TRUE(player.getPlayButtonState());
    player.pause();
    EXPECT_FALSE(player.getPlayButtonState());
    const double paused = player.currentTime();
    const std::size_t before = heard.size();
    world.advance(500);
    EXPECT_EQ(player.currentTime(), paused);
    EXPECT_EQ(told.back(), paused);
    EXPECT_EQ(heard.size(), before);
}

TEST_F(ZQAudioPlayerTest, TheEndStopsUnlessTheSelectionsGoOn) {
    player.Play_();
    player.setCurrentPlayTime(1.9);
    player.play();
    ASSERT_TRUE(runUntil([&] { return !player.isPlaying() && player.currentTime() == 0; }));
    EXPECT_EQ(heard.back(), kFrames - 1);
    EXPECT_FALSE(player.getPlayButtonState());
    EXPECT_EQ(told.back(), 0);

    onTold = [&](double seconds) { // only once nothing is played any more
        if (seconds >= 2 && !player.isPlaying() && heard.size() < 3 * 9600)
            player.setCurrentPlayTime(1.8);
    };
    heard.clear();
    player.setCurrentPlayTime(1.8);
    player.setPlayButtonState(true);
    EXPECT_TRUE(player.CutsPlay_());
    EXPECT_FALSE(player.getPlayButtonState());
    player.play();
    ASSERT_TRUE(runUntil([&] { return !player.isPlaying() && !player.getCutsPlayButtonState(); }));
    EXPECT_EQ(heard.size(), 3u * 9600);
}

TEST_F(ZQAudioPlayerTest, OnlyWhatWasPreparedLastIsPlayed) {
    bool isFirstReady = false;
    auto asset = media::openAsset(QUrl::fromLocalFile(QDir::homePath() + "/stamped.wav"));
    player.prepareForPlayWithAsset(asset.value(), [&] { isFirstReady = true; });
    EXPECT_FALSE(player.isPrepared());
    prepare(48000);
    EXPECT_FALSE(isFirstReady);
    EXPECT_EQ(player.duration(), 1);
    player.clear();
    EXPECT_EQ(player.currentTime(), 0);
    player.play();
    EXPECT_FALSE(player.isPlaying());
}

} // namespace
} // namespace cantorel
