#include "recording/library/RecordedConversions.h"

#include "recording/library/RecordedList.h"
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

} // namespace
} // namespace cantorel
