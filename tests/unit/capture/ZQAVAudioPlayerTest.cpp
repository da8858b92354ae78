#include "capture/ZQAVAudioPlayer.h"

#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <gtest/gtest.h>

using namespace cantorel;
using test::EmbeddedWorld;

namespace {

constexpr std::uint32_t kFrames = 100000; // more than the player's queue holds

QString stampedWave(std::uint32_t frames) {
    const QString path = QDir::homePath() + "/stamped.wav";
    EXPECT_TRUE(test::writeWav(path, test::stamped(frames)));
    return path;
}

struct Listener : QObject, ZQAVAudioPlayerDelegate {
    std::vector<bool> ends;
    void AVAudioPlayerDidFinishPlayingSuccessfully(ZQAVAudioPlayer &, bool successfully) override {
        ends.push_back(successfully);
    }
};

struct PlayerWorld : EmbeddedWorld {
    // Lets devices and timers run in small steps until the condition holds.
    bool runUntil(const std::function<bool()> &condition) {
        return test::eventually([&] {
            advance(10);
            return condition();
        });
    }
    void listen(const QString &uid) {
        backend->setTap(uid, [this](std::span<const float> samples, int, std::int64_t) {
            for (std::size_t i = 0; i < samples.size(); i += 2) {
                if (samples[i] != 0)
                    heard.push_back(test::stampOf(samples[i]));
            }
        });
    }
    std::vector<std::int64_t> heard;
};

} // namespace

TEST(Player, PlaysEveryFrameOnceAndTellsItsEndOnce) {
    for (const bool intoLoopback : {false, true}) {
        PlayerWorld world;
        const QString device = intoLoopback ? "Tessolar_AudioDevice" : "builtin_output";
        world.backend->setConfiguredDefault(hal::Direction::Output, device, std::nullopt);
        world.listen(device);
        const auto player = ZQAVAudioPlayer::initWithFilePath(stampedWave(intoLoopback ? kFrames : kFrames + 1));
        ASSERT_TRUE(player);
        EXPECT_NEAR(player->totalTime(), kFrames / 48000.0, 0.001);
        Listener listener;
        player->delegate = &listener;
        ASSERT_TRUE(player->play());
        // The devices here are faster than the timer that fills the queue: gaps of silence are no fault, lost frames
        // are.
        ASSERT_TRUE(world.runUntil([&] { return !listener.ends.empty(); }));
        EXPECT_EQ(listener.ends, std::vector<bool>{true});
        ASSERT_GE(world.heard.size(), kFrames);
        for (std::size_t i = 0; i < world.heard.size(); ++i)
            ASSERT_EQ(world.heard[i], std::int64_t(i)) << device.toStdString();
        EXPECT_NEAR(player->currentPlayTime(), player->totalTime(), 0.001);
    }
}

TEST(Player, PausesSeeksAndStartsAgain) {
    PlayerWorld world;
    world.listen("builtin_output");
    const auto player = ZQAVAudioPlayer::initWithFilePath(stampedWave(kFrames));
    ASSERT_TRUE(player);
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(world.runUntil([&] { return world.heard.size() > 5000; }));
    player->pause();
    const std::size_t heard = world.heard.size();
    world.advance(100);
    EXPECT_EQ(world.heard.size(), heard);
    ASSERT_TRUE(player->play());
    ASSERT_TRUE(world.runUntil([&] { return world.heard.size() > heard + 1000; }));
    EXPECT_EQ(world.heard[heard], world.heard[heard - 1] + 1) << "goes on with the next frame";
    const std::size_t before = world.heard.size();
    ASSERT_TRUE(player->playAtTime(1));
    ASSERT_TRUE(world.runUntil([&] { return world.heard.size() > before + 100; }));
    EXPECT_NEAR(double(world.heard[before]), 48000, 4096) << "near the time asked for";
    player->stop();
    EXPECT_EQ(player->currentPlayTime(), 0);
}

TEST(Player, GoesOnAtTheNextOutputAndEndsWithoutOne) {
    PlayerWorld world;
    world.backend->plug(hal::EmbeddedBackend::plainDevice("headset", "Headset", 0, 2));
    world.backend->setConfiguredDefault(hal::Direction::Output, QString("headset"), std::nullopt);
    world.listen("builtin_output");
    const auto player = ZQAVAudioPlayer::initWithFilePath(stampedWave(kFrames));
    Listener listener;
    player->delegate = &listener;
    ASSERT_TRUE(player->play());
    world.advance(50);
    world.backend->unplug("headset");
    ASSERT_TRUE(world.runUntil([&] { return world.heard.size() > 100; }));
    world.backend->unplug("builtin_output");
    ASSERT_TRUE(world.runUntil([&] { return !listener.ends.empty(); }));
    EXPECT_EQ(listener.ends, std::vector<bool>{false});
    EXPECT_FALSE(player->play()) << "there is no output";
}

TEST(Player, RefusesWhatCannotBePlayed) {
    EmbeddedWorld world;
    const QString garbage = QDir::homePath() + "/garbage.wav";
    const QString empty = QDir::homePath() + "/empty.mp3";
    test::store(garbage, QByteArray(5000, 'x'));
    test::touch(empty);
    for (const QString &path : {QString(), QString("/nowhere/x.wav"), QDir::homePath(), garbage, empty}) {
        foundation::Failure why;
        EXPECT_FALSE(ZQAVAudioPlayer::initWithFilePath(path, &why)) << path.toStdString();
        EXPECT_FALSE(why.sentence.isEmpty());
    }
    const auto playing = ZQAVAudioPlayer::initWithFilePath(stampedWave(1000));
    ASSERT_TRUE(playing->play());
    world.advance(5); // ended while it plays
}
