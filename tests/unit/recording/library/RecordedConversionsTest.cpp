#include "recording/library/RecordedConversions.h"

#include "platform/foundation/ChildProcess.h"
#include "recording/library/RecordedList.h"
#include "tags/AudioIdentify.h"
#include "tests/support/Wave.h"
#include "tests/unit/recording/RecordingFixture.h"

namespace cantorel {
namespace {

using test::contents;

// One recording in the list; ffmpeg is a line of shell, in which $in is the recording and $out what it writes.
class RecordedConversionsTest : public test::RecordingFixture {
public:
    RecordedConversionsTest() {
        test::store(file, recording);
        list.initRecordedList();
        list.addRecordedFile(file, {}, {});
        AppSettings::setAudioFormat(4);
    }
    foundation::Result<QString> convert(const char *line) {
        const QString program = QDir::homePath() + "/ffmpeg";
        test::storeProgram(program,
                           "#!/bin/sh\nfor out; do [ \"$before\" != -i ] || in=${out#file:}; before=$out; done\n"
                           "out=${out#file:}\n"
                               + QByteArray(line));
        qputenv("CANTOREL_FFMPEG", program.toUtf8());
        std::optional<foundation::Result<QString>> ended;
        conversions.convertRecordedfileFormat(*list.items().front(), [&](const auto &result) { ended = result; });
        EXPECT_TRUE(stepUntil([&] { return ended.has_value(); }));
        return ended.value_or(foundation::Failure{});
    }

    const QByteArray recording = test::wave(std::vector<float>(48000 * 2));
    const QString file = path("Track1.m4a");
    RecordedList list{QDir::homePath() + "/state", *world.clock};
    RecordedConversions conversions{list};
};

TEST_F(RecordedConversionsTest, TheRecordingGoesOnlyForAWholeSuccessor) {
    for (const char *line :
         {"exit 1", "cp \"$in\" \"$out\"; exit 1", ": >\"$out\"", "head -c 9000 \"$in\" >\"$out\""}) {
        EXPECT_FALSE(convert(line)) << line;
        EXPECT_EQ(contents(file), recording) << line;
        EXPECT_EQ(list.items().front()->getFileName(), file);
        EXPECT_EQ(list.items().front()->status(), "Error");
    }
    ASSERT_TRUE(convert("cp \"$in\" \"$out\""));
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_EQ(contents(path("Track1.wav")), recording);
    EXPECT_EQ(list.items().front()->getFileName(), path("Track1.wav"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"Track1.wav"});
}

TEST_F(RecordedConversionsTest, WhatHasTakenItsNameMeanwhileStays) {
    ASSERT_TRUE(convert("cp \"$in\" \"$out\"; mv \"$in\" \"$in.mine\"; cp \"$out\" \"$in\""));
    EXPECT_TRUE(QFile::exists(file));
}

// Somebody writes the tags of a recording while the converter reads it; which may happen again and again.
TEST_F(RecordedConversionsTest, TagsThatAreWrittenMeanwhileAreInTheSuccessor) {
    AppSettings::setAudioFormat(0);
    const auto made = foundation::ChildProcess::run(
        {"ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "sine=d=2", "-c:a", "aac", "-y", file}, {}, {}});
    ASSERT_TRUE(made && made.value().ending.succeeded());
    for (const QString &name : {QString("once.m4a"), QString("again.m4a")}) {
        ASSERT_TRUE(QFile::copy(file, folder.filePath(name)));
        ASSERT_TRUE(AudioIdentify::saveID3ToFile({"Typed", "Choir", "", "", "", {}, {}}, folder.filePath(name)));
    }
    const auto result =
        convert("ffmpeg \"$@\" || exit; new=${in%/*}/once.m4a; [ ! -e \"$new\" ] || mv \"$new\" \"$in\"");
    ASSERT_TRUE(result);
    EXPECT_EQ(result.value(), path("Track1.mp3"));
    EXPECT_EQ(AudioIdentify::getID3TagFromFile(result.value()).value_or(id3Tag()).id3Title, "Typed");
    EXPECT_FALSE(QFile::exists(file));

    list.items().front()->setFileName(path("again.m4a"));
    const auto restless = convert("ffmpeg \"$@\" || exit; cp \"$in\" \"$in.new\"; mv \"$in.new\" \"$in\"");
    ASSERT_TRUE(restless);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
              (QStringList{"again.m4a", "again.mp3", "Track1.mp3"}));
}

} // namespace
} // namespace cantorel
