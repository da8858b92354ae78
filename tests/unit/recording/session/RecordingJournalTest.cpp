#include "recording/session/RecordingJournal.h"

#include "lang/Lang.h"
#include "platform/foundation/ChildProcess.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/Unfinished.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace cantorel {
namespace {

using test::contents;
using test::packetsOf;
using test::store;

class RecordingJournalTest : public testing::Test {
protected:
    QString path(const QString &name) const { return mFolder.filePath(name); }
    QString unfinished(const QString &name) const { return test::unfinished(path(name)); }

    // What a start makes of all that it names.
    static std::vector<RecordingJournal::Recovered> recovered(RecordingJournal &&journal) { return recovered(journal); }
    static std::vector<RecordingJournal::Recovered> recovered(RecordingJournal &journal) {
        std::vector<RecordingJournal::Recovered> all;
        for (const QString &file : journal.abandoned()) {
            const auto found = RecordingJournal::recover(file);
            all.insert(all.end(), found.begin(), found.end());
            if (found.empty() || !found.front().isPending())
                journal.end(file);
        }
        return all;
    }

    QTemporaryDir mFolder;
    const QString mState = mFolder.filePath("state/deep");
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
    const QString file = unfinished("a.m4a");
    const QByteArray before = contents(file);
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(file));
    mJournal.end(file);
    EXPECT_TRUE(recovered(RecordingJournal(mState)).empty());
    EXPECT_EQ(contents(file), before) << "not looked at";
}

TEST_F(RecordingJournalTest, UnfinishedRecordingsAreWholeAgainUnderTheirNames) {
    const QStringList names{"a.m4a", "two\nlines \"and\" %1.m4a", "Größe 録音.m4a", "-x.m4a"};
    ASSERT_TRUE(mJournal.claim());
    for (const QString &name : names)
        ASSERT_TRUE(mJournal.begin(unfinished(name)));
    ASSERT_TRUE(mJournal.begin(path("never made.m4a")));
    RecordingJournal next(mState);
    const auto all = recovered(next);
    ASSERT_EQ(all.size(), static_cast<std::size_t>(names.size()));
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].file, path(names[static_cast<qsizetype>(i)]));
        EXPECT_EQ(all[i].failure, QString());
        EXPECT_GE(all[i].durationSeconds, 1.0) << "at most the last second is missing";
        EXPECT_TRUE(packetsOf(contents(all[i].file)));
    }
    EXPECT_TRUE(recovered(next).empty());
    EXPECT_EQ(QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden).size(), names.size()) << "no copy is left";
}

TEST_F(RecordingJournalTest, WhatHoldsNoSoundIsKeptUnderAClearNameAndNotTriedAgain) {
    const QString file = unfinished("a.m4a"), empty = unfinished("b.m4a");
    const QByteArray before = contents(file).replace("moof", "mooo");
    store(file, before);
    store(empty, before.first(before.indexOf("mooo") - 4));
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(file));
    ASSERT_TRUE(mJournal.begin(empty));
    RecordingJournal next(mState);
    EXPECT_EQ(next.dropEmpty(), QStringList{empty}) << "ended before its first sound";
    EXPECT_FALSE(QFile::exists(empty));
    const auto all = recovered(next);
    ASSERT_EQ(all.size(), 1u);
    EXPECT_TRUE(Lang::english(all[0].failure).endsWith('.')) << Lang::english(all[0].failure).toStdString();
    EXPECT_EQ(all[0].file, path("a (unfinished).m4a"));
    EXPECT_EQ(contents(all[0].file), before);
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_TRUE(recovered(next).empty());
}

// The disk is full, or the program is ended in the middle: the next start finds everything as it was and tries again.
TEST_F(RecordingJournalTest, ARecoveryThatWasInterruptedIsDoneAgain) {
    const QString file = unfinished("a.m4a");
    const QByteArray before = contents(file);
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(file));
    for (const auto onLimit : {SIG_IGN, SIG_DFL}) {
        const pid_t child = ::fork();
        if (child == 0) {
            const auto half = static_cast<rlim_t>(before.size() / 2);
            const rlimit limit{half, half}, none{0, 0};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            ::setrlimit(RLIMIT_CORE, &none);
            ::signal(SIGXFSZ, onLimit);
            const auto tried = recovered(RecordingJournal(mState));
            ::_exit(tried.size() == 1 && tried[0].isPending() ? 0 : 1);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, onLimit == SIG_IGN ? 0 : SIGXFSZ);
        EXPECT_EQ(contents(file), before);
        EXPECT_EQ(RecordingJournal(mState).abandoned(), QStringList{file});
        EXPECT_EQ(QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden).size(), onLimit == SIG_IGN ? 1 : 2);
    }
    const auto all = recovered(RecordingJournal(mState));
    ASSERT_EQ(all.size(), 1u);
    EXPECT_TRUE(all[0].failure.isEmpty());
    EXPECT_TRUE(packetsOf(contents(file)));
    // Interrupted once the copy had taken its place: the file is whole and stays as it is.
    const QByteArray whole = contents(file);
    ASSERT_TRUE(mJournal.begin(file));
    const auto again = recovered(RecordingJournal(mState));
    ASSERT_EQ(again.size(), 1u) << "the list may not have it yet";
    EXPECT_NEAR(again[0].durationSeconds, all[0].durationSeconds, 0.05);
    EXPECT_EQ(contents(file), whole);
}

TEST_F(RecordingJournalTest, LeftoversAreToldAndNotTouched) {
    const QString file = unfinished("a.m4a"), whole = path("b.m4a");
    const QByteArray before = contents(file);
    ASSERT_TRUE(media::repairUnfinished(file, whole));
    ASSERT_TRUE(mJournal.claim());
    for (const QString &begun : {file, whole, file, path("never made.m4a")})
        ASSERT_TRUE(mJournal.begin(begun));
    EXPECT_TRUE(mJournal.leftovers().empty()) << "what is written here is none";
    EXPECT_TRUE(recovered(mJournal).empty()) << "and nobody repairs it under the writer's hands";
    for (int start = 0; start < 2; ++start) {
        const auto left = RecordingJournal(mState).leftovers();
        ASSERT_EQ(left.size(), 1u) << "each once, and only unfinished ones";
        EXPECT_EQ(left[0].file, file);
        EXPECT_EQ(left[0].bytes, before.size());
        EXPECT_EQ(left[0].written, QFileInfo(file).lastModified());
        EXPECT_GT(left[0].seconds, 0.2);
        EXPECT_LT(left[0].seconds, 5);
    }
    EXPECT_EQ(contents(file), before);
    mJournal.giveUp(file);
    EXPECT_EQ(mJournal.leftovers().size(), 1u) << "what could not be closed is one";
}

TEST_F(RecordingJournalTest, WhatIsRecordedBesideLeftoversLosesNone) {
    const QString left = unfinished("left.m4a"), other = unfinished("other.m4a");
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(left));
    RecordingJournal next(mState);
    ASSERT_TRUE(next.begin(other));
    EXPECT_EQ(next.abandoned(), QStringList{left});
    EXPECT_EQ(RecordingJournal(mState).leftovers().size(), 2u) << "a second crash";
    next.end(other);
    EXPECT_EQ(RecordingJournal(mState).abandoned(), QStringList{left});
}

TEST_F(RecordingJournalTest, ForeignAndEmptyFilesAreLeftAlone) {
    const QString foreign = path("a.m4a"), empty = path("b.m4a");
    store(foreign, "somebody else's");
    store(empty, {});
    ASSERT_TRUE(mJournal.claim());
    ASSERT_TRUE(mJournal.begin(foreign));
    ASSERT_TRUE(mJournal.begin(empty));
    EXPECT_TRUE(recovered(RecordingJournal(mState)).empty());
    EXPECT_EQ(contents(foreign), "somebody else's");
    EXPECT_TRUE(QFile::exists(empty));
}

TEST_F(RecordingJournalTest, WhatIsWholeIsNamedWithWhatItWasConvertedTo) {
    const QString recording = path("a.m4a"), converted = path("a.mp3");
    ASSERT_TRUE(media::repairUnfinished(unfinished("other.m4a"), recording));
    ASSERT_TRUE(QFile::copy(recording, converted));
    store(path("a.wav"), "no sound");
    const auto files = [&] {
        QStringList files;
        for (const auto &one : RecordingJournal::recover(recording))
            files << one.file;
        return files;
    };
    EXPECT_EQ(files(), (QStringList{recording, converted}));
    ASSERT_TRUE(QFile::remove(recording));
    EXPECT_EQ(files(), QStringList{converted});
    EXPECT_FALSE(RecordingJournal::isOutOfReach(recording));
    EXPECT_TRUE(RecordingJournal::isOutOfReach(path("unplugged/a.m4a")));
}

TEST_F(RecordingJournalTest, TheJournalIsItsOwnersAloneAndRecordingsFollowTheUmask) {
    const auto rights = [](const QString &file) {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(file).constData(), &status), 0);
        return status.st_mode & 0777;
    };
    ::umask(0002);
    const QString file = unfinished("a.m4a");
    ASSERT_TRUE(mJournal.claim() && mJournal.begin(file));
    EXPECT_EQ(rights(mState + "/recording"), 0600u);
    EXPECT_EQ(rights(file), 0664u);
    EXPECT_EQ(recovered(RecordingJournal(mState)).size(), 1u);
    EXPECT_EQ(rights(file), 0664u);
}

TEST_F(RecordingJournalTest, APipeUnderARecordingsNameIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("a.m4a")).constData(), 0600), 0);
    ASSERT_TRUE(mJournal.claim() && mJournal.begin(path("a.m4a")));
    EXPECT_TRUE(RecordingJournal(mState).leftovers().empty());
    EXPECT_TRUE(recovered(RecordingJournal(mState)).empty());
}

TEST_F(RecordingJournalTest, WhatIsEndedStaysWrittenDownUntilTheStoredListHasIt) {
    const QString first = path("a.m4a"), second = path("b.m4a");
    bool isStored = false;
    mJournal.listIsStored = [&] { return isStored; };
    ASSERT_TRUE(mJournal.claim() && mJournal.begin(first) && mJournal.begin(second));
    mJournal.end(first);
    EXPECT_EQ(RecordingJournal(mState).abandoned(), (QStringList{first, second}));
    EXPECT_TRUE(mJournal.abandoned().isEmpty()) << "not ours to repair";
    isStored = true;
    mJournal.end(second);
    EXPECT_TRUE(RecordingJournal(mState).abandoned().isEmpty());
}

TEST_F(RecordingJournalTest, AFolderThatCannotBeWrittenIsTold) {
    store(path("file"), "x");
    RecordingJournal journal(path("file/state"));
    EXPECT_TRUE(journal.claim()) << "nobody else records";
    EXPECT_FALSE(journal.begin(path("a.m4a")));
    EXPECT_TRUE(recovered(journal).empty());
}

} // namespace cantorel
