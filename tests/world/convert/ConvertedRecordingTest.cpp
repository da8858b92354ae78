#include "convert/AudioConverter.h"
#include "platform/media/AudioFileWriter.h"
#include "settings/AppSettings.h"
#include "tests/support/Sound.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/types.h>

#include <csignal>

namespace cantorel {
namespace {

using foundation::ChildProcess;
using test::contents;
using test::probed;
using test::store;
using test::tone;

constexpr int kRate = 48000;

class ConvertedRecordingTest : public testing::Test {
protected:
    void SetUp() override {
        auto writer = media::AudioFileWriter::open(mInput, kRate);
        ASSERT_TRUE(writer);
        ASSERT_TRUE(writer.value()->append(tone(kRate * 2, kRate)));
        ASSERT_TRUE(writer.value()->finish());
    }
    // The converter as programs find it, with the arguments.
    ChildProcess::Finished run(const QStringList &arguments, const QStringList &environment = {}) {
        return ChildProcess::run({AppSettings::TessolarConverterPath(), arguments, {}, environment}).value();
    }
    QStringList hidden() const { return QDir(mFolder.path()).entryList({".c*"}, QDir::Files | QDir::Hidden); }
    QString path(const char *name) const { return mFolder.filePath(name); }

    QTemporaryDir mFolder;
    const QString mInput = mFolder.filePath("Track1.m4a");
};

TEST_F(ConvertedRecordingTest, EachIndexGivesItsFormat) {
    const struct {
        int index;
        const char *name;
        const char *stream; // codec, rate, channels
        int bitRate;        // 0: not fixed
    } cases[] = {
        {0, "Track1.mp3", "mp3,44100,2", 320000},
        {1, "Track1(1).mp3", "mp3,44100,2", 128000},
        {4, "Track1.wav", "pcm_s16le,44100,2", 1411200},
        {5, "Track1.aac", "aac,44100,2", 0},
        {6, "Track1(1).aac", "aac,44100,2", 0},
        {7, "Track1(2).aac", "aac,44100,2", 0},
        {8, "Track1.flac", "flac,44100,2", 0},
        {2, "Track1.m4a", "alac,48000,2", 0},
        {3, "Track1.m4a", "alac,48000,2", 0},
    };
    for (const auto &[index, name, stream, bitRate] : cases) {
        SCOPED_TRACE(index);
        const auto converted = AudioConverter::convert_to_format(index, mInput);
        ASSERT_TRUE(converted);
        EXPECT_EQ(*converted, path(name));
        EXPECT_EQ(probed(*converted, "stream=codec_name,sample_rate,channels").toStdString(), stream);
        if (bitRate) {
            EXPECT_EQ(probed(*converted, "stream=bit_rate").toInt(), bitRate);
        }
        if (!converted->endsWith("m4a")) {
            EXPECT_EQ(probed(*converted, "format_tags=major_brand,minor_version,compatible_brands"), QString());
        }
        EXPECT_NEAR(test::decoded(*converted).size() / 2.0, 2.0 * (index == 2 || index == 3 ? kRate : 44100), 3000);
    }
    EXPECT_EQ(hidden(), QStringList());
}

TEST_F(ConvertedRecordingTest, BareBitRateBelowAThousandIsKilobits) {
    for (const char *rate : {"128", "128k", "128000"}) {
        const auto done = run({"-i", mInput, "-acodec", "aac", "-strict", " -2", "-ab", rate, "-y", path("x.m4a")});
        ASSERT_TRUE(done.ending.succeeded()) << done.output.toStdString();
        EXPECT_NE(done.output.indexOf("128 kb/s"), -1) << rate;
    }
}

TEST_F(ConvertedRecordingTest, NamesAreTakenAsTheyStand) {
    for (const char *name : {"it's \"quoted\"", "new\nline", "-dash", "50%d off", "a:b", "$HOME `x` \\", " blank ",
                             "\xC3\xBC\xF0\x9F\x8E\xB5", "*"}) {
        SCOPED_TRACE(name);
        const QString input = path(name) + ".m4a";
        ASSERT_TRUE(QFile::copy(mInput, input));
        const auto converted = AudioConverter::convert_to_format(1, input);
        ASSERT_TRUE(converted);
        EXPECT_EQ(*converted, path(name) + ".mp3");
        EXPECT_EQ(probed(*converted, "stream=codec_name"), "mp3");
    }
    // Names without a folder, too.
    const auto bare = ChildProcess::run(
        {AppSettings::TessolarConverterPath(), {"-i", "-dash.m4a", "-y", "-bare.mp3"}, mFolder.path(), {}});
    EXPECT_TRUE(bare.value().ending.succeeded()) << bare.value().output.toStdString();
    EXPECT_TRUE(QFile::exists(path("-bare.mp3")));
}

TEST_F(ConvertedRecordingTest, FailureLeavesNeitherAResultNorAHiddenFile) {
    store(path("no sound.m4a"), "this is no sound");
    store(path("kept.mp3"), "older");
    EXPECT_FALSE(run({"-i", path("no sound.m4a"), "-y", path("kept.mp3")}).ending.succeeded());
    EXPECT_FALSE(run({"-i", path("missing.m4a"), "-y", path("kept.mp3")}).ending.succeeded());
    EXPECT_FALSE(run({"-i", mInput, "-y", path("kept.unknown")}).ending.succeeded());
    EXPECT_FALSE(run({"-i", mInput, "-y", path("missing/x.mp3")}).ending.succeeded());
    EXPECT_EQ(contents(path("kept.mp3")), "older");
    EXPECT_EQ(hidden(), QStringList());
    const auto missing = run({"-i", mInput, "-y", path("x.mp3")}, {"CANTOREL_FFMPEG=/nowhere/ffmpeg"});
    EXPECT_EQ(missing.ending.exitStatus, 127);
    EXPECT_NE(missing.output.indexOf("ffmpeg is missing"), -1);
}

TEST_F(ConvertedRecordingTest, OutputOntoItselfReplacesTheInputWhole) {
    ASSERT_TRUE(run({"-i", mInput, "-acodec", "alac", "-y", mInput}).ending.succeeded());
    EXPECT_EQ(probed(mInput, "stream=codec_name"), "alac");
}

TEST_F(ConvertedRecordingTest, ConcatListNamesAnyFile) {
    store(path("list.txt"), "file '" + mInput.toUtf8() + "'\nfile '" + mInput.toUtf8() + "'\n");
    const auto joined = run({"-f", "concat", "-i", path("list.txt"), "-c", "copy", "-y", path("joined.m4a")});
    ASSERT_TRUE(joined.ending.succeeded()) << joined.output.toStdString();
    EXPECT_NEAR(probed(path("joined.m4a"), "format=duration").toDouble(), 4, 0.1);
}

TEST_F(ConvertedRecordingTest, InputAloneTellsItsDuration) {
    const auto told = run({"-i", mInput});
    EXPECT_NE(told.ending.exitStatus, 0);
    EXPECT_NE(told.output.indexOf("Duration: 00:00:02.00"), -1) << told.output.toStdString();
}

TEST_F(ConvertedRecordingTest, AskedToEndItTakesFfmpegAndTheHalfFileWithIt) {
    // A stand-in for ffmpeg that begins its output, tells its own number and goes on for ever.
    const QString endless = path("endless");
    store(endless, "#!/bin/sh\nfor out in \"$@\"; do :; done\necho half >\"${out#file:}\"\necho started $$\n"
                   "exec sleep 600\n");
    QFile::setPermissions(endless, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    auto started = ChildProcess::start({AppSettings::TessolarConverterPath(),
                                        {"-i", mInput, "-y", path("x.mp3")},
                                        {},
                                        {"CANTOREL_FFMPEG=" + endless}});
    ASSERT_TRUE(started);
    pid_t inner = 0;
    const auto ending = started.value()->wait([&](const QByteArray &line) {
        if (!line.startsWith("started "))
            return;
        inner = line.mid(8).toInt();
        ::kill(started.value()->pid(), SIGTERM); // the launcher alone, not its group
    });
    EXPECT_EQ(ending.exitStatus, 143);
    ASSERT_GT(inner, 0);
    EXPECT_EQ(::kill(inner, 0), -1) << "ffmpeg outlived its launcher";
    EXPECT_EQ(hidden(), QStringList());
    EXPECT_FALSE(QFile::exists(path("x.mp3")));
}

} // namespace
} // namespace cantorel
