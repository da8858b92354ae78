// The program itself, as a person or a script runs it.

#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/SearchPaths.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace cantorel {
namespace {

using foundation::ChildProcess;

// Runs a shell line in which "cli" is the program; the output holds standard output and standard error as redirected.
QString shell(const char *line, int *status = nullptr) {
    const auto finished = ChildProcess::run(
        {"/bin/sh",
         {"-c", QStringLiteral("cli() { \"%1\" \"$@\"; }; ").arg(QStringLiteral(CANTOREL_CLI)) + line},
         {},
         {}});
    if (!finished)
        return "not started";
    if (status != nullptr)
        *status = finished.value().ending.exitStatus;
    return QString::fromUtf8(finished.value().output);
}

TEST(Program, StandardOutputCarriesTheAnswerAndStandardErrorNothingElse) {
    EXPECT_EQ(shell("cli settings get audioFormat 2>/dev/null"), "0\n");
    EXPECT_EQ(shell("cli settings get audioFormat 2>&1 >/dev/null"), QString());
    const auto object = QJsonDocument::fromJson(shell("cli --json settings get audioFormat").toUtf8()).object();
    EXPECT_EQ(object.value("value"), QJsonValue(0));
}

TEST(Program, FailuresKeepStandardOutputEmptyAndTellTheirStatus) {
    int status = 0;
    EXPECT_EQ(shell("cli settings get nothing --json 2>/dev/null", &status), QString());
    EXPECT_EQ(status, 2);
    EXPECT_NE(shell("cli settings list 2>&1 >/dev/full", &status), QString());
    EXPECT_EQ(status, 1);
}

TEST(Program, ADamagedSettingsFileIsOneLineAndTheDefaults) {
    const QString file = foundation::configurationFolder() + "/com.tessolar.Cantorel.plist";
    test::store(file, "<plist><dict>");
    int status = -1;
    const QString first = shell("cli settings list 2>&1 >/dev/null");
    EXPECT_EQ(first.count('\n'), 1);
    EXPECT_TRUE(first.contains("damaged"));
    EXPECT_EQ(shell("cli settings get audioFormat 2>&1", &status), "0\n"); // told once, at the copy
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(QFile::exists(file + ".damaged"));
}

TEST(Program, ARecordingThatTheListDoesNotGetIsAFailureAndJoinsItLater) {
    const char *const record = "cli --backend embedded record --source mic --seconds 0.3 --skip-silence off 2>&1";
    const QString lock = foundation::configurationFolder() + "/.com.tessolar.Cantorel.lock";
    ASSERT_TRUE(QDir().mkpath(lock)); // in its place, so that nothing is saved
    int status = 0;
    const QString lines = shell(record, &status);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(lines.section('\n', -2, -2).startsWith("The list was not saved")) << lines.toStdString();
    ASSERT_TRUE(QDir().rmdir(lock));
    shell(record, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(shell("cli library list").count('\n'), 2);
}

TEST(Program, CommandsThatChangeTheTasksAtOnceAllSucceed) {
    constexpr int kCommands = 6;
    std::vector<std::unique_ptr<ChildProcess>> running;
    for (int i = 0; i < kCommands; ++i) {
        const QString line = "tasks|add|--name|Task%1|--from|2030-01-01 08:00:00|--seconds|9|--source|mic";
        auto started = ChildProcess::start({QStringLiteral(CANTOREL_CLI), line.arg(i).split('|'), {}, {}});
        ASSERT_TRUE(started.ok());
        running.push_back(std::move(started.value()));
    }
    for (const auto &child : running)
        EXPECT_TRUE(child->wait().succeeded());
    EXPECT_EQ(shell("cli tasks list").count("Task"), kCommands);
}

} // namespace
} // namespace cantorel
