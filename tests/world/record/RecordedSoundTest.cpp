// What a program plays on a real server reaches the coder to the bit, and is heard meanwhile.

#include "audio_device/ZQAudioKextKit.h"
#include "capture/ZQAVRecorderKit.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "recording/RecordingSession.h"
#include "settings/AppSettings.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <mutex>

namespace cantorel {
namespace {

using test::eventually;

struct View : RecordingSessionView {
    void recordingStarted(const QString &, const QString &) override { started = true; }
    void recordingFinished(const FinishedRecording &) override { ended = true; }
    void recordingFailed(const QString &sentence, const QString &) override {
        ended = true;
        failure = sentence;
    }
    void recordingDeviceLost(const QString &) override { ++lost; }
    void recordingDeviceBack(const QString &) override { ++back; }
    bool started = false, ended = false;
    int lost = 0, back = 0;
    QString failure;
};

// What stands below a session in a test: the server's devices, and what reaches the coder.
struct Bench {
    Bench() {
        auto connected = hal::PipeWireBackend::connect(std::chrono::seconds(10));
        EXPECT_TRUE(connected.ok());
        system = std::make_unique<hal::HardwareSystem>(std::move(connected).value(), QDir::homePath());
        ZQAVRecorderKit::sharedInstance().getAudioRecorder()->setTap([this](std::span<const float> samples) {
            const std::lock_guard lock(mutex);
            tapped.insert(tapped.end(), samples.begin(), samples.end());
        });
    }
    ~Bench() {
        RecorderRelease(ZQAVRecorderKit::sharedInstance().getAudioRecorder());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ZQAudioKextKit::end();
    }
    std::size_t frames() {
        const std::lock_guard lock(mutex);
        return tapped.size() / 2;
    }
    std::unique_ptr<hal::HardwareSystem> system;
    std::mutex mutex;
    std::vector<float> tapped;
};

class RecordedSound : public ::testing::TestWithParam<int> {};

} // namespace

TEST_P(RecordedSound, IsBitExactAtTheCoderAndHeardMeanwhile) {
    constexpr std::size_t kSecond = 48000;
    const test::PrivateWorld world;
    ASSERT_TRUE(world.ready());
    Bench bench;
    const QString sound = QDir::homePath() + "/sound.wav", heard = QDir::homePath() + "/heard.wav";
    test::writeWav(sound, test::stamped(4 * kSecond));

    View view;
    {
        AppSettings::setAudioType(GetParam());
        RecordingSession session(view, QDir::homePath() + "/journal");
        const auto started = session.startRecording();
        ASSERT_TRUE(started.ok());
        ASSERT_TRUE(eventually([&] { return view.started; }));
        std::unique_ptr<QProcess> listener;
        if (GetParam() == 0)
            listener = world.listen("builtin_output", heard);
        const auto player =
            GetParam() == 0 ? world.start("pw-cat", {"-p", sound}) : world.feed(sound, "builtin_microphone");
        eventually([&] { return player->state() == QProcess::NotRunning; }, 15000);
        test::finish(*player);
        if (listener)
            test::finish(*listener, SIGINT);
        session.stopRecording();
        ASSERT_TRUE(eventually([&] { return view.ended; }, 20000));
        EXPECT_EQ(view.failure, QString());
    }
    EXPECT_GT(test::longestStampedRun(bench.tapped), kSecond);
    if (GetParam() == 0) {
        EXPECT_GT(test::longestStampedRun(test::readWav(heard)), kSecond);
    }
}

INSTANTIATE_TEST_SUITE_P(Sources, RecordedSound, ::testing::Values(0, 1));

// The sound of another device must never take the place of the one that went: the sink that plays all the while would
// show.
TEST(RecordingDevice, ThatVanishesIsWaitedForAndTakenUpAgain) {
    const test::PrivateWorld world;
    ASSERT_TRUE(world.ready());
    Bench bench;
    const QString loud = QDir::homePath() + "/loud.wav";
    test::writeWav(loud, std::vector<float>(std::size_t(2) * 48000 * 30, 0.5f));
    const auto player = world.start("pw-cat", {"-p", loud});
    View view;
    AppSettings::setAudioType(1);
    RecordingSession session(view, QDir::homePath() + "/journal");
    ASSERT_TRUE(session.startRecording().ok());
    ASSERT_TRUE(eventually([&] { return view.started && bench.frames() > 4800; }));

    world.unplug("builtin_microphone");
    ASSERT_TRUE(eventually([&] { return view.lost == 1; }));
    const std::size_t before = bench.frames();
    EXPECT_FALSE(world.links().contains("cantorel-capture"));
    ASSERT_TRUE(world.plugSource("builtin_microphone", "Built-in Microphone"));
    ASSERT_TRUE(eventually([&] { return view.back == 1; }));
    EXPECT_TRUE(eventually([&] { return bench.frames() > before + 24000; })) << "the same recording goes on";

    session.stopRecording();
    ASSERT_TRUE(eventually([&] { return view.ended; }, 20000));
    EXPECT_EQ(view.failure, QString());
    test::finish(*player);
    const std::lock_guard lock(bench.mutex);
    for (const float sample : bench.tapped)
        ASSERT_EQ(sample, 0.0f) << "only the silent microphone was recorded";
}

TEST(RecordingDevice, ComesBackWithItsServer) {
    test::PrivateWorld world;
    ASSERT_TRUE(world.ready());
    Bench bench;
    View view;
    AppSettings::setAudioType(1);
    RecordingSession session(view, QDir::homePath() + "/journal");
    ASSERT_TRUE(session.startRecording().ok());
    ASSERT_TRUE(eventually([&] { return view.started && bench.frames() > 4800; }));
    world.killServer();
    ASSERT_TRUE(eventually([&] { return view.lost == 1; }));
    const std::size_t before = bench.frames();
    ASSERT_TRUE(world.startServer());
    ASSERT_TRUE(eventually([&] { return view.back >= 1; }));
    EXPECT_TRUE(eventually([&] { return bench.frames() > before + 24000; }));
    session.stopRecording();
    ASSERT_TRUE(eventually([&] { return view.ended; }, 20000));
    EXPECT_EQ(view.failure, QString());
}

// Microphone and system sound at once: the sum of both reaches the coder.
TEST(RecordedBoth, AreMixedAtUnity) {
    const test::PrivateWorld world;
    ASSERT_TRUE(world.ready());
    Bench bench;
    const QString quiet = QDir::homePath() + "/quiet.wav", loud = QDir::homePath() + "/loud.wav";
    test::writeWav(quiet, std::vector<float>(std::size_t(2) * 48000 * 20, 0.125f));
    test::writeWav(loud, std::vector<float>(std::size_t(2) * 48000 * 20, 0.25f));
    View view;
    AppSettings::setAudioType(2);
    RecordingSession session(view, QDir::homePath() + "/journal");
    ASSERT_TRUE(session.startRecording().ok());
    ASSERT_TRUE(eventually([&] { return view.started; }));
    const auto speaker = world.feed(quiet, "builtin_microphone");
    const auto player = world.start("pw-cat", {"-p", loud});
    const auto sums = [&] {
        const std::lock_guard lock(bench.mutex);
        return std::count(bench.tapped.begin(), bench.tapped.end(), 0.375f);
    };
    EXPECT_TRUE(eventually([&] { return sums() > 2 * 24000; }));
    session.stopRecording();
    ASSERT_TRUE(eventually([&] { return view.ended; }, 20000));
    EXPECT_EQ(view.failure, QString());
    test::finish(*speaker);
    test::finish(*player);
}

} // namespace cantorel
