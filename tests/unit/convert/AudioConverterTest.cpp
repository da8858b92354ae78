#include "convert/AudioConverter.h"

#include "convert/ConverterOutputParser.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Wave.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace cantorel {
namespace {

using test::contents;
using test::store;
using test::storeProgram;

// Counts the seconds that were waited, and does something after some of them.
class CountingClock : public foundation::Clock {
public:
    Duration now() const override { return mNow; }
    void sleepFor(Duration duration) override {
        mNow += duration;
        if (whenWaited)
            whenWaited(std::chrono::duration_cast<std::chrono::seconds>(mNow).count());
    }
    std::function<void(std::int64_t)> whenWaited;

private:
    Duration mNow{0};
};

class AudioConverterTest : public testing::Test {
protected:
    void SetUp() override { store(mInput, mRecording); }

    // A converter made of one line of shell; $in is the recording, $out what shall be its successor.
    QString converter(const QByteArray &line) {
        const QString path = mFolder.filePath("converter");
        storeProgram(path, "#!/bin/sh\nout=$CANTOREL_CONVERT_INTO in=$2\n" + line + "\n");
        return path;
    }
    foundation::Result<QString> convert(int index, const QString &program,
                                        std::optional<foundation::Clock::Duration> limit = {}) {
        return AudioConverter::convertRecording(index, mInput, {program, limit}, mClock);
    }
    QString path(const char *name) const { return mFolder.filePath(name); }

    // All there is but the converter.
    QStringList files() const {
        QStringList names = QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
        names.removeOne("converter");
        return names;
    }

    QTemporaryDir mFolder;
    const QByteArray mRecording = test::wave(std::vector<float>(2 * 48000 * 2));
    const QString mInput = mFolder.filePath("Track1.m4a");
    CountingClock mClock;
};

TEST_F(AudioConverterTest, ArgumentsFollowTheIndex) {
    const struct {
        int index;
        const char *arguments; // between the input and "-y"; joined by "|"
    } cases[] = {
        {0, "-ab|320k|-ac|2|-ar|44100"},
        {1, "-ab|128k|-ac|2|-ar|44100"},
        {2, "-acodec|alac"},
        {3, "-acodec|alac"},
        {4, "-ac|2|-ar|44100"},
        {5, "-acodec|aac|-strict| -2|-ab|320k|-ac|2|-ar|44100"},
        {6, "-acodec|aac|-strict| -2|-ab|256k|-ac|2|-ar|44100"},
        {7, "-acodec|aac|-strict| -2|-ab|128|-ac|2|-ar|44100"},
        {8, "-ab|320k|-ac|2|-ar|44100"},
        {-1, "-ab|128k|-ac|2|-ar|44100"},
    };
    for (const auto &[index, arguments] : cases)
        EXPECT_EQ(AudioConverter::recordingArguments(index, "in", "out").join('|').toStdString(),
                  std::string("-i|in|") + arguments + "|-y|out")
            << index;
}

TEST_F(AudioConverterTest, ResultGetsAFreeNameAndTheRecordingStays) {
    store(path("Track1.mp3"), "older");
    const auto converted = convert(0, converter("cp \"$in\" \"$out\""));
    ASSERT_TRUE(converted);
    EXPECT_EQ(converted.value(), path("Track1(1).mp3"));
    EXPECT_EQ(contents(path("Track1.mp3")), "older");
    EXPECT_EQ(contents(mInput), mRecording);
}

TEST_F(AudioConverterTest, WhatTakesTheNameMeanwhileStays) {
    const QByteArray name = QFile::encodeName(path("Track1.mp3"));
    const auto converted = convert(0, converter("cp \"$in\" \"$out\"; echo other >'" + name + "'"));
    ASSERT_TRUE(converted);
    EXPECT_EQ(converted.value(), path("Track1(1).mp3"));
    EXPECT_EQ(contents(path("Track1.mp3")), "other\n");
    // A dangling link is no free name either.
    const auto other = convert(4, converter("cp \"$in\" \"$out\"; ln -s nowhere \"${in%m4a}wav\""));
    EXPECT_FALSE(other);
    EXPECT_EQ(files(), QStringList({"Track1(1).mp3", "Track1.m4a", "Track1.mp3", "Track1.wav"}));
}

TEST_F(AudioConverterTest, LosslessResultTakesTheRecordingsName) {
    store(path("Track1_m4a.m4a"), "someone's own");
    const auto converted = convert(2, converter("cp \"$in\" \"$out\"; printf more >>\"$out\""));
    ASSERT_TRUE(converted);
    EXPECT_EQ(converted.value(), mInput);
    EXPECT_EQ(contents(mInput), mRecording + "more");
    EXPECT_EQ(contents(path("Track1_m4a.m4a")), "someone's own");
    // But it takes the place of no other file.
    store(mInput, mRecording);
    EXPECT_FALSE(convert(2, converter("cp \"$in\" \"$out\"; rm \"$in\"; cp \"$out\" \"$in\"; printf new >>\"$in\"")));
    EXPECT_EQ(contents(mInput), mRecording + "new");
}

// Whatever the converter does wrong, also with the exit status 0, there is one sentence, the recording is what it was,
// and nothing else is left.
TEST_F(AudioConverterTest, FailingConverterNeverCostsTheRecording) {
    for (const char *line : {"exit 1", "cp \"$in\" \"$out\"; exit 3", "kill -9 $$", ": >\"$out\"", "true",
                             "cp \"$in\" \"$out\"; kill -TERM $$", "echo no sound >\"$out\"", "rm \"$out\"",
                             "head -c 60000 \"$in\" >\"$out\"", "rm \"$out\"; cp \"$in\" \"$out\"",
                             "rm \"$out\"; ln -s \"$in\" \"$out\""}) {
        for (const int index : {0, 2, 4, 7}) {
            SCOPED_TRACE(line);
            const auto converted = convert(index, converter(line));
            ASSERT_FALSE(converted);
            EXPECT_FALSE(converted.failure().sentence.isEmpty());
            EXPECT_EQ(contents(mInput), mRecording);
            for (const QString &name : files())
                EXPECT_TRUE(name == "Track1.m4a" || QFile::remove(path(name.toUtf8()))) << name.toStdString();
        }
    }
}

TEST_F(AudioConverterTest, HangingConverterIsEnded) {
    const auto converted = convert(2, converter("exec sleep 600"), std::chrono::milliseconds(100));
    ASSERT_FALSE(converted);
    EXPECT_TRUE(converted.failure().detail.contains("too long"));
    EXPECT_EQ(contents(mInput), mRecording);
}

TEST_F(AudioConverterTest, TimeForAConversionGrowsWithTheRecording) {
    using namespace std::chrono_literals;
    for (const auto &[bytes, least, most] :
         {std::tuple{0LL, 60s, 300s}, {32LL << 20, 1000s, 8000s}, {1LL << 32, 37h, 150h}}) {
        QFile file(mInput);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(bytes)); // takes no room on the disk
        EXPECT_GT(Converter::usualLimit({mInput}), least) << bytes;
        EXPECT_LT(Converter::usualLimit({mInput}), most) << bytes;
    }
}

TEST_F(AudioConverterTest, MissingConverterIsToldAtOnce) {
    const auto converted = convert(0, path("nothing"));
    ASSERT_FALSE(converted);
    EXPECT_EQ(mClock.now(), foundation::Clock::Duration(0));
}

TEST_F(AudioConverterTest, InputMayAppearWithinThirtySeconds) {
    for (const auto &[appearsAfter, converts] : {std::pair{1, true}, {29, true}, {30, false}}) {
        QFile::remove(mInput);
        CountingClock clock;
        clock.whenWaited = [&, when = appearsAfter](std::int64_t waited) {
            if (waited == when)
                store(mInput, mRecording);
        };
        const auto converted = AudioConverter::convertRecording(4, mInput, {converter("cp \"$in\" \"$out\"")}, clock);
        EXPECT_EQ(converted.ok(), converts) << appearsAfter;
        EXPECT_EQ(clock.now(), std::chrono::seconds(appearsAfter));
    }
}

TEST(ConverterOutputParser, ProgressIsToldOnlyWhereItIsKnown) {
    const struct {
        const char *text;
        int duration;
        std::optional<double> percent;
    } cases[] = {
        {"size= 1406kB time=00:01:30.00 bitrate= 128.0kbits/s speed=  60x", 180, 50},
        {"size=N/A time= 00:00:45.99", 180, 25},
        {"size=1kB time=00:03:00.00", 180, {}}, // not below the duration
        {"size=1kB time=00:01:30.00", 0, {}},
        {"size=1kB time=N/A bitrate=N/A", 180, {}},
        {"", 180, {}},
        {"size=1kB time=-00:00:00.02", 180, {}},
        {"Input #0, mp3, from 'size= time=00:01:30.mp3':", 180, {}}, // what a file is called
    };
    for (const auto &[text, duration, percent] : cases)
        EXPECT_EQ(ConverterOutputParser::progress(text, duration), percent) << text;
}

TEST(ConverterOutputParser, OnlyTheLinesOfTheConverterItselfTellOfAFile) {
    for (const auto &[line, duration, sound] : {std::tuple{"  Duration: 00:03:25.31, start: 0.0", "00:03:25", false},
                                                {"  Duration: N/A, bitrate: N/A", "", false},
                                                {"Input #0, mp3, from 'My Duration 12 mix.mp3':", "", false},
                                                {"    title           :   Duration: 12", "", false},
                                                {"  Stream #0:0: Audio: mp3, 44100 Hz", "", true},
                                                {"  Stream #0:0: Video: ansi, pal8", "", false},
                                                {"Input #0, mp3, from 'Stream #0: Audio: x':", "", false}}) {
        EXPECT_EQ(ConverterOutputParser::durationText(line), duration) << line;
        EXPECT_EQ(ConverterOutputParser::tellsOfSound(line), sound) << line;
    }
}

} // namespace
} // namespace cantorel
