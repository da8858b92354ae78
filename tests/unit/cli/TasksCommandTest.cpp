#include "app/start/Hardware.h"
#include "cli/Commands.h"
#include "recording/session/RecordingJournal.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/unit/cli/CommandRun.h"

#include <QDir>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace cantorel {
namespace {

// The arguments are separated by "|".
CommandRun run(const QString &arguments) {
    static constexpr AddCommand kCommands[] = {addTasksCommand};
    qputenv("TZ", "Europe/Berlin");
    ::tzset();
    return runCommand(arguments.split('|'), kCommands);
}

const QString kNews = "tasks|add|--name|News|--from|2026-07-11 08:00:00|--seconds|90|--source|mic";

TEST(TasksCommand, WhatIsAddedIsStoredAndShownAsItWasGiven) {
    const CommandRun added = run(kNews + "|--daily|--weeks|6,0,3,3|--repeat|2|--shutdown|--json");
    EXPECT_EQ(added.status, 0);
    const std::string whole =
        R"({"daily":true,"from":"2026-07-11 08:00:00","looped":0,"name":"News","repeat":2,"seconds":90,"shutdown":true,)"
        R"("source":"mic","to":"2026-07-11 08:01:30","weeks":[6,0,3]})";
    ASSERT_EQ(added.out.size(), 1);
    EXPECT_EQ(added.out[0].toStdString(), whole);
    EXPECT_EQ(run("tasks|list|--json").out, added.out);
    EXPECT_TRUE(run("tasks|list").out.value(0).contains("News"));
    EXPECT_EQ(AppSettings::scheduleTaskList().size(), 1);
}

TEST(TasksCommand, RepetitionsAreACountManualOrNone) {
    const struct {
        const char *options, *expected;
    } cases[] = {{"", R"("repeat":null)"},
                 {"|--repeat|manual", R"("repeat":"manual")"},
                 {"|--repeat|0", R"("repeat":0)"},
                 {"|--daily", R"("weeks":[0,1,2,3,4,5,6])"}};
    for (const auto &c : cases) {
        const CommandRun added = run(kNews + c.options + "|--json");
        EXPECT_TRUE(added.out.value(0).contains(c.expected)) << added.out.value(0).toStdString();
    }
}

TEST(TasksCommand, WrongUsageIsNamedAndStoresNothing) {
    const QString good = kNews;
    const QStringList wrong{
        good + "|--daily|--weeks|7",
        good + "|--daily|--weeks|1,,3",
        good + "|--weeks|1",
        good + "|--repeat|often",
        QString(good).replace("|90", "|0"),
        QString(good).replace("|90", "|99999999999999"),
        QString(good).replace("|mic", "|tape"),
        QString(good).replace("07-11", "02-30"),
        QString(good).replace("2026-07-11 08:00:00", "tomorrow"),
        QString(good).replace("News", ".."),
        "tasks|add",
        "tasks|next|--now|now",
        "tasks",
    };
    for (const QString &command : wrong) {
        const CommandRun result = run(command);
        EXPECT_EQ(result.status, 2) << command.toStdString();
        ASSERT_FALSE(result.error.isEmpty()) << command.toStdString();
        EXPECT_TRUE(result.error.constLast().endsWith('.')) << command.toStdString();
    }
    EXPECT_TRUE(AppSettings::scheduleTaskList().isEmpty());
}

TEST(TasksCommand, NextLooksAtTheListAndChangesNothing) {
    EXPECT_EQ(run("tasks|next|--json").out.value(0).toStdString(),
              R"({"closest":null,"expired":[],"secondsToGo":null,"start":null})");
    run(kNews + "|--daily|--weeks|6,0,3");
    run(QString(kNews).replace("News", "Once"));
    const QByteArray stored = AppSettings::getFromUserDefaults_Data("scheduleTaskList");
    const auto at = [](const char *now) {
        return run(QStringLiteral("tasks|next|--json|--now|") + QString::fromLatin1(now)).out.value(0).toStdString();
    };
    EXPECT_EQ(at("2026-07-11 07:59:00"),
              R"({"closest":"News","expired":[],"secondsToGo":60,"start":"2026-07-11 08:00:00"})");
    EXPECT_EQ(at("2026-07-11 09:00:00"),
              R"({"closest":"News","expired":["Once"],"secondsToGo":342000,"start":"2026-07-15 08:00:00"})");
    EXPECT_EQ(AppSettings::getFromUserDefaults_Data("scheduleTaskList"), stored);
    EXPECT_EQ(run("tasks|next|--now|2026-07-11 09:00:00").out.value(0),
              "News starts at 2026-07-15 08:00:00, in 342000 s. Expired: Once.");
}

TEST(TasksCommand, RemoveTakesEveryTaskOfTheNameAndNoOther) {
    run(kNews);
    run(QString(kNews).replace("News", "news"));
    run(kNews);
    EXPECT_EQ(run("tasks|remove|News|--json").out.size(), 2);
    EXPECT_EQ(AppSettings::scheduleTaskList().size(), 1);
    const CommandRun again = run("tasks|remove|News");
    EXPECT_EQ(again.status, 1);
    EXPECT_TRUE(again.out.isEmpty());
    EXPECT_EQ(run("tasks|remove|news").status, 0);
}

TEST(TasksCommand, AnotherOwnerOfTheTasksRefusesChangesButNotLooks) {
    run(kNews);
    int ready[2], done[2];
    ASSERT_EQ(::pipe(ready), 0);
    ASSERT_EQ(::pipe(done), 0);
    const pid_t owner = ::fork();
    if (owner == 0) {
        RecordingJournal journal(Hardware::stateFolder());
        const char answer = journal.claim() ? 'y' : 'n';
        char end = 0;
        (void)!::write(ready[1], &answer, 1);
        ::close(done[1]);
        (void)!::read(done[0], &end, 1);
        ::_exit(0);
    }
    char answer = 0;
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    ASSERT_EQ(answer, 'y');
    EXPECT_EQ(run(kNews).status, 1);
    EXPECT_EQ(run("tasks|list").out.size(), 1);
    ::close(done[1]);
    ::waitpid(owner, nullptr, 0);
    EXPECT_EQ(run(kNews).status, 0);
}

} // namespace
} // namespace cantorel
