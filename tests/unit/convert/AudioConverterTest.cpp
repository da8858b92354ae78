#include "convert/AudioConverter.h"

#include "tests/support/OrdinaryFile.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace cantorel {
namespace {

using testing::contents;
using testing::store;

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

class AudioConverterTest : public ::testing::Test {
protected:
    void SetUp() override { store(mInput, "recording"); }

    // A converter made of one line of shell; $out is the last argument.
    QString converter(const QByteArray &line) {
        const QString path = mFolder.filePath(QStringLiteral("converter"));
        store(path, "#!/bin/sh\nfor out in \"$@\"; do :; done\n" + line + "\n");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }
    foundation::Result<QString> convert(int index, const QString &program,
                                        std::optional<foundation::Clock::Duration> limit = {}) {
        return AudioConverter::convertRecording(index, mInput, {program, mClock, limit});
    }
    QString path(const char *name) const { return mFolder.filePath(QString::fromUtf8(name)); }

    QTemporaryDir mFolder;
    const QString mInput = mFolder.filePath(QStringLiteral("Track1.m4a"));
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
        {9, "-ab|128k|-ac|2|-ar|44100"},
        {-1, "-ab|128k|-ac|2|-ar|44100"},
        {10, "-ab|128k|-ac|2|-ar|44100"},
    };
    for (const auto &[index, arguments] : cases)
        EXPECT_EQ(AudioConverter::recordingArguments(index, QStringLiteral("in"), QStringLiteral("out"))
                      .join(QLatin1Char('|'))
                      .toStdString(),
                  std::string("-i|in|") + arguments + "|-y|out")
            << index;
}

TEST_F(AudioConverterTest, ResultGetsAFreeNameAndTheRecordingStays) {
    store(path("Track1.mp3"), "older");
    const auto converted = convert(0, converter("echo new >\"$out\""));
    ASSERT_TRUE(converted);
    EXPECT_EQ(converted.value(), path("Track1(1).mp3"));
    EXPECT_EQ(contents(path("Track1.mp3")), "older");
    EXPECT_EQ(contents(mInput), "recording");
}

TEST_F(AudioConverterTest, LosslessResultTakesTheRecordingsName) {
    store(path("Track1_m4a.m4a"), "someone's own");
    const auto converted = convert(2, converter("echo lossless >\"$out\""));
    ASSERT_TRUE(converted);
    EXPECT_EQ(converted.value(), mInput);
    EXPECT_EQ(contents(mInput), "lossless\n");
    EXPECT_EQ(contents(path("Track1_m4a.m4a")), "someone's own");
}

// Whatever the converter does wrong, there is one sentence and the recording is what it was.
TEST_F(AudioConverterTest, FailingConverterNeverCostsTheRecording) {
    for (const char *line : {"exit 1", "echo half >\"$out\"; exit 3", "kill -9 $$", ": >\"$out\"", "true",
                             "echo half >\"$out\"; kill -TERM $$"}) {
        for (const int index : {0, 2, 4, 7}) {
            const auto converted = convert(index, converter(line));
            ASSERT_FALSE(converted) << line;
            EXPECT_FALSE(converted.failure().sentence.isEmpty());
            EXPECT_EQ(contents(mInput), "recording") << line;
        }
    }
}

TEST_F(AudioConverterTest, HangingConverterIsEnded) {
    const auto converted = convert(2, converter("exec sleep 600"), std::chrono::milliseconds(100));
    ASSERT_FALSE(converted);
    EXPECT_TRUE(converted.failure().detail.contains(QStringLiteral("too long")));
    EXPECT_EQ(contents(mInput), "recording");
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
                store(mInput, "late");
        };
        const auto converted =
            AudioConverter::convertRecording(4, mInput, {converter("echo new >\"$out\""), clock, {}});
        EXPECT_EQ(converted.ok(), converts) << appearsAfter;
        EXPECT_EQ(clock.now(), std::chrono::seconds(appearsAfter));
    }
}

} // namespace
} // namespace cantorel
