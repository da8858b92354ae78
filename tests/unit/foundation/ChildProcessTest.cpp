#include "platform/foundation/ChildProcess.h"

#include "lang/Lang.h"
#include "platform/foundation/Console.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace cantorel::foundation {
namespace {

using namespace std::chrono_literals;

ChildProcess::Command shell(const QString &script) { return {"/bin/sh", {"-c", script}, {}, {}}; }

std::vector<std::string> linesOf(const QString &script) {
    std::vector<std::string> lines;
    auto child = ChildProcess::start(shell(script));
    EXPECT_TRUE(child.ok());
    child.value()->wait([&](const QByteArray &line) { lines.push_back(line.toStdString()); });
    return lines;
}

// Waits until the process is gone or 10 s have passed; a zombie counts as gone.
bool endsSoon(pid_t pid) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (std::chrono::steady_clock::now() < deadline) {
        const QByteArray status = test::contents(QStringLiteral("/proc/%1/stat").arg(pid));
        if (status.isEmpty() || status.contains(") Z "))
            return true;
        std::this_thread::yield();
    }
    return false;
}

TEST(ChildProcess, LinesAreWholeAndOfBothStreams) {
    const std::pair<const char *, std::vector<std::string>> cases[] = {
        {"printf 'one\rtwo\r\n\nthree'", {"one", "two", "three"}},
        {"echo a; echo b >&2; echo c", {"a", "b", "c"}},
        {"printf a; /bin/echo -n b; /bin/echo c", {"abc"}}};
    for (const auto &[script, lines] : cases)
        EXPECT_EQ(linesOf(script), lines) << script;
}

TEST(ChildProcess, OutputFarBeyondAPipeIsDrainedWhileItIsWaitedFor) {
    const auto finished = ChildProcess::run(shell("head -c 3000000 /dev/zero"));
    ASSERT_TRUE(finished.ok());
    EXPECT_EQ(finished.value().output.size(), 3'000'000);
    EXPECT_TRUE(finished.value().ending.succeeded());
}

TEST(ChildProcess, ItHasASessionOfItsOwnSoThatCtrlCDoesNotReachIt) {
    auto child = ChildProcess::start(shell("exec sleep 60"));
    ASSERT_TRUE(child.ok());
    const pid_t pid = child.value()->pid();
    EXPECT_EQ(::getsid(pid), pid);
    EXPECT_NE(::getsid(pid), ::getsid(0));
}

TEST(ChildProcess, EndingTellsStatusAndSignalApart) {
    const auto failed = ChildProcess::run(shell("exit 7"));
    EXPECT_EQ(failed.value().ending.exitStatus, 7);
    EXPECT_EQ(failed.value().ending.signal, 0);
    const auto killed = ChildProcess::run(shell("kill -9 $$"));
    EXPECT_EQ(killed.value().ending.signal, SIGKILL);
    EXPECT_FALSE(killed.value().ending.succeeded());
}

TEST(ChildProcess, AMissingProgramOrFolderIsOneSentence) {
    const auto missing = ChildProcess::start({"/no/such/program", {}, {}, {}});
    ASSERT_FALSE(missing.ok());
    EXPECT_TRUE(Lang::english(missing.failure().sentence).contains("/no/such/program"));
    EXPECT_FALSE(ChildProcess::start({"no-such-program-in-path", {}, {}, {}}).ok());
    auto elsewhere = shell("true");
    elsewhere.folder = "/no/such/folder";
    EXPECT_FALSE(ChildProcess::start(elsewhere).ok());
}

TEST(ChildProcess, TheFolderAndTheEnvironmentAreItsOwn) {
    qputenv("CANTOREL_TEST_VALUE", "outer");
    const QTemporaryDir folder;
    auto command = shell("pwd; echo $CANTOREL_TEST_VALUE; env | grep -c CANTOREL_TEST_VALUE");
    command.folder = folder.path();
    command.environment = {"CANTOREL_TEST_VALUE=inner"};
    const auto finished = ChildProcess::run(command);
    EXPECT_EQ(finished.value().output, QFile::encodeName(folder.path()) + "\ninner\n1\n");
    EXPECT_EQ(qgetenv("CANTOREL_TEST_VALUE"), "outer");
}

TEST(ChildProcess, ReadsAllOfItsInputAndKeepsItsErrorsApart) {
    auto command = shell("cat; echo aside >&2");
    EXPECT_EQ(ChildProcess::run(command).value().output, "aside\n") << "nothing to read";
    command.errorsApart = true;
    command.input = QByteArray(300'000, 'x') + '\0' + "end"; // more than a pipe holds
    EXPECT_TRUE(ChildProcess::run(command).value().output == command.input);
}

TEST(ChildProcess, ARunBeyondItsLimitIsEndedWithAllThatItStarted) {
    const auto finished = ChildProcess::run(shell("sleep 61 & echo $!; trap '' TERM; sleep 62; sleep 63"), 100ms);
    ASSERT_TRUE(finished.ok());
    EXPECT_TRUE(finished.value().ending.timedOut);
    EXPECT_TRUE(endsSoon(static_cast<pid_t>(finished.value().output.trimmed().toLongLong())));
}

TEST(ChildProcess, TerminateFromAnotherThreadEndsTheWait) {
    auto child = ChildProcess::start(shell("echo ready; exec sleep 60"));
    ASSERT_TRUE(child.ok());
    std::thread stopper;
    const auto ending =
        child.value()->wait([&](const QByteArray &) { stopper = std::thread([&] { child.value()->terminate(); }); });
    stopper.join();
    EXPECT_EQ(ending.signal, SIGTERM);
    child.value()->terminate(); // after the end it meets nobody
}

TEST(ChildProcess, AForgottenChildIsKilledWithItsOwner) {
    pid_t pid = 0;
    {
        auto child = ChildProcess::start(shell("exec sleep 60"));
        ASSERT_TRUE(child.ok());
        pid = child.value()->pid();
    }
    EXPECT_TRUE(endsSoon(pid));
}

TEST(ChildProcess, TheChildEndsWithTheThreadThatStartedIt) {
    std::unique_ptr<ChildProcess> child;
    std::thread([&] { child = std::move(ChildProcess::start(shell("exec sleep 60")).value()); }).join();
    EXPECT_EQ(child->wait().signal, SIGTERM);
}

TEST(ChildProcess, ADaemonThatKeepsThePipeOpenIsNotWaitedFor) {
    const auto finished = ChildProcess::run(shell("sleep 61 & echo done"), 50s);
    EXPECT_EQ(finished.value().output, "done\n");
    EXPECT_FALSE(finished.value().ending.timedOut);
}

TEST(ChildProcess, ADaemonThatNeverStopsWritingIsNotReadForEver) {
    const auto finished = ChildProcess::run(shell("setsid timeout 5 yes & echo $!"), 50s);
    EXPECT_FALSE(finished.value().ending.timedOut);
}

TEST(ChildProcess, TheLastWordsBeforeTheEndAreNotLost) {
    for (int round = 0; round < 20; ++round) {
        const auto finished = ChildProcess::run(shell("head -c 65536 /dev/zero; exit 1"));
        ASSERT_EQ(finished.value().output.size(), 65536);
    }
}

TEST(Console, AReaderThatGoesAwayEndsNobodyButAChildThatWantsTo) {
    ignoreBrokenPipes();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const int before = ::dup(STDERR_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    ::close(ends[1]);
    ::close(ends[0]);
    printToConsole("nobody reads this");
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    const auto child = ChildProcess::run({"/bin/sh", {"-c", "kill -PIPE $$; exit 3"}, {}, {}}, {});
    ASSERT_TRUE(child);
    EXPECT_EQ(child.value().ending.signal, SIGPIPE);
}

} // namespace
} // namespace cantorel::foundation
