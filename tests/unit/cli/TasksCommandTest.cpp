#include "app/start/Hardware.h"
#include "cli/Commands.h"
#include "platform/foundation/ChildProcess.h"
#include "recording/session/RecordingJournal.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/unit/cli/CommandRun.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

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
    return runCommand(arguments.split(QLatin1Char('|')), kCommands);
}

const QString kNews = QStringLiteral("tasks|add|--name|News|--from|2026-07-11 08:00:00|--seconds|90|--source|mic");

TEST(TasksCommand, WhatIsAddedIsStoredAndShownAsItWasGiven) {
    const CommandRun added = run(kNews + QStringLiteral("|--daily|--weeks|6,0,3,3|--repeat|2|--shutdown|--json"));
    EXPECT_EQ(added.status, 0);
    const std::string whole =
        R"({"daily":true,"from":"2026-07-11 08:00:00","looped":0,"name":"News","repeat":2,"seconds":90,"shutdown":true,)"
        R"("source":"mic","to":"2026-07-11 08:01:30","weeks":[6,0,3]})";
    ASSERT_EQ(added.out.size(), 1);
    EXPECT_EQ(added.out[0].toStdString(), whole);
    EXPECT_EQ(run(QStringLiteral("tasks|list|--json")).out, added.out);
    EXPECT_TRUE(run(QStringLiteral("tasks|list")).out.value(0).contains(QStringLiteral("News")));
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
        const CommandRun added = run(kNews + QString::fromLatin1(c.options) + QStringLiteral("|--json"));
        EXPECT_TRUE(added.out.value(0).contains(QString::fromLatin1(c.expected))) << added.out.value(0).toStdString();
    }
}

TEST(TasksCommand, WrongUsageIsNamedAndStoresNothing) {
    const QString good = kNews;
    const QStringList wrong{
        good + QStringLiteral("|--daily|--weeks|7"),
        good + QStringLiteral("|--daily|--weeks|1,,3"),
        good + QStringLiteral("|--daily|--weeks|-1"),
        good + QStringLiteral("|--weeks|1"),
        good + QStringLiteral("|--repeat|-1"),
        good + QStringLiteral("|--repeat|often"),
        QString(good).replace(QStringLiteral("|90"), QStringLiteral("|0")),
        QString(good).replace(QStringLiteral("|90"), QStringLiteral("|99999999999999")),
        QString(good).replace(QStringLiteral("|mic"), QStringLiteral("|tape")),
        QString(good).replace(QStringLiteral("07-11"), QStringLiteral("02-30")),
        QString(good).replace(QStringLiteral("08:00:00"), QStringLiteral("24:00:00")),
        QString(good).replace(QStringLiteral("2026-07-11 08:00:00"), QStringLiteral("tomorrow")),
        QString(good).replace(QStringLiteral("News"), QStringLiteral("..")),
        QString(good).replace(QStringLiteral("News"), QStringLiteral("///")),
        QStringLiteral("tasks|add"),
        QStringLiteral("tasks|remove"),
        QStringLiteral("tasks|next|--now|now"),
        QStringLiteral("tasks"),
    };
    for (const QString &command : wrong) {
        const CommandRun result = run(command);
        EXPECT_EQ(result.status, 2) << command.toStdString();
        ASSERT_FALSE(result.error.isEmpty()) << command.toStdString();
        EXPECT_TRUE(result.error.constLast().endsWith(QLatin1Char('.'))) << command.toStdString();
    }
    EXPECT_TRUE(AppSettings::scheduleTaskList().isEmpty());
}

TEST(TasksCommand, NextLooksAtTheListAndChangesNothing) {
    EXPECT_EQ(run(QStringLiteral("tasks|next|--json")).out.value(0).toStdString(),
              R"({"closest":null,"expired":[],"secondsToGo":null,"start":null})");
    run(kNews + QStringLiteral("|--daily|--weeks|6,0,3"));
    run(QString(kNews).replace(QStringLiteral("News"), QStringLiteral("Once")));
    const QByteArray stored = AppSettings::getFromUserDefaults_Data(QStringLiteral("scheduleTaskList"));
    const auto at = [](const char *now) {
        return run(QStringLiteral("tasks|next|--json|--now|") + QString::fromLatin1(now)).out.value(0).toStdString();
    };
    EXPECT_EQ(at("2026-07-11 07:59:00"),
              R"({"closest":"News","expired":[],"secondsToGo":60,"start":"2026-07-11 08:00:00"})");
    EXPECT_EQ(at("2026-07-11 09:00:00"),
              R"({"closest":"News","expired":["Once"],"secondsToGo":342000,"start":"2026-07-15 08:00:00"})");
    EXPECT_EQ(AppSettings::getFromUserDefaults_Data(QStringLiteral("scheduleTaskList")), stored);
    EXPECT_EQ(run(QStringLiteral("tasks|next|--now|2026-07-11 09:00:00")).out.value(0),
              QStringLiteral("News starts at 2026-07-15 08:00:00, in 342000 s. Expired: Once."));
}

TEST(TasksCommand, RemoveTakesEveryTaskOfTheNameAndNoOther) {
    run(kNews);
    run(QString(kNews).replace(QStringLiteral("News"), QStringLiteral("news")));
    run(kNews);
    EXPECT_EQ(run(QStringLiteral("tasks|remove|News|--json")).out.size(), 2);
    EXPECT_EQ(AppSettings::scheduleTaskList().size(), 1);
    const CommandRun again = run(QStringLiteral("tasks|remove|News"));
    EXPECT_EQ(again.status, 1);
    EXPECT_TRUE(again.out.isEmpty());
    EXPECT_EQ(run(QStringLiteral("tasks|remove|news")).status, 0);
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
    EXPECT_EQ(run(QStringLiteral("tasks|list")).out.size(), 1);
    ::close(done[1]);
    ::waitpid(owner, nullptr, 0);
    EXPECT_EQ(run(kNews).status, 0);
}

TEST(TasksRun, TheProgramRecordsWhatIsDueAndLeavesWhenItIsAsked) {
    AppSettings::setAutoSkipSilence(false); // the microphone in software is silent
    const auto inSeconds = [](int seconds) {
        return QDateTime::currentDateTime().addSecs(seconds).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    };
    const QString task = QStringLiteral("tasks|add|--name|%1|--from|%2|--seconds|1|--source|mic");
    ASSERT_EQ(run(task.arg(QStringLiteral("Late"), QStringLiteral("2020-01-01 00:00:00"))).status, 0);
    ASSERT_EQ(run(task.arg(QStringLiteral("News"), inSeconds(3))).status, 0);
    auto started =
        foundation::ChildProcess::start({QStringLiteral(CANTOREL_CLI),
                                         QStringLiteral("--backend|embedded|--json|tasks|run").split(QLatin1Char('|')),
                                         {},
                                         {}});
    ASSERT_TRUE(started.ok());
    auto &child = *started.value();
    QStringList events;
    QString file;
    const auto ending = child.wait(
        [&](const QByteArray &line) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            const QString event = object.value(QStringLiteral("event")).toString();
            if (event.isEmpty() || event == QStringLiteral("converting") || event == QStringLiteral("silent"))
                return;
            events << event;
            if (event == QStringLiteral("finished")) {
                file = object.value(QStringLiteral("file")).toString();
                child.terminate();
            }
        },
        std::chrono::seconds(60));
    EXPECT_EQ(ending.exitStatus, 130);
    EXPECT_EQ(events.join(QLatin1Char(' ')).toStdString(), "missed taskStarted started taskEnded finished");
    EXPECT_EQ(QFileInfo(file).fileName(), QStringLiteral("News.mp3"));
    EXPECT_TRUE(QFileInfo::exists(file));
    EXPECT_TRUE(run(QStringLiteral("tasks|list")).out.isEmpty());
}

} // namespace
} // namespace cantorel
