#include "recording/RecordingJournal.h"

#include "platform/foundation/ChildProcess.h"
#include "platform/media/AudioFileWriter.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Sound.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cantorel {
namespace {

using testing::contents;
using testing::packetsOf;
using testing::store;

class RecordingJournalTest : public ::testing::Test {
protected:
    QString path(const QString &name) const { return mFolder.filePath(name); }
    // A recording of which a crash left all fragments but the last half.
    QString unfinished(const QString &name) const {
        const QString file = path(name);
        auto writer = media::AudioFileWriter::open(file, 48000);
        EXPECT_TRUE(writer.ok());
        EXPECT_TRUE(writer.value()->append(testing::tone(48000 * 2, 48000)).ok());
        EXPECT_TRUE(QFile::copy(file, file + QStringLiteral(".crashed")));
        EXPECT_TRUE(writer.value()->finish().ok());
        writer.value().reset();
        QFile::remove(file);
        EXPECT_TRUE(QFile::rename(file + QStringLiteral(".crashed"), file));
        EXPECT_TRUE(media::isUnfinished(file));
        return file;
    }

    QTemporaryDir mFolder;
    const QString mState = mFolder.filePath(QStringLiteral("state/deep"));
    RecordingJournal mJournal{mState};
};

} // namespace

TEST_F(RecordingJournalTest, OneProcessAtATimeRecords) {
    ASSERT_TRUE(mJournal.claim());
    EXPECT_TRUE(mJournal.claim()) << "it is ours already";
    const auto inAnotherProcess = [&] {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(RecordingJournal(mState).claim() ? 1 : 0);
        int status = -1;
        ::waitpid(child, &status, 0);
        return WEXITSTATUS(status) == 1;
    };
    EXPECT_FALSE(inAnotherProcess());
    mJournal = RecordingJournal(mState);
    EXPECT_TRUE(inAnotherProcess()) << "it was given up, and the other one ended without giving it up";
    EXPECT_TRUE(mJournal.claim()) << "a lock ends with its process";
}

TEST_F(RecordingJournalTest, WhatIsEndedIsForgotten) {
    const QString file = unfinished(QStringLiteral("a.m4a"));
    const QByteArray before = contents(file);
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(file));
    mJournal.end(file);
    EXPECT_TRUE(RecordingJournal(mState).recover().empty());
    EXPECT_EQ(contents(file), before) << "not looked at";
}

TEST_F(RecordingJournalTest, UnfinishedRecordingsAreWholeAgainUnderTheirNames) {
    const QStringList names{QStringLiteral("a.m4a"), QStringLiteral("two\nlines \"and\" %1.m4a"),
                            QStringLiteral("Größe 録音.m4a"), QStringLiteral("-x.m4a")};
    ASSERT_TRUE(mJournal.claim());
    for (const QString &name : names)
        ASSERT_TRUE(mJournal.begin(unfinished(name)));
    ASSERT_TRUE(mJournal.begin(path(QStringLiteral("never made.m4a"))));
    RecordingJournal next(mState);
    const auto recovered = next.recover();
    ASSERT_EQ(recovered.size(), static_cast<std::size_t>(names.size()));
    for (std::size_t i = 0; i < recovered.size(); ++i) {
        EXPECT_EQ(recovered[i].file, path(names[static_cast<qsizetype>(i)]));
        EXPECT_EQ(recovered[i].failure, QString());
        EXPECT_GE(recovered[i].durationSeconds, 1.0) << "at most the last second is missing";
        EXPECT_TRUE(packetsOf(contents(recovered[i].file)));
    }
    EXPECT_TRUE(next.recover().empty());
    EXPECT_EQ(QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden).size(), names.size()) << "no copy is left";
}

TEST_F(RecordingJournalTest, WhatCannotBeRepairedIsKeptUnderAClearNameAndNotTriedAgain) {
    const QString file = unfinished(QStringLiteral("a.m4a"));
    const QByteArray before = contents(file);
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral(".a.m4a.repaired.m4a/in the way"))));
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(file));
    RecordingJournal next(mState);
    const auto recovered = next.recover();
    ASSERT_EQ(recovered.size(), 1u);
    EXPECT_TRUE(recovered[0].failure.endsWith(QLatin1Char('.'))) << recovered[0].failure.toStdString();
    EXPECT_EQ(recovered[0].file, path(QStringLiteral("a (unfinished).m4a")));
    EXPECT_EQ(contents(recovered[0].file), before);
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_TRUE(next.recover().empty());
}

TEST_F(RecordingJournalTest, ARecoveryThatWasInterruptedIsDoneAgain) {
    const QString file = unfinished(QStringLiteral("a.m4a"));
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(file));
    // The copy that the interrupted one had begun.
    store(path(QStringLiteral(".a.m4a.repaired.m4a")), "half");
    const auto recovered = RecordingJournal(mState).recover();
    ASSERT_EQ(recovered.size(), 1u);
    EXPECT_EQ(recovered[0].failure, QString());
    EXPECT_TRUE(packetsOf(contents(file)));
    // Interrupted once the copy had taken its place: the file is whole and stays as it is.
    const QByteArray whole = contents(file);
    ASSERT_TRUE(mJournal.begin(file));
    const auto again = RecordingJournal(mState).recover();
    ASSERT_EQ(again.size(), 1u) << "the list may not have it yet";
    EXPECT_NEAR(again[0].durationSeconds, recovered[0].durationSeconds, 0.05);
    EXPECT_EQ(contents(file), whole);
}

TEST_F(RecordingJournalTest, ForeignAndEmptyFilesAreLeftAlone) {
    const QString foreign = path(QStringLiteral("a.m4a")), empty = path(QStringLiteral("b.m4a"));
    store(foreign, "somebody else's");
    store(empty, {});
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(foreign));
    ASSERT_TRUE(mJournal.begin(empty));
    EXPECT_TRUE(mJournal.recover().empty());
    EXPECT_EQ(contents(foreign), "somebody else's");
    EXPECT_TRUE(QFile::exists(empty));
}

TEST_F(RecordingJournalTest, AFolderThatCannotBeWrittenIsTold) {
    store(path(QStringLiteral("file")), "x");
    RecordingJournal journal(path(QStringLiteral("file/state")));
    EXPECT_FALSE(journal.begin(path(QStringLiteral("a.m4a"))));
    EXPECT_TRUE(journal.recover().empty());
}

} // namespace cantorel
