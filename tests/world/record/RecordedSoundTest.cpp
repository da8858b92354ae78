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
    bool started = false, ended = false;
    QString failure;
};

class RecordedSound : public ::testing::TestWithParam<int> {};

} // namespace

TEST_P(RecordedSound, IsBitExactAtTheCoderAndHeardMeanwhile) {
    constexpr std::size_t kSecond = 48000;
    const test::PrivateWorld world;
    ASSERT_TRUE(world.ready());
    auto backend = hal::PipeWireBackend::connect(std::chrono::seconds(10));
    ASSERT_TRUE(backend.ok());
    const hal::HardwareSystem system(std::move(backend).value(), QDir::homePath());
    const QString sound = QDir::homePath() + "/sound.wav", heard = QDir::homePath() + "/heard.wav";
    test::writeWav(sound, test::stamped(4 * kSecond));

    std::mutex mutex;
    std::vector<float> tapped;
    ZQAVRecorderKit::sharedInstance().getAudioRecorder()->setTap([&](std::span<const float> samples) {
        const std::lock_guard lock(mutex);
        tapped.insert(tapped.end(), samples.begin(), samples.end());
    });
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
    EXPECT_GT(test::longestStampedRun(tapped), kSecond);
    if (GetParam() == 0) {
        EXPECT_GT(test::longestStampedRun(test::readWav(heard)), kSecond);
    }
    RecorderRelease(ZQAVRecorderKit::sharedInstance().getAudioRecorder());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ZQAudioKextKit::end();
}

INSTANTIATE_TEST_SUITE_P(Sources, RecordedSound, ::testing::Values(0, 1));

} // namespace cantorel
