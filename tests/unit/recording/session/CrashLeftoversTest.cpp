#include "recording/session/CrashLeftovers.h"

#include "lang/Lang.h"
#include "recording/library/RecordingsModel.h"
#include "recording/library/RecordingsRemoval.h"
#include "recording/session/RecordingSession.h"
#include "tests/support/Unfinished.h"
#include "tests/unit/recording/RecordingFixture.h"
#include "tests/unit/recording/UnwritableSettings.h"

#include <QDir>

namespace cantorel {
namespace {

using test::contents;
using test::packetsOf;

// A start of the program after a crash that left one recording, which the list has with the length last shown.
class CrashLeftoversTest : public test::RecordingFixture {
public:
    CrashLeftoversTest() {
        test::unfinished(left);
        before = contents(left);
        EXPECT_TRUE(commons.journal.claim());
        EXPECT_TRUE(RecordingJournal(state).begin(left));
        list.initRecordedList();
        list.addRecordedFile(left, "00:00:00", {});
    }
    // What the next start of the program would find.
    QStringList abandoned() const { return RecordingJournal(state).abandoned(); }
    QString item() const { return list.itemWithFile(left) ? list.itemWithFile(left)->duration() : QString(); }
    // From start to stop; the file that has become of it.
    QString record() {
        const auto count = view.finished.size();
        EXPECT_TRUE(session.startRecording());
        EXPECT_TRUE(stepUntil([&] { return !session.currentFile().path.isEmpty(); }));
        world.advance(1000);
        session.stopRecording();
        EXPECT_TRUE(stepUntil([&] { return session.isSettled() && view.finished.size() > count; }));
        return view.finished.size() > count ? view.finished[count].file : QString();
    }

    test::SessionLog view;
    const QString state = QDir::homePath() + "/state";
    const QString left = path("Track1.m4a"); // the very name that the next recording would have
    QByteArray before;
    RecordedList list{state, *world.clock};
    RecorderCommons commons{state, *world.clock, nullptr};
    RecordingSession session{view, list, commons};
    CrashLeftovers &leftovers = session.leftovers();
};

TEST_F(CrashLeftoversTest, LaterLeavesEverythingAndTheNextStartTellsOfItAgain) {
    ASSERT_EQ(leftovers.pending().size(), 1u);
    const QString recorded = record();
    EXPECT_TRUE(QFile::exists(recorded));
    EXPECT_NE(QFileInfo(recorded).completeBaseName(), "Track1") << "nor does its successor";
    RecordedAudioInfo *item = list.itemWithFile(left);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(RecordingsModel(list).index(1, RecordingsModel::State).data().toString(), Lang::windowInterrupted());
    (void)RecordingsRemoval(list).remove({item}, RecordingsRemoval::Files::IntoWastebasket);
    EXPECT_EQ(contents(left), before) << "removed by the way by nobody";
    EXPECT_EQ(item->duration(), "00:00:00");
    EXPECT_EQ(abandoned(), QStringList{left});
    EXPECT_EQ(leftovers.pending().size(), 1u);
    EXPECT_TRUE(view.recovered.isEmpty());
}

TEST_F(CrashLeftoversTest, RecoveredBehindWhileAnotherRecordingRuns) {
    ASSERT_EQ(leftovers.pending().size(), 1u);
    std::optional<CrashLeftovers::Recovered> recovered;
    leftovers.recoverBehind([&](const auto &all) { recovered = all; });
    EXPECT_FALSE(session.isSettled()) << "the program does not end before";
    EXPECT_TRUE(leftovers.pending().empty()) << "nobody is asked twice";
    EXPECT_TRUE(session.startRecording());
    ASSERT_TRUE(stepUntil([&] { return recovered && !session.currentFile().path.isEmpty(); }));
    EXPECT_EQ(abandoned(), QStringList{session.currentFile().path}) << "the one that runs stays written down";
    ASSERT_EQ(recovered->size(), 1u);
    EXPECT_EQ(recovered->front().failure, QString());
    EXPECT_EQ(view.recovered, QStringList{left});
    EXPECT_TRUE(packetsOf(contents(left)));
    EXPECT_NE(item(), QString());
    EXPECT_FALSE(list.itemWithFile(left)->isInUse());
    EXPECT_GE(list.itemWithFile(left)->Seconds, 1.0);
    session.stopRecording();
    ASSERT_TRUE(stepUntil([&] { return session.isSettled(); }));
    EXPECT_TRUE(abandoned().isEmpty());
}

TEST_F(CrashLeftoversTest, TheEndOfTheProgramWaitsForARepair) {
    {
        RecordedList another(state + "2", *world.clock);
        RecordingJournal journal(state);
        CrashLeftovers ended(view, another, journal);
        ended.recoverBehind([](const auto &) { FAIL() << "there is nobody to be told"; });
    }
    QCoreApplication::processEvents();
    EXPECT_TRUE(packetsOf(contents(left)));
    EXPECT_EQ(abandoned(), QStringList{left}) << "the next start sees that it is whole";
    leftovers.recover();
    EXPECT_EQ(view.recovered, QStringList{left});
    EXPECT_EQ(item(), "00:00:01");
}

TEST_F(CrashLeftoversTest, WhatTheStoredListLacksJoinsItAtTheNextStart) {
    leftovers.recover();
    QString recorded;
    {
        const test::UnwritableSettings unwritable;
        recorded = record();
        EXPECT_FALSE(list.unsaved().isEmpty());
    }
    for (const bool knowsIt : {false, true}) {
        RecordedList next(state, *world.clock);
        next.initRecordedList();
        EXPECT_EQ(next.itemWithFile(recorded) != nullptr, knowsIt);
        RecordingJournal journal(state);
        CrashLeftovers start(view, next, journal);
        start.recover();
        EXPECT_NE(next.itemWithFile(recorded), nullptr);
        EXPECT_TRUE(abandoned().isEmpty());
        ASSERT_TRUE(RecordingJournal(state).begin(recorded)); // killed before its end
    }
    EXPECT_EQ(view.recovered.count(recorded), 1) << "told once";
}

// One that ended before its first sound, and the hidden file of a conversion or a repair.
TEST_F(CrashLeftoversTest, WhatHoldsNothingGoesWithoutAWord) {
    const QString elsewhere = path("elsewhere"), empty = elsewhere + "/Track2.m4a";
    const QString hidden = elsewhere + "/.cantorel-0123456789abcdef.mp3";
    ASSERT_TRUE(QDir().mkdir(elsewhere));
    test::store(empty, before.first(before.indexOf("moof") - 4));
    test::store(hidden, "half");
    ASSERT_TRUE(RecordingJournal(state).begin(empty));
    {
        RecordedList another(state + "2", *world.clock);
        another.addRecordedFile(empty, {}, {});
        RecordingJournal journal(state);
        CrashLeftovers next(view, another, journal);
        EXPECT_EQ(next.pending().size(), 1u) << "the other one is asked about";
        EXPECT_EQ(another.itemWithFile(empty), nullptr);
    }
    EXPECT_EQ(QDir(elsewhere).entryList(QDir::Files | QDir::Hidden), QStringList());
    EXPECT_EQ(contents(left), before);
    EXPECT_EQ(abandoned(), QStringList{left});
}

TEST_F(CrashLeftoversTest, DiscardedOnesAreInTheWastebasketAndOutOfTheList) {
    const QString basket = QDir::homePath() + "/.local/share/Trash";
    ASSERT_TRUE(leftovers.discard());
    EXPECT_FALSE(QFile::exists(left));
    EXPECT_EQ(contents(basket + "/files/Track1.m4a"), before);
    EXPECT_EQ(item(), QString());
    EXPECT_TRUE(abandoned().isEmpty());
    EXPECT_TRUE(leftovers.pending().empty());
    leftovers.recoverBehind([](const auto &) { FAIL() << "nothing is left"; });
    EXPECT_FALSE(leftovers.isRecovering());
}

TEST(CrashLeftoversTexts, NameEachLeftoverUpToThree) {
    const RecordingJournal::Leftover one{"/music/Rain.m4a", 12'000'000, 3723, {}};
    const QString text = leftoversText({one});
    for (const char *part : {"Rain.m4a", "01:02:03"})
        EXPECT_TRUE(text.contains(part)) << part;
    EXPECT_EQ(leftoversText(std::vector(3, one)).count("Rain"), 3);
    EXPECT_EQ(leftoversText(std::vector(8, one)).count("Rain"), 3);
    EXPECT_TRUE(leftoversText(std::vector(8, one)).endsWith("(+5)"));
}

TEST(CrashLeftoversTexts, WhatHasBecomeOfThemIsOneSentenceAndAFailureComesFirst) {
    const RecordingJournal::Recovered whole{{}, "/music/Rain.m4a", 61, {}},
        kept{{}, QStringLiteral("/music/Sun (unfinished).m4a"), 0, QStringLiteral("It holds no sound.")};
    EXPECT_EQ(recoveredText({}), QString());
    EXPECT_EQ(recoveredText({whole}), "'Rain.m4a' was recovered; it is 00:01:01 long.");
    EXPECT_EQ(recoveredText({whole, whole}), "2 recordings were recovered.");
    EXPECT_TRUE(recoveredText({whole, kept}).contains("'Sun (unfinished).m4a'"));
}

} // namespace
} // namespace cantorel
