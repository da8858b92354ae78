#include "platform/media/AudioFileWriter.h"

#include "lang/Lang.h"
#include "tests/support/Sound.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>

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
    const QString mPath = mFolder.filePath(QStringLiteral("a b's \"file\".m4a"));
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
    if (frames < 10000)
        return;
    EXPECT_EQ(probed(mPath, "stream=profile"), QStringLiteral("LC"));
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
    EXPECT_EQ(probed(mPath, "stream=sample_rate"), QStringLiteral("96000"));
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
    EXPECT_TRUE(Lang::english(writer.failure().sentence).contains(QStringLiteral("codecs")));
}

} // namespace
} // namespace cantorel::media
