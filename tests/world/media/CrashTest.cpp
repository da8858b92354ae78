#include "platform/media/AudioFileWriter.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/Sound.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

namespace cantorel::media {
namespace {

using testing::contents;
using testing::decoded;
using testing::farthestFromTone;
using testing::kToneAmplitude;
using testing::store;
using testing::tone;

constexpr int kRate = 48000;
constexpr std::size_t kBatch = kRate / 2;

class CrashTest : public ::testing::Test {
protected:
    void expectToneOf(const QString &path, std::size_t frames) {
        const std::vector<float> samples = decoded(path);
        ASSERT_EQ(samples.size() / 2, frames);
        EXPECT_LT(farthestFromTone(samples, kRate, 4096, frames - 2048), 0.1 * kToneAmplitude);
    }

    QTemporaryDir mFolder;
    const QString mPath = mFolder.filePath(QStringLiteral("recording.m4a"));
    const QString mCopy = mFolder.filePath(QStringLiteral("repaired.m4a"));
};

TEST_F(CrashTest, RecordingCutAnywhereIsRepairedToTheSoundBeforeTheCut) {
    auto writer = AudioFileWriter::open(mPath, kRate);
    ASSERT_TRUE(writer);
    std::vector<std::uint64_t> ends;
    for (std::size_t i = 0; i < 12; ++i) {
        ASSERT_TRUE(writer.value()->append(tone(kBatch, kRate, i * kBatch)));
        ends.push_back(writer.value()->bytes());
    }
    const QByteArray whole = contents(mPath);
    std::mt19937 random(7);
    for (int round = 0; round < 8; ++round) {
        const auto cut = ends[1] + random() % (ends.back() - ends[1]);
        SCOPED_TRACE(cut);
        store(mPath, whole.left(static_cast<qsizetype>(cut)));
        const auto repaired = repairUnfinished(mPath, mCopy);
        ASSERT_TRUE(repaired);
        const std::size_t batches = std::count_if(ends.begin(), ends.end(), [&](auto end) { return end <= cut; });
        const auto frames = static_cast<std::size_t>(std::lround(repaired.value().durationSeconds * kRate));
        EXPECT_GE(frames + 3 * kFramesPerPacket, batches * kBatch);
        expectToneOf(mCopy, frames);
    }
}

// A growing recording plays as it stands, for instance where the disk had no room for its index.
TEST_F(CrashTest, UnfinishedRecordingPlays) {
    auto writer = AudioFileWriter::open(mPath, kRate);
    ASSERT_TRUE(writer);
    for (std::size_t i = 0; i < 4; ++i)
        ASSERT_TRUE(writer.value()->append(tone(kBatch, kRate, i * kBatch)));
    std::vector<float> samples = decoded(mPath);
    samples.erase(samples.begin(), samples.begin() + 2 * 1024); // this reader keeps the priming of a growing file
    ASSERT_GE(samples.size() / 2, 4 * kBatch - 3 * kFramesPerPacket);
    EXPECT_LT(farthestFromTone(samples, kRate, 4096, samples.size() / 2 - 2048), 0.1 * kToneAmplitude);
}

// The child writes and counts what append() took; killed at any moment, the file holds nearly all of it.
TEST_F(CrashTest, KilledRecorderLosesLessThanASecond) {
    auto *taken = static_cast<std::atomic<std::size_t> *>(
        ::mmap(nullptr, sizeof(std::atomic<std::size_t>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(taken, MAP_FAILED);
    std::mt19937 random(11);
    for (int round = 0; round < 6; ++round) {
        taken->store(0);
        const std::size_t killAfter = kBatch * (3 + random() % 12);
        const pid_t child = ::fork();
        if (child == 0) {
            auto writer = AudioFileWriter::open(mPath, kRate);
            for (std::size_t frame = 0; writer; frame += kBatch) {
                if (!writer.value()->append(tone(kBatch, kRate, frame)))
                    break;
                taken->store(frame + kBatch);
            }
            ::_exit(1);
        }
        ASSERT_GT(child, 0);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (taken->load() < killAfter && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        for (unsigned spins = random() % 200000; spins > 0; --spins) // anywhere in the next batch
            std::atomic_signal_fence(std::memory_order_seq_cst);
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));

        ASSERT_TRUE(isUnfinished(mPath));
        const auto repaired = repairUnfinished(mPath, mCopy);
        ASSERT_TRUE(repaired);
        const auto frames = static_cast<std::size_t>(std::lround(repaired.value().durationSeconds * kRate));
        EXPECT_GT(frames + kRate / 8, taken->load());
        expectToneOf(mCopy, frames);
    }
}

} // namespace
} // namespace cantorel::media
