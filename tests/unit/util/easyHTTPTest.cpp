#include "util/easyHTTP.h"

#include "lang/Lang.h"
#include "platform/foundation/HttpExchange.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/PrivateWorld.h"

#include <gtest/gtest.h>

#include <thread>

namespace cantorel::test {
namespace {

using Reply = LoopbackServer::Reply;

constexpr foundation::HttpLimits kShort{.time = std::chrono::milliseconds(150), .bytes = 10'000, .redirects = 3};

TEST(EasyHTTP, GetAsksAsItIsToldAndAnswersTheBodyWhateverTheStatus) {
    const struct {
        QByteArray body, status;
    } cases[] = {{"plain", "200 OK"}, {"an error page", "404 Not Found"}, {"", "200 OK"}, {"h\xC3\xA4lt", "200 OK"}};
    for (const auto &c : cases) {
        LoopbackServer server([&](const QByteArray &) { return Reply::page(c.body, c.status); });
        easyHTTP client;
        EXPECT_EQ(client.GET(server.url("/a b?c=\xC3\xA4"), "Tess\r\nX: olar"), c.body);
        EXPECT_TRUE(client.failure().isEmpty());
        const QByteArray request = server.requests().value(0);
        EXPECT_TRUE(request.startsWith("GET /a%20b?c=%C3%A4 HTTP/1.1\r\n")) << request.toStdString();
        EXPECT_TRUE(request.contains("\r\nUser-Agent: TessX: olar\r\n"));
    }
    LoopbackServer server([](const QByteArray &) { return Reply::page("x"); });
    easyHTTP().GET(server.url());
    EXPECT_TRUE(server.requests().value(0).contains(
        "\r\nUser-Agent: Mozilla/5.0 (Windows NT 6.1; rv:22.0) Gecko/20100101 Firefox/22.0\r\n"));
}

TEST(EasyHTTP, WhatBringsNoBodyBringsNoTextAndOneSentence) {
    using Then = Reply::Then;
    const QByteArray half = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf", much(1000, 'x');
    const std::pair<const char *, Reply> cases[] = {{"closes at once", {}},
                                                    {"says nothing", {{}, Then::Hold}},
                                                    {"stops in the middle", {half}},
                                                    {"never ends", {"HTTP/1.1 200 OK\r\n\r\n" + much, Then::Repeat}},
                                                    {"has a head without end", {"X: y\r\n", Then::Repeat}},
                                                    {"is too large", Reply::page(QByteArray(10'001, 'x'))},
                                                    {"is no answer", {"SSH-2.0-server\r\n"}}};
    for (const auto &[what, reply] : cases) {
        SCOPED_TRACE(what);
        LoopbackServer server([&answer = reply](const QByteArray &) { return answer; });
        easyHTTP client(kShort);
        EXPECT_EQ(client.GET(server.url()), QString());
        EXPECT_TRUE(Lang::english(client.failure()).contains("127.0.0.1")
                    && Lang::english(client.failure()).endsWith('.'));
    }
    LoopbackServer fitting([](const QByteArray &) { return Reply::page(QByteArray(10'000, 'x')); });
    EXPECT_EQ(easyHTTP(kShort).GET(fitting.url()).size(), 10'000);
}

TEST(EasyHTTP, AddressesThatLeadNowhereOrElsewhereThanTheWebAreRefused) {
    QString closed;
    {
        const LoopbackServer server([](const QByteArray &) { return Reply{}; });
        closed = server.url();
    }
    for (const QString &url :
         {closed, QString("file:///etc/hostname"), QString(), QString("no address"), QString("http://"),
          QString("gopher://127.0.0.1/"), QString("http://127.0.0.1:99999/")}) {
        easyHTTP client(kShort);
        EXPECT_EQ(client.GET(url), QString()) << url.toStdString();
        EXPECT_FALSE(client.failure().isEmpty());
    }
}

TEST(EasyHTTP, RedirectionsAreFollowedOnTheWebAndAFewTimesOnly) {
    LoopbackServer *self = nullptr;
    LoopbackServer server([&](const QByteArray &request) {
        if (request.startsWith("GET /once "))
            return Reply::redirect(self->url("/there"), "301 Moved");
        if (request.startsWith("GET /relative "))
            return Reply::redirect("/there");
        if (request.startsWith("GET /file "))
            return Reply::redirect("file:///etc/hostname");
        if (request.startsWith("GET /loop "))
            return Reply::redirect(self->url("/loop"));
        if (request.startsWith("GET /ftp "))
            return Reply::redirect("ftp://127.0.0.1:1/");
        return Reply::page("arrived");
    });
    self = &server;
    const struct {
        const char *path, *text;
    } cases[] = {{"/once", "arrived"}, {"/relative", "arrived"}, {"/file", ""}, {"/loop", ""}};
    for (const auto &[path, text] : cases)
        EXPECT_EQ(easyHTTP({.redirects = 3}).GET(server.url(path)), text) << path;
    EXPECT_EQ(server.requests().join().count("GET /loop "), 4) << "the first and three more";
    const auto elsewhere = foundation::sendHttpRequest({.url = server.url("/ftp"), .userAgent = {}, .form = {}});
    ASSERT_FALSE(elsewhere);
    EXPECT_TRUE(elsewhere.failure().detail.contains("disabled")) << "not even tried";
    EXPECT_STREQ(foundation::redirectionProtocols("HTTPS://127.0.0.1/"), "https");
    EXPECT_STREQ(foundation::redirectionProtocols("http://127.0.0.1/https:"), "http,https");
}

TEST(EasyHTTP, PostSendsAFormInAsciiAndWritesTheAnswerToTheConsole) {
    LoopbackServer server([](const QByteArray &) { return Reply::page("taken \xC3\xBC"); });
    testing::internal::CaptureStderr();
    easyHTTP().POST(server.url("/form"), "a=1&b=h\xC3\xA4\xF0\x9F\x8E\xB5!");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "easyHTTP -> http responseData:\ntaken \xC3\xBC\n");
    const QByteArray request = server.requests().value(0);
    EXPECT_TRUE(request.startsWith("POST /form HTTP/1.1\r\n"));
    EXPECT_TRUE(request.contains("\r\nContent-Length: 10\r\n")) << request.toStdString();
    EXPECT_TRUE(request.contains("\r\nContent-Type: application/x-www-form-urlencoded\r\n"));
    EXPECT_TRUE(request.endsWith("\r\n\r\na=1&b=h?\?!")) << request.toStdString();

    LoopbackServer silent([](const QByteArray &) { return Reply::page(""); });
    testing::internal::CaptureStderr();
    easyHTTP().POST(silent.url(), QString());
    easyHTTP(kShort).POST("http://127.0.0.1:99999/", "x");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(EasyHTTP, AStopEndsARequestThatIsUnderWay) {
    LoopbackServer server([](const QByteArray &) { return Reply{{}, Reply::Then::Hold}; });
    std::stop_source stop;
    QString answer = "not yet";
    std::thread asking([&] { answer = easyHTTP({.time = std::chrono::hours(1)}, stop.get_token()).GET(server.url()); });
    EXPECT_TRUE(eventually([&] { return !server.requests().isEmpty(); }));
    stop.request_stop();
    asking.join();
    EXPECT_EQ(answer, QString());
}

} // namespace
} // namespace cantorel::test
