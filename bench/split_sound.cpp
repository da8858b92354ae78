// Fifty files of one recording on a real server: between two of them nothing is lost, and the person hears no gap.

#include "audio_device/ZQAudioKextKit.h"
#include "capture/ZQAVRecorderKit.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/hal/pipewire/PipeWireBackend.h"
#include "recording/session/RecordManager.h"
#include "settings/AppSettings.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <mutex>

namespace cantorel {
namespace {

using test::eventually;

constexpr int kSplits = 50;

struct Owner : QObject, RecordManagerDelegate {
    void RecordManagerDidStartRecordingToOutputAtURL(RecordManager &, const QUrl &) override { ++started; }
    void RecordManagerDidFinishRecordingToOutputAtURL(RecordManager &, const QUrl &, const media::RecordingCounts &,
                                                      const std::optional<foundation::Failure> &failure) override {
        ++finished;
        failures += failure ? 1 : 0;
    }
    int started = 0, finished = 0, failures = 0;
};

struct SplitSound : testing::Test {
    SplitSound() {
        auto connected = hal::PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
        EXPECT_TRUE(connected.ok());
        system = std::make_unique<hal::HardwareSystem>(std::move(connected).value(), QDir::homePath());
        files.reserve(kSplits + 1);
    }
    ~SplitSound() override {
        RecorderRelease(ZQAVRecorderKit::sharedInstance().getAudioRecorder());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ZQAudioKextKit::end();
    }
    bool start(RecordManager &manager) {
        files.emplace_back();
        ZQAVRecorderKit::sharedInstance().getAudioRecorder()->setTap(
            [this, file = files.size() - 1](std::span<const float> samples) {
                const std::lock_guard lock(mutex);
                files[file].insert(files[file].end(), samples.begin(), samples.end());
            });
        const int before = owner.started;
        return manager.startRecord(
                   QUrl::fromLocalFile(QDir::homePath() + QString::fromLatin1("/%1.m4a").arg(files.size())))
               && eventually([&] { return owner.started > before; });
    }
    bool stop(RecordManager &manager) {
        const int before = owner.finished;
        manager.stopRecord();
        const bool ended = eventually([&] { return owner.finished > before; });
        manager.clear();
        return ended;
    }

    test::PrivateWorld world;
    std::unique_ptr<hal::HardwareSystem> system;
    Owner owner;
    std::mutex mutex;
    std::vector<std::vector<float>> files;
};

} // namespace

TEST_F(SplitSound, FiftySplitsLeaveNoGapInTheFilesNorAtTheEar) {
    ASSERT_TRUE(world.ready());
    ASSERT_TRUE(ZQAudioKextKit::activateSVAD());
    AppSettings::setAudioType(0);
    const QString sound = QDir::homePath() + "/stamped.wav", heard = QDir::homePath() + "/heard.wav";
    ASSERT_TRUE(test::writeWav(sound, test::stamped(60 * 48000)));
    RecordManager manager;
    manager.delegate = &owner;
    ASSERT_TRUE(start(manager));
    const auto listener = world.listen(QStringLiteral("builtin_output"), heard);
    const auto player = world.start(QStringLiteral("pw-cat"), {QStringLiteral("-p"), sound});
    const auto hearsStamps = [&] {
        const std::lock_guard lock(mutex);
        return !files.back().empty() && test::stampOf(files.back()[files.back().size() - 2]) > 24000;
    };
    ASSERT_TRUE(eventually(hearsStamps));
    for (int split = 0; split < kSplits; ++split) {
        const std::int64_t frames = ZQAVRecorderKit::sharedInstance().getAudioRecorder()->recordingCounts().frames;
        (void)eventually([&] {
            return ZQAVRecorderKit::sharedInstance().getAudioRecorder()->recordingCounts().frames
                   > frames + 4800 + 100 * split;
        });
        manager.joinNextRecording();
        ASSERT_TRUE(stop(manager));
        ASSERT_TRUE(start(manager));
    }
    ASSERT_TRUE(stop(manager));
    test::finish(*player);
    test::finish(*listener, SIGINT);
    EXPECT_EQ(owner.failures, 0);

    std::int64_t worst = 0, split = 0, within = 0, all = 0;
    std::int64_t before = -1;
    for (const std::vector<float> &file : files) {
        ASSERT_FALSE(file.empty());
        for (std::size_t i = 0; i < file.size(); i += 2) {
            const std::int64_t position = test::stampOf(file[i]);
            const std::int64_t gap = before < 0 ? 0 : std::abs(position - before - 1);
            before = position;
            if (i == 0)
                split += gap;
            else
                within += gap > 0; // a player that stalled
            worst = std::max(worst, i == 0 ? gap : 0);
        }
        all += static_cast<std::int64_t>(file.size() / 2);
    }
    const std::size_t run = test::longestStampedRun(test::readWav(heard));
    std::printf("splits %d: gap %lld frames in all, %lld at most; %lld breaks within files; %lld recorded; %zu heard "
                "unbroken\n",
                kSplits, static_cast<long long>(split), static_cast<long long>(worst), static_cast<long long>(within),
                static_cast<long long>(all), run);
    EXPECT_EQ(split, 0);
    EXPECT_GT(run, 48000u * 5);
}

} // namespace cantorel
