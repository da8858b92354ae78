#include "util/tools/UpdateCheck.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "settings/AppSettings.h"
#include "tests/support/LoopbackServer.h"

#include <gtest/gtest.h>

namespace cantorel::test {
namespace {

using Reply = LoopbackServer::Reply;

const char *const kDescription = R"(<?xml version="1.0" encoding="ISO-8859-1"?>
<update><app><AppID>com.tessolar.Cantorel</AppID><AppVersion>251</AppVersion>
<AppUpdateAddress>https://a.example/get?x=1&amp;y=2</AppUpdateAddress><AppUpdateFiles>one, two</AppUpdateFiles>
<AppUsers>all</AppUsers><AppChangeLogs>First[CRLF]Zweitens: größer[CRLF]</AppChangeLogs>
<AppUpdateSize>12 MB</AppUpdateSize></app><AppVersion>999</AppVersion>
<AppFailedUpdateDownloadURL>https://a.example/by-hand</AppFailedUpdateDownloadURL></update>)";

TEST(UpdateCheck, ReadsTheFirstOfEachElementAndBreaksTheLinesOfTheChanges) {
    const auto parsed = UpdateCheck::parse(kDescription);
    ASSERT_TRUE(parsed.ok());
    const UpdateDescription &description = parsed.value();
    EXPECT_EQ(description.AppID, "com.tessolar.Cantorel");
    EXPECT_EQ(description.AppVersion, "251");
    EXPECT_EQ(description.AppUpdateAddress, "https://a.example/get?x=1&y=2");
    EXPECT_EQ(description.AppUpdateFiles, "one, two");
    EXPECT_EQ(description.AppUsers, "all");
    EXPECT_EQ(description.AppChangeLogs, "First\nZweitens: größer\n");
    EXPECT_EQ(description.AppUpdateSize, "12 MB");
    EXPECT_EQ(description.AppFailedUpdateDownloadURL, "https://a.example/by-hand");
}

TEST(UpdateCheck, BrokenDescriptionsAreReadAsFarAsTheyGo) {
    const struct {
        const char *text;
        bool describes;
        const char *version;
    } cases[] = {
        {"<update><AppVersion>251</AppVersion><AppUsers>al", true, "251"},
        {"<update><b><AppVersion>251</b></AppVersion></update>", true, "251"},
        {"<update><AppID>x</AppID></update>", true, ""},
        {"<update>& <AppVersion>2.6.0</AppVersion></update>", true, "2.6.0"},
        {"<html><body><h1>Not found<br></h1></body></html>", false, ""},
        {"", false, ""},
        {"<!DOCTYPE u [<!ENTITY a \"x\"><!ENTITY b \"&a;&a;\">]><u><AppVersion>&b;</AppVersion></u>", false, ""},
        {"<!DOCTYPE u [<!ENTITY f SYSTEM \"file:///etc/hostname\">]><u><AppVersion>&f;</AppVersion></u>", false, ""},
    };
    for (const auto &[text, describes, version] : cases) {
        const auto parsed = UpdateCheck::parse(text);
        EXPECT_EQ(parsed.ok(), describes) << text;
        if (parsed)
            EXPECT_EQ(parsed.value().AppVersion, version) << text;
        else
            EXPECT_TRUE(Lang::english(parsed.failure().sentence).endsWith('.'));
    }
}

TEST(UpdateCheck, OnlyANewerVersionThatIsNotSkippedIsOffered) {
    AppSettings::setUpdateSkipVersionID(260);
    const struct {
        const char *version;
        int number;
        bool offered;
    } cases[] = {{"250", 250, false},    {"251", 251, true},          {"2.5.0", 250, false},
                 {"2.5.1", 251, true},   {" 2.6 ", 260, false},       {"2.x", 0, false},
                 {"", 0, false},         {"2.10.0", 2'010'000, true}, {"2.4.12", 2'004'012, false},
                 {"2.5.1000", 0, false}, {"99999999999", 0, false},   {"3.0.0.7", 300, true}};
    for (const auto &[version, number, offered] : cases) {
        UpdateDescription description;
        description.AppVersion = version;
        EXPECT_EQ(description.versionID(), number) << version;
        EXPECT_EQ(description.isOffered(), offered) << version;
    }
    AppSettings::setUpdateSkipVersionID(2'010'000);
    UpdateDescription skipped;
    skipped.AppVersion = "2.10.0";
    EXPECT_FALSE(skipped.isOffered());
}

TEST(UpdateCheck, AsksOnceInAProcessUnderTheProductsReportName) {
    LoopbackServer server([](const QByteArray &) { return Reply::page(kDescription); });
    UpdateCheck updates(server.url("/"));
    const auto description = updates.run();
    ASSERT_TRUE(description);
    EXPECT_EQ(description->AppVersion, "251");
    EXPECT_FALSE(AppSettings::lastCheckUpdatesTime().isEmpty());
    EXPECT_FALSE(updates.run()) << "a second time";
    ASSERT_EQ(server.requests().size(), 1);
    EXPECT_TRUE(server.requests()[0].startsWith("GET /update/cantorel.xml HTTP/1.1\r\n"));
    EXPECT_TRUE(server.requests()[0].contains("\r\nUser-Agent: Tessolar\r\n"));
}

TEST(UpdateCheck, DebugModeAsksNobody) {
    LoopbackServer server([](const QByteArray &) { return Reply::page(kDescription); });
    UpdateCheck updates(server.url());
    qputenv("CANTOREL_DEBUG", "1");
    EXPECT_FALSE(updates.run());
    qunsetenv("CANTOREL_DEBUG");
    EXPECT_TRUE(updates.run());
    EXPECT_EQ(server.requests().size(), 1);
}

} // namespace
} // namespace cantorel::test
