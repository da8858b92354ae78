#include "app/start/EntryPoint.h"

#include "log/Log.h"
#include "settings/AppSettings.h"
#include "tests/support/OrdinaryFile.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace cantorel {
namespace {

QString printed(const QStringList &arguments) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(runMain(arguments, [] { return 7; }), 7);
    return QString::fromStdString(testing::internal::GetCapturedStderr());
}

TEST(EntryPoint, OnlyTheLanguageIsObeyed) {
    const struct {
        const char *argument, *language;
    } cases[] = {{"lang=de&foo=1", "German"},
                 {"foo=1&lang=ZH", "ChineseSimplified"},
                 {"lang=xx", "English"},
                 {"lang=fr=de", "French"},
                 {"lang=", "English"},
                 {"Lang=de", ""},
                 {"lang", ""},
                 {"de", ""},
                 {"", ""},
                 {"&&=&", ""}};
    for (const auto &[argument, language] : cases) {
        AppSettings::setOnlineLanguage({});
        printed({"/usr/bin/cantorel", argument});
        EXPECT_EQ(AppSettings::onlineLanguage(), language) << argument;
    }
}

TEST(EntryPoint, PrintsEveryArgumentAndEachPair) {
    const QString text = printed({"/usr/bin/cantorel", "lang=de&foo=1", "%1 plain"});
    EXPECT_TRUE(text.endsWith("argv[0] = /usr/bin/cantorel\n"
                              "argv[1] = lang=de&foo=1\n**** lang = de\n**** foo = 1\n"
                              "argv[2] = %1 plain\n"))
        << text.toStdString();
    EXPECT_TRUE(test::contents(LogFilePath(kApplicationLogName)).endsWith("] event -> main -> main\n"));
}

TEST(EntryPoint, AnExceptionIsLoggedAndDeliberatelyAnsweredWithZero) {
    EXPECT_EQ(runMain({"cantorel"}, []() -> int { throw std::runtime_error("lost"); }), 0);
    EXPECT_TRUE(test::contents(LogFilePath(kApplicationLogName)).contains("std::runtime_error -> lost"));
}

} // namespace
TEST(EntryPoint, AsksForHelpAndVersionAreAnsweredWithoutAWindow) {
    EXPECT_TRUE(answeredByArguments({"lang=de", "--help"}).value_or("").contains("--backend=embedded"));
    EXPECT_TRUE(answeredByArguments({"--version"}).value_or("").contains(AppSettings::appVersion()));
    EXPECT_EQ(answeredByArguments({"lang=de", "--backend=embedded"}), std::nullopt);
}

} // namespace cantorel
