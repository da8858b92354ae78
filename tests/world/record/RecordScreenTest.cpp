// "record-screen" as a program of its own, and what a crash or a full disk leaves of its movie.

#include "platform/media/RecordingRepair.h"
#include "recording/session/RecordingJournal.h"
#include "tests/support/FakeLogin.h"
#include "tests/support/Movie.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateDisplay.h"
#include "tests/world/record/RecordProgram.h"

namespace cantorel {
namespace {

using test::eventually;
using test::expectOneSentence;

struct RecordScreenTest : test::RecordProgramTest {
    std::unique_ptr<Run> record(const QStringList &options) const {
        auto run = std::make_unique<Run>();
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", mDisplay.name());
        run->process.setProcessEnvironment(environment);
        QStringList words = mWrapper + QStringList{CANTOREL_CLI, "record-screen", "--json"} + options;
        if (!options.contains("--output"))
            words += {"--output", mFile};
        run->process.start(words.first(), words.mid(1));
        run->process.waitForStarted(5000);
        return run;
    }
    QStringList hidden() const { return QDir(mFolder.path()).entryList({".*"}, QDir::Files | QDir::Hidden); }

    const test::PrivateDisplay mDisplay{"320x240x24"};
    const QString mFile = mFolder.path() + "/movie.mp4";
    const QStringList mHeard{"--backend", "embedded"};
};

} // namespace

TEST_F(RecordScreenTest, TellsWhatItMadeAndAlsoWorksWithoutASoundServer) {
    for (const bool isHeard : {true, false}) {
        SCOPED_TRACE(isHeard);
        const auto run =
            record((isHeard ? mHeard : QStringList{}) + QStringList{"--seconds", "1", "--region", "10,10,101,50"});
        ASSERT_EQ(run->status(), 0) << run->error.toStdString();
        const QJsonObject finished = run->event("finished");
        EXPECT_EQ(finished["file"].toString(), mFile);
        EXPECT_EQ(finished["width"].toInt(), 100);
        EXPECT_EQ(finished["height"].toInt(), 50);
        EXPECT_NEAR(finished["seconds"].toDouble(), 1, 0.2);
        EXPECT_EQ(finished["droppedPictures"].toInt(), 0);
        EXPECT_EQ(run->event("started")["sound"].toBool(), isHeard);
        EXPECT_EQ(test::factOf(mFile, "a", "stream=codec_name"), isHeard ? "aac" : "");
        EXPECT_EQ(test::factOf(mFile, "v", "stream=codec_name"), "h264");
        EXPECT_TRUE(hidden().isEmpty());
    }
}

TEST_F(RecordScreenTest, ASignalFinishesTheFile) {
    const auto run = record(mHeard);
    ASSERT_TRUE(run->begins());
    run->signal(SIGINT);
    EXPECT_EQ(run->status(), 130);
    expectOneSentence(run->lastLine(), "kept");
    EXPECT_GE(test::picturesOf(mFile).size(), 1u);
}

TEST_F(RecordScreenTest, BeforeTheMachineSleepsTheFileIsFinished) {
    const test::PrivateBus bus;
    test::FakeLogin login;
    const auto run = record({"--audio", "off"});
    ASSERT_TRUE(run->begins());
    ASSERT_TRUE(eventually([&] { return !login.calls.isEmpty(); }));
    EXPECT_FALSE(login.isReleased());
    login.tell("PrepareForSleep", true);
    EXPECT_EQ(run->status(), 1);
    expectOneSentence(run->lastLine(), "sleeps");
    EXPECT_TRUE(media::movieSeconds(mFile));
    EXPECT_TRUE(login.isReleased());
}

TEST_F(RecordScreenTest, WhatCannotBeRecordedEndsInOneSentence) {
    const struct {
        QStringList options;
        int status;
        const char *part;
    } cases[] = {
        {{"--region", "300,200,100,100"}, 1, "outside"},
        {{"--region", "1,2,3"}, 2, "X,Y,W,H"},
        {{"--display", "4711"}, 1, "not there"},
        {{"--audio", "No such device"}, 1, "No such device"},
        {{"--output", mFolder.path() + "/missing/a.mp4"}, 2, "folder"},
        {{"--fps", "0"}, 2, "fps"},
    };
    for (const auto &[options, status, part] : cases) {
        SCOPED_TRACE(part);
        const auto run = record(mHeard + QStringList{"--seconds", "1"} + options);
        EXPECT_EQ(run->status(), status);
        expectOneSentence(run->lastLine(), part);
    }
    EXPECT_TRUE(QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

TEST_F(RecordScreenTest, AKilledOnePlaysAndIsWholeAgainAtTheNextStart) {
    const auto run = record(mHeard);
    ASSERT_TRUE(run->begins());
    ASSERT_TRUE(eventually(
        [&] { return !hidden().isEmpty() && media::unfinishedSeconds(mFolder.filePath(hidden().first())) > 1.5; }));
    run->signal(SIGKILL);
    run->status();
    ASSERT_EQ(hidden().size(), 1);
    const QString left = mFolder.filePath(hidden().first());
    EXPECT_GE(test::picturesOf(left).size(), 2u) << "its fragments play";
    const RecordingJournal journal(QString::fromUtf8(qgetenv("XDG_STATE_HOME")) + "/cantorel");
    ASSERT_EQ(journal.abandoned(), QStringList{left});
    test::store(mFile, "another one");
    const auto recovered = RecordingJournal::recover(left);
    ASSERT_EQ(recovered.size(), 1u);
    EXPECT_TRUE(recovered.front().failure.isEmpty());
    EXPECT_EQ(recovered.front().file, mFolder.filePath("movie(1).mp4"));
    EXPECT_EQ(test::contents(mFile), "another one");
    EXPECT_TRUE(hidden().isEmpty());
    EXPECT_GE(test::picturesOf(recovered.front().file).size(), 2u);
    EXPECT_EQ(test::factOf(recovered.front().file, "a", "stream=codec_name"), "aac");
}

TEST_F(RecordScreenTest, AFullDiskEndsItAndKeepsWhatWasWritten) {
    if (QProcess::execute("unshare", {"-Urm", "mount", "-t", "tmpfs", "none", "/mnt"}) != 0)
        GTEST_SKIP() << "this machine gives no namespace to mount a small disk in";
    const QTemporaryDir rescued;
    mWrapper = {"unshare",
                "-Urm",
                "sh",
                "-c",
                "mount -t tmpfs -o size=40m none '" + mFolder.path() + "' || exit 99\n{ sleep 1.5; dd if=/dev/zero of='"
                    + mFolder.path() + "/fill' bs=4k 2>/dev/null; } &\n\"$@\"; status=$?; wait; cp '" + mFile + "' '"
                    + rescued.path() + "'; exit $status",
                "sh"};
    const auto run = record(mHeard + QStringList{"--seconds", "20"});
    EXPECT_EQ(run->status(), 1);
    expectOneSentence(run->lastLine(), "full");
    EXPECT_EQ(run->event("failed")["kept"].toString(), mFile);
    EXPECT_GE(test::picturesOf(rescued.path() + "/movie.mp4").size(), 2u);
}

} // namespace cantorel
