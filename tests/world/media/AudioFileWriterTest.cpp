#include "platform/media/AudioFileWriter.h"

#include "lang/Lang.h"
#include "platform/media/RecordingRepair.h"
#include "platform/media/asset/OpenAsset.h"
#include "tests/support/Sound.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>

namespace cantorel::media {
namespace {

using test::decoded;
using test::farthestFromTone;
using test::kToneAmplitude;
using test::probed;
using test::tone;

struct Length {
    int rate;
    std::size_t frames;

    friend void PrintTo(const Length &length, std::ostream *out) { *out << length.frames << "_at_" << length.rate; }
};

class WrittenFile : public testing::TestWithParam<Length> {
protected:
    QTemporaryDir mFolder;
    const QString mPath = mFolder.filePath("a b's \"file\".m4a");
};

double level(const std::vector<float> &samples, std::size_t from, std::size_t to) {
    double sum = 0;
    for (std::size_t i = from; i < to; ++i)
        sum += double(samples[2 * i]) * samples[2 * i];
    return 10 * std::log10(sum / static_cast<double>(to - from));
}

// The index says exactly the frames that were handed in; the decoder rounds the last packet up with silence. What it
// gives is the tone itself, in phase from the first frame to the last.
TEST_P(WrittenFile, SaysItsExactLengthAndHoldsTheSoundInPhase) {
    const auto [rate, frames] = GetParam();
    auto writer = AudioFileWriter::open(mPath, rate);
    ASSERT_TRUE(writer) << writer.failure().detail.toStdString();
    std::size_t done = 0;
    for (std::size_t piece = 1; done < frames; piece = piece * 3 % 30011) { // batches of all sizes
        const std::size_t count = std::min(piece, frames - done);
        ASSERT_TRUE(writer.value()->append(tone(count, rate, done)));
        done += count;
    }
    const auto form = writer.value()->finish();
    ASSERT_TRUE(form);
    EXPECT_EQ(form.value(), FileForm::Ordinary);

    EXPECT_EQ(probed(mPath, "stream=codec_name,sample_rate,channels,duration_ts"),
              QStringLiteral("aac,%1,2,%2").arg(rate).arg(frames));
    const std::vector<float> samples = decoded(mPath);
    ASSERT_GE(samples.size() / 2, frames);
    ASSERT_LT(samples.size() / 2, frames + kFramesPerPacket);
    if (frames == 0)
        return;
    const auto asset = openAsset(QUrl::fromLocalFile(mPath));
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset.value()->duration().value, static_cast<std::int64_t>(frames));
    std::vector<float> own(2 * frames);
    ASSERT_EQ(asset.value()->openReader({rate, 2}).value()->read(own.data(), frames).value(), frames);
    EXPECT_TRUE(std::equal(own.begin(), own.end(), samples.begin()));
    if (frames < 10000)
        return;
    EXPECT_EQ(probed(mPath, "stream=profile"), "LC");
    EXPECT_LT(farthestFromTone(samples, rate, 4096, frames - 2048), 0.1 * kToneAmplitude);
    EXPECT_NEAR(level(samples, 4096, frames - 2048), 20 * std::log10(kToneAmplitude / std::sqrt(2)), 0.1);
}

INSTANTIATE_TEST_SUITE_P(Lengths, WrittenFile,
                         testing::Values(Length{48000, 0}, Length{48000, 1}, Length{48000, 1023}, Length{48000, 1024},
                                         Length{48000, 1025}, Length{48000, 2048}, Length{48000, 144000},
                                         Length{48000, 144001}, Length{44100, 100001}, Length{96000, 200000},
                                         Length{16000, 50000}, Length{8000, 20000}));

TEST_F(WrittenFile, RateThatAacDoesNotKnowIsResampledToTheNearest) {
    auto writer = AudioFileWriter::open(mPath, 192000);
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer.value()->append(tone(384000, 192000)));
    ASSERT_TRUE(writer.value()->finish());
    EXPECT_EQ(probed(mPath, "stream=sample_rate"), "96000");
    EXPECT_NEAR(probed(mPath, "stream=duration_ts").toDouble(), 192000, 2);
    EXPECT_LT(farthestFromTone(decoded(mPath), 96000, 4096, 180000), 0.1 * kToneAmplitude);
}

TEST_F(WrittenFile, ImpossibleRatesAreRefusedInOneSentence) {
    for (const int rate : {-1, 0, 10000000}) {
        const auto writer = AudioFileWriter::open(mPath, rate);
        ASSERT_FALSE(writer);
        EXPECT_FALSE(writer.failure().sentence.isEmpty());
    }
}

TEST_F(WrittenFile, MissingCodecsAreToldInOneSentence) {
    qputenv("CANTOREL_MODULES", "/nowhere");
    const auto writer = AudioFileWriter::open(mPath, 48000);
    ASSERT_FALSE(writer);
    EXPECT_TRUE(Lang::english(writer.failure().sentence).contains("codecs"));
}

using test::contents;
using test::store;

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
    const QString mPath = mFolder.filePath("recording.m4a");
    const QString mCopy = mFolder.filePath("repaired.m4a");
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
