#include "platform/foundation/ChildProcess.h"

#include "lang/Lang.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace cantorel::foundation {
namespace {

using namespace std::chrono_literals;

ChildProcess::Command shell(const QString &script) {
    return {QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, {}, {}};
}

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
        QFile status(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!status.open(QIODevice::ReadOnly) || status.readAll().contains(") Z "))
            return true;
        std::this_thread::yield();
    }
    return false;
}

TEST(ChildProcess, LinesAreCutAtCarriageReturnAndLineFeedAndTheLastNeedsNoEnd) {
    EXPECT_EQ(linesOf(QStringLiteral("printf 'one\\rtwo\\r\\n\\nthree'")),
              (std::vector<std::string>{"one", "two", "three"}));
}

TEST(ChildProcess, StandardErrorComesInOneStreamWithStandardOutput) {
    EXPECT_EQ(linesOf(QStringLiteral("echo a; echo b >&2; echo c")), (std::vector<std::string>{"a", "b", "c"}));
}

TEST(ChildProcess, ALineThatArrivesInPiecesIsOneLine) {
    EXPECT_EQ(linesOf(QStringLiteral("printf a; /bin/echo -n b; /bin/echo c")), (std::vector<std::string>{"abc"}));
}

TEST(ChildProcess, OutputFarBeyondAPipeIsDrainedWhileItIsWaitedFor) {
    const auto finished = ChildProcess::run(shell(QStringLiteral("head -c 3000000 /dev/zero")));
    ASSERT_TRUE(finished.ok());
    EXPECT_EQ(finished.value().output.size(), 3'000'000);
    EXPECT_TRUE(finished.value().ending.succeeded());
}

TEST(ChildProcess, ReadingStandardInputEndsAtOnce) {
    const auto finished = ChildProcess::run(shell(QStringLiteral("cat; echo done")));
    EXPECT_EQ(finished.value().output, "done\n");
}

TEST(ChildProcess, ItHasASessionOfItsOwnSoThatCtrlCDoesNotReachIt) {
    auto child = ChildProcess::start(shell(QStringLiteral("exec sleep 60")));
    ASSERT_TRUE(child.ok());
    const pid_t pid = child.value()->pid();
    EXPECT_EQ(::getsid(pid), pid);
    EXPECT_NE(::getsid(pid), ::getsid(0));
}

TEST(ChildProcess, EndingTellsStatusAndSignalApart) {
    const auto failed = ChildProcess::run(shell(QStringLiteral("exit 7")));
    EXPECT_EQ(failed.value().ending.exitStatus, 7);
    EXPECT_EQ(failed.value().ending.signal, 0);
    const auto killed = ChildProcess::run(shell(QStringLiteral("kill -9 $$")));
    EXPECT_EQ(killed.value().ending.signal, SIGKILL);
    EXPECT_FALSE(killed.value().ending.succeeded());
}

TEST(ChildProcess, AMissingProgramOrFolderIsOneSentence) {
    const auto missing = ChildProcess::start({QStringLiteral("/no/such/program"), {}, {}, {}});
    ASSERT_FALSE(missing.ok());
    EXPECT_TRUE(Lang::english(missing.failure().sentence).contains(QStringLiteral("/no/such/program")));
    EXPECT_FALSE(ChildProcess::start({QStringLiteral("no-such-program-in-path"), {}, {}, {}}).ok());
    auto elsewhere = shell(QStringLiteral("true"));
    elsewhere.folder = QStringLiteral("/no/such/folder");
    EXPECT_FALSE(ChildProcess::start(elsewhere).ok());
}

TEST(ChildProcess, TheFolderAndTheEnvironmentAreItsOwn) {
    qputenv("CANTOREL_TEST_VALUE", "outer");
    const QTemporaryDir folder;
    auto command = shell(QStringLiteral("pwd; echo $CANTOREL_TEST_VALUE; env | grep -c CANTOREL_TEST_VALUE"));
    command.folder = folder.path();
    command.environment = {QStringLiteral("CANTOREL_TEST_VALUE=inner")};
    const auto finished = ChildProcess::run(command);
    EXPECT_EQ(finished.value().output, QFile::encodeName(folder.path()) + "\ninner\n1\n");
    EXPECT_EQ(qgetenv("CANTOREL_TEST_VALUE"), "outer");
}

TEST(ChildProcess, ReadsAllOfItsInputAndKeepsItsErrorsApart) {
    auto command = shell(QStringLiteral("cat; echo aside >&2"));
    EXPECT_EQ(ChildProcess::run(command).value().output, "aside\n") << "nothing to read";
    command.errorsApart = true;
    command.input = QByteArray(300'000, 'x') + '\0' + "end"; // more than a pipe holds
    EXPECT_TRUE(ChildProcess::run(command).value().output == command.input);
}

TEST(ChildProcess, ARunBeyondItsLimitIsEndedWithAllThatItStarted) {
    const auto finished =
        ChildProcess::run(shell(QStringLiteral("sleep 61 & echo $!; trap '' TERM; sleep 62; sleep 63")), 100ms);
    ASSERT_TRUE(finished.ok());
    EXPECT_TRUE(finished.value().ending.timedOut);
    EXPECT_TRUE(endsSoon(static_cast<pid_t>(finished.value().output.trimmed().toLongLong())));
}

TEST(ChildProcess, TerminateFromAnotherThreadEndsTheWait) {
    auto child = ChildProcess::start(shell(QStringLiteral("echo ready; exec sleep 60")));
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
        auto child = ChildProcess::start(shell(QStringLiteral("exec sleep 60")));
        ASSERT_TRUE(child.ok());
        pid = child.value()->pid();
    }
    EXPECT_TRUE(endsSoon(pid));
}

TEST(ChildProcess, TheChildEndsWithTheThreadThatStartedIt) {
    std::unique_ptr<ChildProcess> child;
    std::thread([&] { child = std::move(ChildProcess::start(shell(QStringLiteral("exec sleep 60"))).value()); }).join();
    EXPECT_EQ(child->wait().signal, SIGTERM);
}

TEST(ChildProcess, ADaemonThatKeepsThePipeOpenIsNotWaitedFor) {
    const auto finished = ChildProcess::run(shell(QStringLiteral("sleep 61 & echo done")), 50s);
    EXPECT_EQ(finished.value().output, "done\n");
    EXPECT_FALSE(finished.value().ending.timedOut);
}

TEST(ChildProcess, ADaemonThatNeverStopsWritingIsNotReadForEver) {
    const auto finished = ChildProcess::run(shell(QStringLiteral("setsid timeout 5 yes & echo $!")), 50s);
    EXPECT_FALSE(finished.value().ending.timedOut);
}

TEST(ChildProcess, TheLastWordsBeforeTheEndAreNotLost) {
    for (int round = 0; round < 20; ++round) {
        const auto finished = ChildProcess::run(shell(QStringLiteral("head -c 65536 /dev/zero; exit 1")));
        ASSERT_EQ(finished.value().output.size(), 65536);
    }
}

} // namespace
} // namespace cantorel::foundation
