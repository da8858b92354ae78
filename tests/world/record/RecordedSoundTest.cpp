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

// A recording of a session over the server's devices, and what reaches the coder.
struct Bench : RecordingSessionView {
    explicit Bench(int source) {
        recorder().setTap([this](std::span<const float> samples) {
            const std::lock_guard lock(mutex);
            tapped.insert(tapped.end(), samples.begin(), samples.end());
        });
        AppSettings::setAudioType(source);
        AppSettings::setAutoSkipSilence(false); // Every frame is looked for.
        EXPECT_TRUE(session->startRecording().ok());
        EXPECT_TRUE(eventually([&] { return started; }));
    }
    ~Bench() override {
        session.reset();
        RecorderRelease(&recorder());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ZQAudioKextKit::end();
    }
    static ZQAudioRecorder &recorder() { return *ZQAVRecorderKit::sharedInstance().getAudioRecorder(); }
    void recordingStarted(const QString &, const QString &) override { started = true; }
    void recordingFinished(const FinishedRecording &) override { ended = true; }
    void recordingFailed(const RecordingTrouble &trouble) override {
        ended = true;
        failure = Lang::english(trouble.sentence);
        kept = trouble.kept;
    }
    void recordingDeviceLost(const QString &) override { ++lost; }
    void recordingDeviceBack(const QString &) override { ++back; }
    std::size_t frames() {
        const std::lock_guard lock(mutex);
        return tapped.size() / 2;
    }
    bool ends() {
        session->stopRecording();
        return eventually([&] { return ended; }, 20000);
    }

    bool started = false, ended = false;
    int lost = 0, back = 0;
    QString failure, kept;
    std::mutex mutex;
    std::vector<float> tapped;
    hal::HardwareSystem system{hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames).value(),
                               QDir::homePath()};
    RecordedList list{QDir::homePath() + "/library", hal::HardwareSystem::clock()};
    RecorderCommons commons{QDir::homePath() + "/journal", hal::HardwareSystem::clock(), nullptr};
    std::unique_ptr<RecordingSession> session = std::make_unique<RecordingSession>(*this, list, commons);
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
    const PrivateWorld world({.pulse = true, .cycle = PrivateWorld::kUnhurried});
    ASSERT_TRUE(world.ready());
    const QString sound = QDir::homePath() + "/sound.wav", heard = QDir::homePath() + "/heard.wav";
    std::vector<float> samples = test::stamped(kFrames);
    // Players begin and end with what is not whole yet: silence before and after.
    samples.insert(samples.begin(), 2 * 24000, 0.0f);
    samples.insert(samples.end(), 2 * 24000, 0.0f);
    test::writeWav(sound, samples);
    qputenv("CANTOREL_FFMPEG", "/no/such"); // so that what was recorded stays as it is

    Bench bench(GetParam().source);
    const auto listener = world.listen("builtin_output", heard);
    const auto player = GetParam().spoken ? world.feed(sound, "builtin_microphone") : world.start("paplay", {sound});
    eventually([&] { return player->state() == QProcess::NotRunning; }, 15000);
    test::finish(*player);
    const std::size_t played = bench.frames();
    EXPECT_TRUE(eventually([&] { return bench.frames() > played + 4800; })) << "what is still on its way";
    test::finish(*listener, SIGINT);
    ASSERT_TRUE(bench.ends());
    EXPECT_EQ(test::longestStampedRun(bench.tapped), kFrames);
    if (!GetParam().spoken) {
        EXPECT_EQ(test::longestStampedRun(test::readWav(heard)), kFrames);
    }
    EXPECT_EQ(test::probed(bench.kept, "stream=duration_ts").toULongLong(), bench.frames());
    const std::size_t decoded = test::decoded(bench.kept).size() / 2;
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
    const QString loud = QDir::homePath() + "/loud.wav";
    test::writeWav(loud, std::vector<float>(std::size_t(2) * 48000 * 30, 0.5f));
    const auto player = world.start("pw-cat", {"-p", loud});
    Bench bench(1);
    ASSERT_TRUE(eventually([&] { return bench.frames() > 4800; }));
    world.unplug("builtin_microphone");
    ASSERT_TRUE(eventually([&] { return bench.lost == 1; }));
    const std::size_t before = bench.frames();
    EXPECT_FALSE(world.links().contains("cantorel-capture"));
    ASSERT_TRUE(world.plugSource("builtin_microphone", "Built-in Microphone"));
    ASSERT_TRUE(eventually([&] { return bench.back == 1; }));
    EXPECT_TRUE(eventually([&] { return bench.frames() > before + 24000; })) << "the same recording goes on";

    ASSERT_TRUE(bench.ends());
    EXPECT_EQ(bench.failure, QString());
    test::finish(*player);
    const std::lock_guard lock(bench.mutex);
    for (const float sample : bench.tapped)
        ASSERT_EQ(sample, 0.0f) << "only the silent microphone was recorded";
}

} // namespace cantorel
