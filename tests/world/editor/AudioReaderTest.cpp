#include "editor/ZQAudioReader.h"
#include "platform/media/asset/OpenAsset.h"
#include "tests/support/MadeSound.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

namespace cantorel {
namespace {

// Counts what a reader tells.
class Listener : public QObject, public AudioReadingDelegate, public AudioInfoDelegate {
public:
    int begun = 0, ended = 0, failed = 0, told = 0;

    void AudioReadingDelegate_BeginReading() override { ++begun; }
    void AudioReadingDelegate_EndReading() override { ++ended; }
    void AudioReadingDelegate_ReadingFailed(const foundation::Sentence &) override { ++failed; }
    void AudioInfoDelegate_AudioEntity(MVMusicEntity *) override { ++told; }
};

bool becomes(const std::function<bool()> &condition) {
    const QDeadlineTimer deadline(60000);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return condition();
}

class AudioReader : public testing::Test {
protected:
    AudioReader() {
        mReader.readingDelegate = &mListener;
        mReader.infoDelegate = &mListener;
    }
    bool read(const QString &path) {
        mReader.setAudioURL(QUrl::fromLocalFile(path));
        mReader.beginReading();
        const int before = mListener.ended + mListener.failed;
        return becomes([&] { return mListener.ended + mListener.failed > before; });
    }
    std::vector<std::int16_t> series() const {
        const QByteArray bytes = mReader.audioWaveData();
        const auto *values = reinterpret_cast<const std::int16_t *>(bytes.constData());
        return {values, values + bytes.size() / 2};
    }

    QString inFolder(const char *name) const { return mFolder.filePath(name); }

    const QTemporaryDir mFolder;
    Listener mListener;
    ZQAudioReader mReader;
};

// Sample by sample.
std::vector<std::int16_t> expectedSeries(const std::vector<std::int16_t> &samples, std::size_t channels) {
    std::vector<std::int16_t> series;
    std::int64_t left = 0, right = 0;
    int counter = 0;
    const std::size_t frames = samples.size() / channels;
    for (std::size_t buffer = 0; buffer < frames; buffer += 8192) {
        const std::int16_t *sample = samples.data() + buffer * channels;
        for (std::size_t i = 0; i < std::min<std::size_t>(8192, frames - buffer); ++i) {
            left += *sample++;
            if (channels == 2)
                right += *sample++;
            if (counter++ < 10)
                continue;
            const auto leftMean = static_cast<int>(left / 11), rightMean = static_cast<int>(right / 11);
            series.push_back(static_cast<std::int16_t>(rightMean != 0 ? (leftMean + rightMean) / 2 : leftMean));
            left = right = counter = 0;
        }
    }
    return series;
}

struct Case {
    const char *name;
    QStringList coder;
    int rate, channels, frames, noiseFrom;
};

class SeriesOf : public AudioReader, public testing::WithParamInterface<Case> {};

TEST_P(SeriesOf, IsWhatStepwiseMeansOfTheDecodedSamplesAre) {
    const Case &made = GetParam();
    const QString path = inFolder(made.name);
    ASSERT_TRUE(test::ffmpeg(test::variedSound(made.frames, made.rate, made.channels, made.noiseFrom) + made.coder
                             + QStringList{path}));
    ASSERT_TRUE(read(path));
    EXPECT_EQ(mListener.ended, 1);
    auto samples = test::decodedSamples(path);
    samples.resize(static_cast<std::size_t>(made.frames * made.channels)); // ffmpeg leaves the padding of a movie's end
    const auto expected = expectedSeries(samples, static_cast<std::size_t>(made.channels));
    const auto own = series();
    ASSERT_EQ(own.size(), expected.size());
    EXPECT_EQ(std::mismatch(own.begin(), own.end(), expected.begin()).first - own.begin(),
              static_cast<std::ptrdiff_t>(own.size()));

    // It is found again when the file has another name, and not when it has other contents.
    const QString other = path + ".renamed" + QString(path).mid(path.lastIndexOf('.'));
    ASSERT_TRUE(QFile::rename(path, other));
    ASSERT_TRUE(read(other));
    EXPECT_EQ(series(), expected);
}

constexpr int kLong = 3000005; // several sections

INSTANTIATE_TEST_SUITE_P(
    All, SeriesOf,
    testing::Values(Case{"mono.wav", {"-c:a", "pcm_s16le"}, 44100, 1, 100003, 0},
                    Case{"stereo.wav", {"-c:a", "pcm_s16le"}, 48000, 2, kLong, 0},
                    Case{"four.wav", {"-c:a", "pcm_s24le"}, 8000, 4, 200003, 0},
                    Case{"mono.flac", {"-c:a", "flac"}, 22050, 1, 100004, 0},
                    Case{"stereo.flac", {"-c:a", "flac"}, 96000, 2, kLong, 0},
                    Case{"four.flac", {"-c:a", "flac", "-sample_fmt", "s32"}, 44100, 4, kLong, 0},
                    Case{"long.mp3", {"-c:a", "libmp3lame", "-q:a", "5"}, 44100, 2, kLong, 0},
                    Case{"plain.m4a", {"-c:a", "aac", "-aac_pns", "0", "-b:a", "256k"}, 44100, 2, kLong, 0},
                    Case{"noise.m4a", {"-c:a", "aac", "-b:a", "96k"}, 44100, 2, kLong, 0},
                    Case{"late.m4a", {"-c:a", "aac", "-b:a", "64k"}, 44100, 1, kLong, 40}),
    [](const auto &info) { return QString(info.param.name).replace('.', '_').toStdString(); });

} // namespace
} // namespace cantorel
