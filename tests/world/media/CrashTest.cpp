#include "platform/media/AudioFileWriter.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/Sound.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace cantorel::media {
namespace {

using test::contents;
using test::decoded;
using test::farthestFromTone;
using test::kToneAmplitude;
using test::store;
using test::tone;

constexpr int kRate = 48000;
constexpr std::size_t kBatch = kRate / 2;

class CrashTest : public testing::Test {
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
    ASSERT_GT(samples.size(), 2 * 1024u);
    samples.erase(samples.begin(), samples.begin() + 2 * 1024); // this reader keeps the priming of a growing file
    ASSERT_GE(samples.size() / 2, 4 * kBatch - 3 * kFramesPerPacket);
    EXPECT_LT(farthestFromTone(samples, kRate, 4096, samples.size() / 2 - 2048), 0.1 * kToneAmplitude);
}

} // namespace
} // namespace cantorel::media
