#include "cli/CommandTable.h"
#include "tests/support/LoopbackServer.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace cantorel::test {
namespace {

using Reply = LoopbackServer::Reply;

struct UpdateRun {
    int status;
    QString out, error;
};

UpdateRun check(const QStringList &options) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = runCommandLine(QStringList{"update", "check"} + options, allCommands());
    return {status, QString::fromStdString(testing::internal::GetCapturedStdout()),
            QString::fromStdString(testing::internal::GetCapturedStderr())};
}

TEST(UpdateCommand, TellsWhatTheServerDescribes) {
    LoopbackServer server([](const QByteArray &) {
        return Reply::page("<u><AppID>c</AppID><AppVersion>2.6.0</AppVersion><AppUpdateAddress>https://a.example"
                           "</AppUpdateAddress><AppChangeLogs>One[CRLF]Two</AppChangeLogs></u>");
    });
    const UpdateRun json = check({"--json", "--server", server.url()});
    EXPECT_EQ(json.status, 0);
    const QJsonObject expected{{"appID", "c"},
                               {"appVersion", "2.6.0"},
                               {"appUpdateAddress", "https://a.example"},
                               {"appUpdateFiles", QJsonValue()},
                               {"appUsers", QJsonValue()},
                               {"appChangeLogs", "One\nTwo"},
                               {"appUpdateSize", QJsonValue()},
                               {"appFailedUpdateDownloadURL", QJsonValue()}};
    EXPECT_EQ(QJsonDocument::fromJson(json.out.toUtf8()).object(), expected) << json.out.toStdString();
    const UpdateRun text = check({"--server", server.url()});
    EXPECT_EQ(text.out, "Version 2.6.0 is available: https://a.example\nOne\nTwo\n");
}

TEST(UpdateCommand, FailsInOneSentence) {
    LoopbackServer empty([](const QByteArray &) { return Reply::page(""); });
    LoopbackServer page([](const QByteArray &) { return Reply::page("<html>Not here</html>", "404 Not Found"); });
    const struct {
        QString server;
        int status;
    } cases[] = {{empty.url(), 1},          {page.url(), 1},    {"http://127.0.0.1:1", 1},
                 {"file:///etc/passwd", 2}, {"example.com", 2}, {"https://", 2}};
    for (const auto &[server, status] : cases) {
        const UpdateRun run = check({"--json", "--server", server});
        EXPECT_EQ(run.status, status) << server.toStdString();
        EXPECT_EQ(run.out, QString());
        EXPECT_EQ(run.error.count('\n'), 1) << run.error.toStdString();
        EXPECT_TRUE(run.error.endsWith(".\n")) << run.error.toStdString();
    }
}

} // namespace
} // namespace cantorel::test
