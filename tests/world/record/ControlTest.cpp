// A recorder that other programs of the session control: two processes and a bus of their own.

#include "platform/foundation/ChildProcess.h"
#include "tests/support/PrivateBus.h"
#include "tests/world/record/RecordProgram.h"

#include <QFileInfo>

namespace cantorel {
namespace {

using test::eventually;
using test::expectOneSentence;

// What a command has answered.
struct Answer {
    int status = -1;
    QString out, lastLine;
    QJsonObject json() const { return QJsonDocument::fromJson(out.toUtf8()).object(); }
    QString state() const { return json()["state"].toString(); }
};

Answer cli(const QStringList &words) {
    QProcess process;
    process.start(CANTOREL_CLI, words);
    process.waitForFinished(30000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()).trimmed().section('\n', -1)};
}

Answer ask(const char *command) { return cli({command, "--json"}); }

struct ControlTest : test::RecordProgramTest {
    const test::PrivateBus bus;
    const QStringList endless{"--backend", "embedded", "--source", "mic", "--format", "4"};

    // "tasks run" beside no task.
    std::unique_ptr<Run> schedule() const {
        auto run = std::make_unique<Run>();
        cli({"settings", "set", "outputFolderPath", mFolder.path()});
        cli({"settings", "set", "audioInputType", "1"});
        cli({"settings", "set", "audioFormat", "4"});
        cli({"settings", "set", "isAutoSkipSilence", "false"});
        cli({"tasks", "add", "--name", "Late", "--from", "2020-01-01 08:00:00", "--seconds", "9", "--source", "mic"});
        run->process.start(CANTOREL_CLI, {"tasks", "run", "--json", "--backend", "embedded"});
        EXPECT_TRUE(eventually([] { return ask("stop").status == 0; }));
        return run;
    }
};

} // namespace

TEST_F(ControlTest, ARecordingIsPausedSplitAndEndedFromOutside) {
    const auto run = start(endless);
    ASSERT_TRUE(run->begins());
    ASSERT_TRUE(eventually([] { return ask("status").json()["seconds"].toDouble() >= 1; }));
    const QJsonObject status = ask("status").json();
    const QString first = run->event("started")["file"].toString();
    EXPECT_EQ(status["state"].toString(), "recording");
    EXPECT_EQ(status["file"].toString(), first);
    EXPECT_GT(status["bytes"].toInteger(), 0);
    EXPECT_GT(status["timeLeftSeconds"].toInteger(), 0);
    EXPECT_EQ(status.size(), 5);

    EXPECT_EQ(ask("pause").state(), "paused");
    EXPECT_TRUE(eventually([&] { return run->has("paused"); }));
    EXPECT_EQ(ask("start").state(), "paused"); // It runs already, which is no failure.
    EXPECT_EQ(ask("pause").state(), "recording");

    EXPECT_EQ(ask("split").status, 0);
    EXPECT_TRUE(eventually([&] { return ask("status").json()["file"].toString() != first; }));
    const Answer stopped = ask("toggle");
    EXPECT_EQ(stopped.status, 0);
    EXPECT_EQ(run->status(), 0) << run->error.constData();
    EXPECT_EQ(run->out.count("\"event\":\"finished\""), 2);
}

TEST_F(ControlTest, WhereNothingRunsTheStatusSaysSoAndTheOthersFail) {
    for (const char *command : {"start", "stop", "toggle", "pause", "split"}) {
        const Answer answer = ask(command);
        EXPECT_EQ(answer.status, 1) << command;
        EXPECT_TRUE(answer.out.isEmpty());
        expectOneSentence(answer.lastLine, "cantorel-cli record");
    }
    const Answer status = ask("status");
    EXPECT_EQ(status.status, 0);
    EXPECT_EQ(status.state(), "stopped");
    EXPECT_TRUE(status.json()["file"].isNull());
    EXPECT_GT(status.json()["timeLeftSeconds"].toInteger(), 0); // known before the start, too
    EXPECT_EQ(cli({"status"}).out.count('\n'), 1);
}

TEST_F(ControlTest, WithoutASessionBusTheRecorderRunsAndTheControlSaysWhy) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
    const auto run = start(mSoftware);
    EXPECT_EQ(run->status(), 0) << run->error.constData();
    const Answer answer = ask("status");
    EXPECT_EQ(answer.status, 1);
    expectOneSentence(answer.lastLine, "session bus");
}

TEST_F(ControlTest, ASecondRecorderIsRefusedAndTheFirstStaysInControl) {
    const auto run = start(endless);
    ASSERT_TRUE(run->begins());
    const auto second = start(mSoftware);
    EXPECT_EQ(second->status(), 1);
    expectOneSentence(second->lastLine(), "recording already");
    EXPECT_EQ(cli({"tasks", "run", "--backend", "embedded"}).status, 1);
    EXPECT_EQ(ask("status").json()["file"], run->event("started")["file"]);
    EXPECT_EQ(ask("stop").status, 0);
    EXPECT_EQ(run->status(), 0);
}

TEST_F(ControlTest, TheListsOfARunningRecorderAreChangedThroughIt) {
    const auto made = start(mSoftware + QStringList{"--format", "4"});
    ASSERT_EQ(made->status(), 0) << made->error.constData();
    const QString file = made->event("finished")["file"].toString();

    const auto run = start(endless);
    ASSERT_TRUE(run->begins());
    const QString current = run->event("started")["file"].toString();
    const Answer renamed = cli({"library", "rename", file, "Evening", "--json"});
    EXPECT_EQ(renamed.status, 0) << renamed.lastLine.toStdString();
    const QString evening = mFolder.filePath("Evening.wav");
    EXPECT_EQ(renamed.json()["file"].toString(), evening);
    EXPECT_TRUE(QFile::exists(evening));
    for (const QStringList &words :
         {QStringList{"library", "rename", current, "X"}, QStringList{"library", "remove", current, "--delete"}}) {
        const Answer refused = cli(words);
        EXPECT_EQ(refused.status, 1);
        expectOneSentence(refused.lastLine, "recorded or converted");
    }
    EXPECT_EQ(cli({"library", "remove", evening, "--delete"}).status, 0);
    EXPECT_FALSE(QFile::exists(evening));

    const QStringList add{"tasks",     "add", "--name",   "News", "--from", "2099-12-31 08:00:00",
                          "--seconds", "90",  "--source", "mic",  "--json"};
    EXPECT_EQ(cli(add).json()["to"].toString(), "2099-12-31 08:01:30");
    EXPECT_EQ(cli({"tasks", "list", "--json"}).out.count("News"), 1);
    EXPECT_EQ(cli({"tasks", "remove", "News"}).out.count("News"), 1);
    EXPECT_EQ(cli({"tasks", "remove", "News"}).status, 1);

    EXPECT_EQ(ask("stop").status, 0);
    EXPECT_EQ(run->status(), 0);
    const QString list = cli({"library", "list", "--json"}).out;
    EXPECT_EQ(list.count("\"file\""), 1) << list.toStdString(); // what was changed meanwhile has stayed changed
}

TEST_F(ControlTest, TheScheduleRecordsByHandToo) {
    const auto run = schedule();
    EXPECT_EQ(ask("pause").status, 1);
    // The way that leads on is named.
    for (const QStringList &command : {QStringList{"record"}, {"record-screen", "--output", mFolder.filePath("a.mp4")}})
        expectOneSentence(cli(command + QStringList{"--backend", "embedded"}).lastLine, "cantorel-cli start");
    const Answer started = ask("start");
    EXPECT_EQ(started.status, 0) << started.lastLine.toStdString();
    EXPECT_EQ(started.state(), "starting");
    ASSERT_TRUE(eventually([] { return ask("status").state() == "recording"; }));
    EXPECT_EQ(ask("toggle").status, 0);
    ASSERT_TRUE(eventually([] { return ask("status").state() == "stopped"; }));
    EXPECT_TRUE(eventually([&] { return run->has("finished"); })) << run->out.constData();

    // A task that is added while it runs is kept like any other.
    const QString soon = QDateTime::currentDateTime().addSecs(3).toString("yyyy-MM-dd HH:mm:ss");
    EXPECT_EQ(cli({"tasks", "add", "--name", "Soon", "--from", soon, "--seconds", "600", "--source", "mic"}).status, 0);
    ASSERT_TRUE(eventually([] { return ask("status").json()["file"].toString().endsWith("/Soon.m4a"); }));
    EXPECT_EQ(cli({"tasks", "remove", "Soon"}).status, 1); // It is being recorded.
    EXPECT_EQ(ask("stop").status, 0);
    ASSERT_TRUE(eventually([&] { return run->has("taskEnded"); }));
    EXPECT_TRUE(run->has("missed") && run->has("taskStarted")) << run->out.constData();
    run->signal(SIGTERM);
    EXPECT_EQ(run->status(), 130);
}

} // namespace cantorel
