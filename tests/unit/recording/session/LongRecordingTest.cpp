#include "lang/Lang.h"
#include "recording/session/RecordingSession.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <QDir>

#include <atomic>
#include <cmath>
#include <random>

namespace cantorel {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kSeconds = 3 * 60;
constexpr std::int64_t kRate = 48000;
constexpr int kPeriod = 15; // seconds
constexpr std::uint32_t kStamps = 8192;

// A loud frame names its number, all but the high bits of it.
float loudStamp(std::uint32_t number) { return 0.1f + static_cast<float>(number % kStamps) / 65536; }
std::uint32_t stampOfLoud(float sample) { return static_cast<std::uint32_t>(std::lround((sample - 0.1f) * 65536)); }

// Time flies as fast as the machine can follow.
class LongRecordingTest : public test::RecordingFixture, public test::SessionLog {
public:
    LongRecordingTest() {
        AppSettings::setAudioType(1);
        AppSettings::setAudioFormat(4);
        AppSettings::setAutoSkipSilence(true);
        AppSettings::setIsAutoSplitEverySeconds(true);
        AppSettings::setAutoSplitEverySeconds(kPeriod);
        list.initRecordedList();
        world.backend->setSource("builtin_microphone", [this](std::span<float> samples, int channels, std::int64_t) {
            fill(samples, static_cast<std::size_t>(channels));
        });
        watchRecorder();
    }

    // The file before is closed, the next one has not begun: the recorder is another from here on.
    void recordingConverting(const QString &) override { watchRecorder(); }

    // Time stands still while the thread of a file is behind, and from one file to the next.
    void pass(std::int64_t milliseconds) {
        for (std::int64_t passed = 0; passed < milliseconds; passed += 50) {
            world.advance(50);
            QCoreApplication::processEvents();
            const auto follows = [&] {
                const bool runs = session.isRecording() && !session.currentFile().path.isEmpty();
                return runs && tapped + 2 * kRate > kit.getAudioRecorder()->recordingCounts().frames;
            };
            if (!session.isRecording())
                world.advance(25); // the coder's block that the file before ends with
            if (!follows()) {
                ASSERT_TRUE(test::eventually([&] {
                    if (follows())
                        return true;
                    if (session.isRecording() && session.currentFile().path.isEmpty())
                        world.advance(1);
                    return false;
                }));
            }
        }
    }

    std::atomic<bool> loud = false;
    std::uint32_t played = 0;                        // loud frames
    std::atomic<std::uint32_t> heard = 0, wrong = 0; // of them, and those that are not the next
    std::atomic<std::int64_t> tapped = 0;            // frames of the file
    RecordedList list{QDir::homePath() + "/state", *world.clock};
    RecorderCommons commons = commonsIn("state");
    RecordingSession session{*this, list, commons};

private:
    void fill(std::span<float> samples, std::size_t channels) {
        for (std::size_t i = 0; i < samples.size(); i += channels) {
            const float sample = loud ? loudStamp(played++) : 0;
            std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(i), channels, sample);
        }
    }
    void watchRecorder() {
        ZQAudioRecorder *recorder = kit.getAudioRecorder();
        tapped = 0;
        recorder->setPollInterval(1ms);
        recorder->setTap([this](std::span<const float> samples) {
            for (std::size_t i = 0; i < samples.size(); i += 2) {
                if (samples[i] != 0 && stampOfLoud(samples[i]) != heard++ % kStamps)
                    ++wrong;
            }
            tapped += static_cast<std::int64_t>(samples.size() / 2);
        });
    }

    ZQAVRecorderKit &kit = ZQAVRecorderKit::sharedInstance();
};

} // namespace

TEST_F(LongRecordingTest, SilencesAndSplitsHaveEveryLoudFrameOnceAndInOrder) {
    ASSERT_TRUE(session.startRecording());
    pass(1000);
    std::mt19937 random(1);
    std::int64_t left = kSeconds * 1000;
    int silences = 0;
    double loudSeconds = 0;
    while (left > 0 && !HasFatalFailure()) {
        const std::int64_t sound = std::uniform_int_distribution(60, 800)(random) * 50;
        const std::int64_t silence = std::uniform_int_distribution(40, 120)(random) * 50;
        loud = true;
        pass(sound);
        loud = false;
        pass(silence);
        left -= sound + silence;
        loudSeconds += static_cast<double>(sound) / 1000;
        ++silences;
    }
    session.stopRecording();
    ASSERT_TRUE(test::eventually([&] { return session.isSettled(); }, 60000));
    EXPECT_TRUE(failed.isEmpty()) << failed.join(' ').toStdString();
    EXPECT_EQ(heard, played);
    EXPECT_EQ(wrong, 0u);
    EXPECT_NEAR(pauses.count('s'), silences, silences / 10 + 1) << "a split may come first";

    ASSERT_EQ(finished.size(), static_cast<std::size_t>(started.size()));
    ASSERT_EQ(list.items().size(), finished.size());
    double seconds = 0;
    for (std::size_t i = 0; i < finished.size(); ++i) {
        const FinishedRecording &recording = finished[i];
        EXPECT_EQ(list.items()[i]->getFileName(), recording.file);
        EXPECT_EQ(recording.droppedFrames, 0);
        if (i + 1 < finished.size()) {
            EXPECT_NEAR(recording.seconds, kPeriod + 0.5, 1.5) << i;
        }
        seconds += recording.seconds;
    }
    EXPECT_GT(seconds, loudSeconds);
    EXPECT_LT(seconds, loudSeconds + 2.0 * silences) << "silence was skipped";
}

} // namespace cantorel
