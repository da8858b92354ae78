#include "platform/media/asset/OpenAsset.h"
#include "platform/media/asset/WaveFile.h"
#include "tests/support/MadeSound.h"
#include "tests/support/TestHome.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace cantorel {
namespace {

using namespace media;
using test::ffmpeg;

struct Made {
    const char *name;
    QStringList coder;
    int rate, channels, frames;
    // What is heard of it: all of these frames, as many as ffmpeg decodes, or as many as its container tells in
    // milliseconds.
    enum { AsMade, AsDecoded, AsTold } length;
};

void PrintTo(const Made &made, std::ostream *out) { *out << made.name; }

class AssetOf : public testing::TestWithParam<Made> {
protected:
    QString make() {
        const Made &made = GetParam();
        const QString path = mFolder.filePath(made.name);
        const bool done =
            ffmpeg(test::variedSound(made.frames, made.rate, made.channels) + made.coder + QStringList{path});
        EXPECT_TRUE(done);
        return path;
    }

    const QTemporaryDir mFolder;
};

TEST_P(AssetOf, IsReadToTheFrameAndTheBit) {
    const QString path = make();
    const auto opened = openAsset(QUrl::fromLocalFile(path));
    ASSERT_TRUE(opened);
    const Asset &asset = *opened.value();
    EXPECT_TRUE(asset.isPlayable());
    EXPECT_EQ(asset.format(), (SoundFormat{GetParam().rate, GetParam().channels}));
    auto reader = asset.openSampleReader();
    ASSERT_TRUE(reader);
    const auto channels = static_cast<std::size_t>(asset.format().channels);
    std::vector<std::int16_t> own(static_cast<std::size_t>(reader.value()->frames() + 1) * channels);
    const auto got = reader.value()->read(own.data(), own.size() / channels);
    ASSERT_TRUE(got);
    own.resize(got.value() * channels);

    std::vector<std::int16_t> told = test::decodedSamples(path);
    const std::size_t heard =
        GetParam().length == Made::AsMade ? static_cast<std::size_t>(GetParam().frames) : told.size() / channels;
    EXPECT_EQ(asset.duration().value * static_cast<std::int64_t>(channels), static_cast<std::int64_t>(own.size()));
    if (GetParam().length == Made::AsTold) {
        EXPECT_NEAR(own.size() / channels, heard, 2048);
        own.resize(std::min(own.size(), told.size()));
    } else {
        ASSERT_EQ(own.size(), heard * channels);
    }
    ASSERT_GE(told.size(), own.size());
    told.resize(own.size()); // ffmpeg leaves what pads the last packet of a movie
    EXPECT_EQ(std::mismatch(own.begin(), own.end(), told.begin()).first - own.begin(),
              static_cast<std::ptrdiff_t>(own.size()));
}

TEST_P(AssetOf, GivesTheSameFromAnyFrame) {
    const auto opened = openAsset(QUrl::fromLocalFile(make()));
    ASSERT_TRUE(opened);
    const int rate = GetParam().rate;
    for (const SoundFormat format : {SoundFormat{rate, 2}, SoundFormat{rate == 48000 ? 44100 : 48000, 1}}) {
        auto reader = opened.value()->openReader(format);
        ASSERT_TRUE(reader);
        FrameReader &frames = *reader.value();
        EXPECT_EQ(frames.frames(), opened.value()->duration().in(format.rate).value);
        const auto width = static_cast<std::size_t>(format.channels);
        const auto count = static_cast<std::size_t>(frames.frames());
        std::vector<float> all(count * width);
        ASSERT_EQ(frames.read(all.data(), count).value(), count);
        ASSERT_EQ(frames.read(all.data(), 1).value(), 0u);
        std::mt19937 random(7);
        for (int i = 0; i < 40; ++i) {
            const std::size_t from = i == 0 ? 0 : random() % count;
            const std::size_t length = std::min<std::size_t>(1 + random() % 5000, count - from);
            std::vector<float> part(length * width);
            frames.seek(static_cast<std::int64_t>(from));
            ASSERT_EQ(frames.read(part.data(), length).value(), length);
            ASSERT_TRUE(std::equal(part.begin(), part.end(), all.begin() + static_cast<std::ptrdiff_t>(from * width)))
                << "from frame " << from << " at " << format.rate;
        }
    }
}

const QStringList kNoNoise = {"-c:a", "aac", "-aac_pns", "0"};

INSTANTIATE_TEST_SUITE_P(
    All, AssetOf,
    testing::Values(
        Made{"s16.wav", {"-c:a", "pcm_s16le"}, 44100, 2, 100003, Made::AsMade},
        Made{"u8.wav", {"-c:a", "pcm_u8"}, 8000, 1, 30001, Made::AsMade},
        Made{"s24.wav", {"-c:a", "pcm_s24le"}, 48000, 2, 50021, Made::AsMade},
        Made{"s32.wav", {"-c:a", "pcm_s32le"}, 96000, 4, 50021, Made::AsMade},
        Made{"float.wav", {"-c:a", "pcm_f32le"}, 22050, 1, 50021, Made::AsMade},
        Made{"rf64.wav", {"-c:a", "pcm_s16le", "-rf64", "always"}, 44100, 2, 70001, Made::AsMade},
        Made{"big.aiff", {"-c:a", "pcm_s16be"}, 44100, 2, 70001, Made::AsMade},
        Made{"mono.flac", {"-c:a", "flac"}, 44100, 1, 90001, Made::AsMade},
        Made{"stereo.flac", {"-c:a", "flac"}, 48000, 2, 90007, Made::AsMade},
        Made{"four.flac", {"-c:a", "flac", "-sample_fmt", "s32"}, 96000, 4, 90001, Made::AsMade},
        Made{"cbr.mp3", {"-c:a", "libmp3lame", "-b:a", "320k"}, 44100, 2, 200003, Made::AsMade},
        Made{"vbr.mp3", {"-c:a", "libmp3lame", "-q:a", "6"}, 48000, 2, 200003, Made::AsMade},
        Made{"low.mp3", {"-c:a", "libmp3lame", "-b:a", "32k"}, 22050, 1, 200003, Made::AsMade},
        Made{"bare.mp3", {"-c:a", "libmp3lame", "-b:a", "128k", "-write_xing", "0"}, 44100, 2, 90001, Made::AsDecoded},
        Made{"plain.m4a", kNoNoise, 44100, 2, 200003, Made::AsMade},
        Made{"mono.m4a", kNoNoise, 48000, 1, 100003, Made::AsMade},
        Made{"pieces.m4a", kNoNoise + QStringList{"-movflags", "frag_keyframe+empty_moov"}, 44100, 2, 100003,
             Made::AsDecoded},
        Made{"film.mp4",
             QStringList{"-f", "lavfi", "-i", "testsrc=d=2:s=64x64", "-map", "1:v", "-map", "0:a"} + kNoNoise, 44100, 2,
             100003, Made::AsMade},
        Made{"lossless.m4a", {"-c:a", "alac"}, 44100, 2, 100003, Made::AsMade},
        Made{"samples.mov", {"-c:a", "pcm_s16le"}, 44100, 2, 100003, Made::AsMade},
        Made{"bare.aac", kNoNoise, 44100, 2, 90001, Made::AsDecoded},
        Made{"speech.wma", {"-c:a", "wmav2"}, 44100, 2, 90001, Made::AsTold},
        Made{"free.ogg", {"-c:a", "libvorbis"}, 44100, 2, 90001, Made::AsDecoded},
        Made{"free.opus", {"-c:a", "libopus"}, 48000, 2, 90001, Made::AsDecoded}),
    [](const auto &info) {
        QString name = info.param.name;
        return name.replace('.', '_').toStdString();
    });

// Only sound without noise that the decoder makes up can be read by several at once.
TEST(Asset, KnowsWhenSoundDependsOnAllBeforeIt) {
    const QTemporaryDir folder;
    for (const bool hasNoise : {false, true}) {
        const QString path = folder.filePath(hasNoise ? "noise.m4a" : "plain.m4a");
        ASSERT_TRUE(ffmpeg(test::variedSound(400000, 44100, 2, 1) + QStringList{"-b:a", "96k", "-aac_pns"}
                           + QStringList{hasNoise ? "1" : "0", path}));
        auto reader = openAsset(QUrl::fromLocalFile(path)).value()->openSampleReader();
        std::vector<std::int16_t> part(2 * 100000);
        EXPECT_FALSE(reader.value()->needsAllBefore()) << "nothing is read yet";
        for (const int from : {0, 200000}) {
            reader.value()->seek(from);
            ASSERT_EQ(reader.value()->read(part.data(), 100000).value(), 100000u);
            EXPECT_EQ(reader.value()->needsAllBefore(), hasNoise) << "from frame " << from;
        }
    }
}

TEST(Asset, NoiseOfACoderIsTheSameWhereverReadingBegins) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("noise.m4a");
    ASSERT_TRUE(ffmpeg(test::variedSound(400000, 44100, 2, 1) + QStringList{"-b:a", "96k", "-aac_pns", "1", path}));
    const auto asset = openAsset(QUrl::fromLocalFile(path)).value();
    for (const int rate : {44100, 48000}) {
        const SoundFormat format{rate, 2};
        auto reader = asset->openReader(format).value();
        std::vector<float> whole(2 * static_cast<std::size_t>(reader->frames())), part(2 * 90000);
        for (std::size_t done = 0; done < whole.size();)
            done += 2 * reader->read(whole.data() + done, whole.size() / 2 - done / 2).value();
        const auto isTheSame = [&](FrameReader &from, std::int64_t frame) {
            from.seek(frame);
            EXPECT_EQ(from.read(part.data(), part.size() / 2).value(), part.size() / 2);
            return std::equal(part.begin(), part.end(), whole.begin() + 2 * frame);
        };
        auto other = asset->openReader(format).value();
        for (const std::int64_t frame : {150000, 310000, 20000, 300000, 0}) // forwards, back, within what was decoded
            EXPECT_TRUE(isTheSame(*other, frame)) << frame << " at " << rate;
        other = asset->openReader(format).value();
        other->hurry();
        EXPECT_FALSE(isTheSame(*other, 150000)) << "there is noise";
    }
}

TEST(Asset, TheFirstTrackOfSoundIsTakenWhateverStandsBeforeIt) {
    const QTemporaryDir folder;
    for (const char *name : {"film.mp4", "film.mkv", "film.m4a"}) {
        const QString path = folder.filePath(name);
        ASSERT_TRUE(ffmpeg({"-f",   "lavfi", "-i",   "testsrc=d=1:s=64x64",
                            "-f",   "lavfi", "-i",   "sine=440:r=44100:d=1",
                            "-f",   "lavfi", "-i",   "sine=880:r=48000:d=2",
                            "-map", "0",     "-map", "1",
                            "-map", "2",     "-f",   QString(name).endsWith("mkv") ? "matroska" : "mp4",
                            path}));
        const auto asset = openAsset(QUrl::fromLocalFile(path));
        ASSERT_TRUE(asset) << name;
        EXPECT_EQ(asset.value()->format().rate, 44100) << name;
        EXPECT_NEAR(asset.value()->duration().seconds(), 1, 0.1) << name;
    }
}

TEST(Asset, ADamagedFlacKeepsWhatLiesBehindTheDamage) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("whole.flac"), damaged = folder.filePath("damaged.flac");
    ASSERT_TRUE(ffmpeg(test::variedSound(300000, 44100, 2) + QStringList{path}));
    QByteArray bytes = test::contents(path);
    bytes.remove(bytes.size() / 3, 50000); // some frames
    QFile file(damaged);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    const auto asset = openAsset(QUrl::fromLocalFile(damaged));
    ASSERT_TRUE(asset);
    EXPECT_GT(asset.value()->duration().value, 300000 - 8 * 4608);
    auto whole = openAsset(QUrl::fromLocalFile(path)).value()->openSampleReader();
    auto part = asset.value()->openSampleReader();
    std::vector<std::int16_t> end(2 * 50000), expected(end.size());
    whole.value()->seek(250000);
    part.value()->seek(asset.value()->duration().value - 50000);
    ASSERT_EQ(whole.value()->read(expected.data(), 50000).value(), 50000u);
    ASSERT_EQ(part.value()->read(end.data(), 50000).value(), 50000u);
    EXPECT_EQ(end, expected);
}

QByteArray little(std::int64_t number, int bytes) {
    QByteArray text;
    for (int i = 0; i < bytes; ++i, number >>= 8)
        text += static_cast<char>(number);
    return text;
}
QByteArray chunk(const char *name, const QByteArray &bytes, std::int64_t size = -1) {
    return name + little(size < 0 ? bytes.size() : size, 4) + bytes + QByteArray(bytes.size() % 2, '\0');
}
QByteArray format(int kind, int channels, int rate, int bits) {
    const int frame = channels * bits / 8;
    return little(kind, 2) + little(channels, 2) + little(rate, 4) + little(rate * frame, 4) + little(frame, 2)
           + little(bits, 2);
}
QByteArray riff(const QByteArray &chunks) { return chunk("RIFF", "WAVE" + chunks); }
QByteArray extensible(int channels, int bits, int valid, const char *guid = "0100000000001000800000aa00389b71") {
    return format(0xFFFE, channels, 48000, bits) + little(22, 2) + little(valid, 2) + little(0, 4)
           + QByteArray::fromHex(guid);
}

// Whoever reads it, by the module or without: what ffmpeg decodes of it, or nothing where ffmpeg refuses it.
TEST(Asset, AWaveFileIsWhatItsHeadersSayHoweverStrangeTheyAre) {
    std::mt19937 random(3);
    QByteArray noise(30011, '\0');
    for (char &byte : noise)
        byte = static_cast<char>(random());
    noise[0] = 1; // no coder's mark
    const QByteArray even = noise.left(30000), data = chunk("data", even),
                     stereo = chunk("fmt ", format(1, 2, 44100, 16));
    const auto longHeader = [&](std::int64_t bytes, int size = 28) {
        return "RF64" + little(-1, 4) + "WAVE"
               + chunk("ds64", (little(0, 8) + little(bytes, 8) + little(0, 12)).leftJustified(size, '\0', true));
    };
    QByteArray slow = format(1, 2, 44100, 16), wide = slow;
    slow.replace(8, 4, little(44100, 4));
    wide.replace(12, 2, little(8, 2));
    const struct {
        const char *name;
        QByteArray bytes;
    } cases[] = {
        {"whole", riff(stereo + data)},
        {"8 bit", riff(chunk("fmt ", format(1, 1, 8000, 8)) + data)},
        {"24 bit of three channels, and a part of a frame", riff(chunk("fmt ", format(1, 3, 96000, 24)) + data)},
        {"32 bit", riff(chunk("fmt ", format(1, 2, 48000, 32) + little(0, 2)) + data)},
        {"floats", riff(chunk("fmt ", format(3, 2, 48000, 32)) + data)},
        {"logarithms", riff(chunk("fmt ", format(7, 2, 8000, 8)) + data)},
        {"extensible", riff(chunk("fmt ", extensible(2, 16, 16)) + data)},
        {"extensible, 20 of 24 bit", riff(chunk("fmt ", extensible(2, 24, 20)) + data)},
        {"extensible floats", riff(chunk("fmt ", extensible(2, 32, 32, "0300000000001000800000aa00389b71")) + data)},
        {"extensible, of nobody knows what",
         riff(chunk("fmt ", extensible(2, 16, 16, "0100000000001000800000aa00389b70")) + data)},
        {"texts around it", riff(chunk("JUNK", "abc") + stereo + chunk("LIST", "INFOINAM" + little(3, 4) + "abc") + data
                                 + chunk("LIST", "INFO"))},
        {"a text that is none", riff(stereo + chunk("LIST", "abc") + data)},
        {"a short history", riff(stereo + chunk("bext", "abc") + data)},
        {"odd, with more behind",
         riff(chunk("fmt ", format(1, 1, 8000, 8)) + chunk("data", noise) + chunk("LIST", "INFO"))},
        {"more promised than there is", riff(stereo + chunk("data", noise, 1000000))},
        {"less told than there is", riff(stereo + chunk("data", even, 20000))},
        {"of unknown size", riff(stereo + chunk("data", even, 0xFFFFFFFF))},
        {"of no size", riff(stereo + chunk("data", even, 0))},
        {"less than a frame", riff(stereo + chunk("data", "abc"))},
        {"nothing", riff(stereo + chunk("data", ""))},
        {"sound before its format", riff(data + stereo)},
        {"two formats", riff(stereo + chunk("fmt ", format(1, 1, 8000, 8)) + data)},
        {"two sounds", riff(stereo + data + chunk("data", even.right(10000)))},
        {"two sounds, the first one empty", riff(stereo + chunk("data", "ab") + data)},
        {"no format", riff(data)},
        {"no channels", riff(chunk("fmt ", format(1, 0, 44100, 16)) + data)},
        {"bytes a second that are not true", riff(chunk("fmt ", slow) + data)},
        {"frames that are not true", riff(chunk("fmt ", wide) + data)},
        {"a length that is not true", riff(stereo + chunk("fact", little(100, 4)) + data)},
        {"long", longHeader(even.size()) + stereo + chunk("data", even, -1 & 0xFFFFFFFF)},
        {"long, with another length", longHeader(10000) + stereo + data},
        {"long, with a length beyond all", longHeader(INT64_MAX) + stereo + data},
        {"long, with a length below 0", longHeader(-4) + stereo + data},
        {"long, with too little", longHeader(even.size(), 20) + stereo + data},
        {"with its highest byte first", "RIFX" + riff(stereo + data).mid(4)},
    };
    const QTemporaryDir folder;
    const QString path = folder.filePath("strange.wav");
    for (const auto &[name, bytes] : cases) {
        test::store(path, bytes);
        if (QStringList{"whole", "8 bit", "32 bit", "extensible", "texts around it", "odd, with more behind",
                        "more promised than there is", "long"}
                .contains(name)) {
            EXPECT_TRUE(findWaveSound(*SourceFile::open(path).value())) << name << ": without the module";
        }
        const auto expected = test::decodedSamples(path);
        const auto asset = openAsset(QUrl::fromLocalFile(path));
        const auto reader =
            asset && asset.value()->isPlayable() ? asset.value()->openSampleReader() : foundation::Failure{};
        if (!reader) {
            EXPECT_TRUE(expected.empty()) << name;
            continue;
        }
        std::vector<std::int16_t> own(expected.size() + 1000);
        const auto channels = static_cast<std::size_t>(reader.value()->format().channels);
        own.resize(channels * reader.value()->read(own.data(), own.size() / channels).value());
        EXPECT_EQ(own, expected) << name;
        EXPECT_EQ(asset.value()->duration().value * std::int64_t(channels), std::int64_t(expected.size())) << name;
    }
}

// What is burnt on a disc for a decoder behind it.
TEST(Asset, CodedSoundInAWaveFileIsDecoded) {
    const QTemporaryDir folder;
    const QString raw = folder.filePath("raw"), path = folder.filePath("coded.wav");
    for (const QStringList &coder :
         {QStringList{"-c:a", "dca", "-strict", "-2", "-f", "dts"}, QStringList{"-c:a", "ac3", "-f", "ac3"},
          QStringList{"-c:a", "ac3", "-f", "spdif"},
          QStringList{"-c:a", "libmp3lame", "-write_xing", "0", "-id3v2_version", "0", "-f", "mp3"}}) {
        ASSERT_TRUE(ffmpeg(test::variedSound(200000, 48000, 2) + coder + QStringList{raw}));
        test::store(path, riff(chunk("fmt ", format(1, 2, 48000, 16)) + chunk("data", test::contents(raw))));
        const auto asset = openAsset(QUrl::fromLocalFile(path));
        ASSERT_TRUE(asset);
        EXPECT_NEAR(asset.value()->duration().value, 200000, 10000) << coder.join(' ').toStdString();
        std::vector<std::int16_t> own(2 * 50000), expected = test::decodedSamples(path);
        ASSERT_EQ(asset.value()->openSampleReader().value()->read(own.data(), 50000).value(), 50000u);
        expected.resize(own.size());
        EXPECT_EQ(own, expected) << coder.join(' ').toStdString();
    }
}

} // namespace
} // namespace cantorel
