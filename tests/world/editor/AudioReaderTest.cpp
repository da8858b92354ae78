#include "editor/ZQAudioReader.h"
#include "platform/media/asset/OpenAsset.h"
#include "tests/support/MadeSound.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
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

void append(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write(bytes);
}

TEST_F(AudioReader, WhatCantBeReadIsOverAndSaysWhy) {
    const QString sound = inFolder("sound.m4a"), text = inFolder("text.mp3"), film = inFolder("film.mp4");
    ASSERT_TRUE(test::ffmpeg(test::variedSound(50000, 44100, 1) + QStringList{sound}));
    ASSERT_TRUE(test::ffmpeg({"-f", "lavfi", "-i", "testsrc=d=1:s=64x64", film}));
    append(text, "This is no sound.");
    // One that is cut off in front of its table, and one whose samples only their owner may decode.
    const QByteArray bytes = test::contents(sound);
    const QString cut = inFolder("cut.m4a"), locked = inFolder("locked.m4a");
    append(cut, bytes.left(bytes.lastIndexOf("moov") - 4));
    append(locked, QByteArray(bytes).replace(bytes.lastIndexOf("mp4a"), 4, "enca"));
    // One that claims a rate of 121 million, which no resampler bears.
    const QString fast = inFolder("fast.wav");
    ASSERT_TRUE(test::ffmpeg({"-i", sound, fast}));
    QFile header(fast);
    ASSERT_TRUE(header.open(QIODevice::ReadWrite) && header.seek(24) && header.write("\x40\xFC\x3A\x07") == 4);
    header.close();
    int ended = 0;
    for (const QString &path : {fast, text, film, cut, locked, inFolder("missing.wav")}) {
        ASSERT_TRUE(read(path)) << path.toStdString();
        EXPECT_EQ(mListener.ended, ++ended);
        EXPECT_EQ(mListener.told, ended);
        EXPECT_TRUE(mReader.failure()) << path.toStdString();
        EXPECT_TRUE(series().empty());
    }
    EXPECT_TRUE(media::openAsset(QUrl::fromLocalFile(locked)).value()->hasProtectedContent());
    EXPECT_EQ(mListener.failed, 0);

    // What has no file changes nothing.
    ASSERT_TRUE(read(sound));
    mReader.setAudioURL(QUrl("http://localhost/sound.mp3"));
    EXPECT_EQ(mReader.audioURL(), QUrl::fromLocalFile(sound));
    EXPECT_FALSE(series().empty());
}

TEST_F(AudioReader, AChangedFileFailsWithoutAnEnd) {
    const QString path = inFolder("sound.wav");
    ASSERT_TRUE(test::ffmpeg(test::variedSound(50000, 44100, 2) + QStringList{path}));
    mReader.setAudioURL(QUrl::fromLocalFile(path));
    ASSERT_TRUE(mReader.audioAsset()); // opened now
    append(path, "more");
    mReader.beginReading();
    ASSERT_TRUE(becomes([this] { return mListener.failed == 1; }));
    EXPECT_EQ(mListener.ended, 0);
    EXPECT_FALSE(mReader.isReading());
    // One that only lost its name is still the same.
    ASSERT_TRUE(read(path));
    const auto asset = mReader.audioAsset();
    ASSERT_TRUE(QFile::remove(path));
    mReader.setAudioAsset(asset);
    mReader.beginReading();
    EXPECT_TRUE(becomes([this] { return mListener.ended == 2; }));
}

TEST_F(AudioReader, WhatIsCutOffIsReadAsFarAsItGoes) {
    for (const char *name : {"sound.wav", "sound.flac", "sound.mp3"}) {
        const QString whole = inFolder(name), part = inFolder((QByteArray("part-") + name).constData());
        ASSERT_TRUE(test::ffmpeg(test::variedSound(200000, 44100, 2) + QStringList{whole}));
        const QByteArray bytes = test::contents(whole);
        append(part, bytes.left(bytes.size() * 2 / 3 + 1));
        ASSERT_TRUE(read(whole));
        const auto all = series();
        ASSERT_TRUE(read(part));
        const auto some = series();
        EXPECT_GT(some.size(), all.size() / 2) << name;
        EXPECT_LT(some.size(), all.size() * 3 / 4) << name;
        EXPECT_TRUE(std::equal(some.begin(), some.end() - 200, all.begin())) << name; // the cut packet is silent
    }
}

TEST_F(AudioReader, WhatALaterReadingHasOvertakenIsNotTold) {
    const QString first = inFolder("long.flac"), second = inFolder("short.wav");
    ASSERT_TRUE(test::ffmpeg(test::variedSound(3000000, 48000, 1) + QStringList{first}));
    ASSERT_TRUE(test::ffmpeg(test::variedSound(568601, 44100, 1) + QStringList{second})); // 12.9 s
    mReader.setAudioURL(QUrl::fromLocalFile(first));
    mReader.beginReading();
    ASSERT_TRUE(read(second));
    EXPECT_EQ(mListener.ended, 1);
    EXPECT_EQ(series().size(), 568601u / 11);
    EXPECT_EQ(mReader.duration(), 12.0);
    EXPECT_EQ(mReader.fileSize(), 2 * 568601);

    mReader.setAudioURL(QUrl::fromLocalFile(first));
    mReader.beginReading();
    ASSERT_TRUE(becomes([this] { return !mReader.preview().isEmpty() || mListener.ended > 1; }));
    mReader.cancel();
    EXPECT_FALSE(mReader.isReading());
    ASSERT_TRUE(read(second));
    EXPECT_LE(mListener.ended, 3); // that of the long one may have been told before it was cancelled
    EXPECT_EQ(series().size(), 568601u / 11);
}

TEST_F(AudioReader, ALongSeriesIsFoundAgainUntilTheFileIsAnother) {
    const QString path = inFolder("long.wav"), folder = inFolder("levels");
    ASSERT_TRUE(test::ffmpeg(test::variedSound(3000000, 44100, 1) + QStringList{path}));
    QFile sound(path);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'700'000'000); // which can be set again to the nanosecond
    ASSERT_TRUE(sound.open(QIODevice::ReadWrite) && sound.setFileTime(time, QFileDevice::FileModificationTime));
    ZQAudioReader reader(folder);
    reader.readingDelegate = &mListener;
    const auto kept = [&folder] { return QDir(folder).entryList({"*.levels"}, QDir::Files); };
    const auto readAgain = [&] {
        const int before = mListener.ended;
        reader.setAudioURL(QUrl::fromLocalFile(path));
        reader.beginReading();
        return becomes([&] { return mListener.ended > before; });
    };
    ASSERT_TRUE(readAgain());
    ASSERT_EQ(kept().size(), 1);
    // What is kept is what is shown.
    QFile file(folder + '/' + kept().front());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(4096) && file.write("\x34\x12") == 2);
    file.close();
    ASSERT_TRUE(readAgain());
    EXPECT_EQ(reader.audioWaveData().left(2), "\x34\x12");
    // A damaged one is none, and other contents of the same length and time are others.
    ASSERT_TRUE(QFile::resize(folder + '/' + kept().front(), 5000));
    ASSERT_TRUE(readAgain());
    EXPECT_EQ(reader.audioWaveData().size(), 3000000 / 11 * 2);
    EXPECT_NE(reader.audioWaveData().left(2), "\x34\x12");
    ASSERT_TRUE(sound.seek(1000) && sound.write(QByteArray(400, '\x11')) == 400 && sound.flush());
    ASSERT_TRUE(sound.setFileTime(time, QFileDevice::FileModificationTime));
    sound.close();
    ASSERT_TRUE(readAgain());
    EXPECT_EQ(*(reinterpret_cast<const std::int16_t *>(reader.audioWaveData().constData()) + 50), 0x1111);
}

TEST_F(AudioReader, AnEntityTellsWhatTheFileSays) {
    const QString sound = inFolder("Song.MP3"), plain = inFolder("plain.wav"), cover = inFolder("cover.png");
    ASSERT_TRUE(test::ffmpeg({"-f", "lavfi", "-i", "testsrc=d=1:s=64x64", "-frames:v", "1", cover}));
    ASSERT_TRUE(test::ffmpeg(test::variedSound(127890, 44100, 2) + QStringList{plain}));
    ASSERT_TRUE(test::ffmpeg(
        {"-i",        plain,        "-i",        cover,        "-map",        "0:a",       "-map",
         "1:v",       "-c:v",       "copy",      "-metadata",  "title=Abend", "-metadata", "artist=Quartet",
         "-metadata", "album=Live", "-metadata", "genre=Jazz", "-f",          "mp3",       sound}));
    const auto entity = MVMusicEntity::entityForURL(QUrl::fromLocalFile(sound));
    ASSERT_TRUE(entity);
    EXPECT_EQ((QStringList{entity->title(), entity->artist(), entity->album(), entity->type()}),
              (QStringList{"Abend", "Quartet", "Live", "Jazz"}));
    EXPECT_EQ(entity->image(), test::contents(cover));
    EXPECT_NEAR(entity->duration(), 2.9, 0.001); // ffmpeg pads one with a picture by a few frames more
    EXPECT_FALSE(MVMusicEntity::entityForURL(QUrl::fromLocalFile(plain)));
    const MVMusicEntity wave(QUrl::fromLocalFile(plain));
    EXPECT_TRUE(wave.title().isEmpty());
    EXPECT_TRUE(wave.image().contains("<svg"));
    EXPECT_EQ(wave.image().constData(), wave.image().constData());
    const QString uris = wave.writableTypesForPasteboard().value(0);
    const auto dropped = MVMusicEntity::initWithPasteboardPropertyList(wave.pasteboardPropertyListForType(uris), uris);
    ASSERT_TRUE(dropped);
    EXPECT_EQ(dropped->fileURL, wave.fileURL);
}

} // namespace
} // namespace cantorel
