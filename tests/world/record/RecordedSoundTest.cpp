// What a program plays on a real server reaches the coder to the bit, and is heard meanwhile.

#include "audio_device/ZQAudioKextKit.h"
#include "capture/ZQAVRecorderKit.h"
#include "lang/Lang.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "recording/library/RecordedList.h"
#include "recording/session/RecordingSession.h"
#include "settings/AppSettings.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/Sound.h"
#include "tests/support/StampedSound.h"

#include <QCoreApplication>
#include <QDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <mutex>

namespace cantorel {
namespace {

using test::eventually;
using test::PrivateWorld;

struct View : RecordingSessionView {
    void recordingStarted(const QString &, const QString &) override { started = true; }
    void recordingFinished(const FinishedRecording &) override { ended = true; }
    void recordingFailed(const RecordingTrouble &trouble) override {
        ended = true;
        failure = Lang::english(trouble.sentence);
        kept = trouble.kept;
    }
    void recordingDeviceLost(const QString &) override { ++lost; }
    void recordingDeviceBack(const QString &) override { ++back; }
    bool started = false, ended = false;
    int lost = 0, back = 0;
    QString failure, kept;
};

// What stands below a session in a test: the server's devices, and what reaches the coder.
struct Bench {
    Bench() {
        auto connected = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
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

// Where the sound comes in, and what is recorded.
struct Route {
    const char *name;
    int source;
    bool spoken; // into the microphone
};

void PrintTo(const Route &route, std::ostream *out) { *out << route.name; }

class RecordedSound : public testing::TestWithParam<Route> {};

} // namespace

// Every frame, from the first to the last, once and in order: at the coder, in what the person hears, and as many in
// the file as were captured.
TEST_P(RecordedSound, ReachesTheCoderAndTheEarWholeAndToTheBit) {
    constexpr std::size_t kFrames = 3 * 48000;
    PrivateWorld::Options options;
    options.pulse = true;
    const PrivateWorld world(options);
    ASSERT_TRUE(world.ready());
    Bench bench;
    const QString sound = QDir::homePath() + "/sound.wav", heard = QDir::homePath() + "/heard.wav";
    std::vector<float> samples = test::stamped(kFrames);
    // Players begin and end with what is not whole yet: silence before and after.
    samples.insert(samples.begin(), 2 * 24000, 0.0f);
    samples.insert(samples.end(), 2 * 24000, 0.0f);
    test::writeWav(sound, samples);
    qputenv("CANTOREL_FFMPEG", "/no/such"); // so that what was recorded stays as it is

    View view;
    {
        AppSettings::setAudioType(GetParam().source);
        AppSettings::setAutoSkipSilence(false); // Every frame is looked for.
        RecordedList list(QDir::homePath() + QStringLiteral("/library"), hal::HardwareSystem::clock());
        RecordingSession session(view, list, {hal::HardwareSystem::clock(), nullptr, QDir::homePath() + "/journal"});
        ASSERT_TRUE(session.startRecording().ok());
        ASSERT_TRUE(eventually([&] { return view.started; }));
        const auto listener = world.listen("builtin_output", heard);
        const auto player =
            GetParam().spoken ? world.feed(sound, "builtin_microphone") : world.start("paplay", {sound});
        eventually([&] { return player->state() == QProcess::NotRunning; }, 15000);
        test::finish(*player);
        const std::size_t played = bench.frames();
        EXPECT_TRUE(eventually([&] { return bench.frames() > played + 4800; })) << "what is still on its way";
        test::finish(*listener, SIGINT);
        session.stopRecording();
        ASSERT_TRUE(eventually([&] { return view.ended; }, 20000));
    }
    EXPECT_EQ(test::longestStampedRun(bench.tapped), kFrames);
    if (!GetParam().spoken) {
        EXPECT_EQ(test::longestStampedRun(test::readWav(heard)), kFrames);
    }
    EXPECT_EQ(test::probed(view.kept, "stream=duration_ts").toULongLong(), bench.frames());
    const std::size_t decoded = test::decoded(view.kept).size() / 2;
    EXPECT_GE(decoded, bench.frames());
    EXPECT_LT(decoded, bench.frames() + 1024) << "only the last packet is filled up";
}

INSTANTIATE_TEST_SUITE_P(, RecordedSound,
                         testing::Values(Route{"System", 0, false}, Route{"Microphone", 1, true},
                                         Route{"SystemOfBoth", 2, false}, Route{"MicrophoneOfBoth", 2, true}),
                         [](const auto &route) { return std::string(route.param.name); });

// The sound of another device must never take the place of the one that went: the sink that plays all the while would
// show.
TEST(RecordingDevice, ThatVanishesIsWaitedForAndTakenUpAgain) {
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    Bench bench;
    const QString loud = QDir::homePath() + "/loud.wav";
    test::writeWav(loud, std::vector<float>(std::size_t(2) * 48000 * 30, 0.5f));
    const auto player = world.start("pw-cat", {"-p", loud});
    View view;
    AppSettings::setAudioType(1);
    AppSettings::setAutoSkipSilence(false); // Every frame is looked for.
    RecordedList list(QDir::homePath() + QStringLiteral("/library"), hal::HardwareSystem::clock());
    RecordingSession session(view, list, {hal::HardwareSystem::clock(), nullptr, QDir::homePath() + "/journal"});
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
    PrivateWorld world;
    ASSERT_TRUE(world.ready());
    Bench bench;
    View view;
    AppSettings::setAudioType(1);
    AppSettings::setAutoSkipSilence(false); // Every frame is looked for.
    RecordedList list(QDir::homePath() + QStringLiteral("/library"), hal::HardwareSystem::clock());
    RecordingSession session(view, list, {hal::HardwareSystem::clock(), nullptr, QDir::homePath() + "/journal"});
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
    const PrivateWorld world;
    ASSERT_TRUE(world.ready());
    Bench bench;
    const QString quiet = QDir::homePath() + "/quiet.wav", loud = QDir::homePath() + "/loud.wav";
    test::writeWav(quiet, std::vector<float>(std::size_t(2) * 48000 * 20, 0.125f));
    test::writeWav(loud, std::vector<float>(std::size_t(2) * 48000 * 20, 0.25f));
    View view;
    AppSettings::setAudioType(2);
    AppSettings::setAutoSkipSilence(false); // Every frame is looked for.
    RecordedList list(QDir::homePath() + QStringLiteral("/library"), hal::HardwareSystem::clock());
    RecordingSession session(view, list, {hal::HardwareSystem::clock(), nullptr, QDir::homePath() + "/journal"});
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
