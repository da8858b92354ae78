#include "util/ToolString.h"

#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <limits>

namespace cantorel {
namespace {

TEST(ToolString, SecondsAreReadOnlyFromTextsWithAColon) {
    const struct {
        const char *text;
        int seconds;
    } cases[] = {{"00:01:05.750", 65},
                 {"65", 0},
                 {"", 0},
                 {"65.5", 0},
                 {"1:00", 60},
                 {"1:00:00:00", 216000},
                 {"a:5", 5},
                 {":", 0},
                 {"5:", 300},
                 {"12.5:30", 0},
                 {" 1: 2", 62},
                 {"-1:00", -60},
                 {"99999999999999:0", std::numeric_limits<int>::max()}};
    for (const auto &c : cases)
        EXPECT_EQ(ToolString::secondFromString(c.text), c.seconds) << c.text;
    EXPECT_EQ(ToolString::secondFromString(QString()), 0);
    EXPECT_EQ(ToolString::secondFromString(QStringLiteral("0:").repeated(300) + "7"), 7);
}

TEST(ToolString, DurationsAreTruncatedToWholeSeconds) {
    const struct {
        double seconds;
        const char *text;
    } cases[] = {{0, "00:00:00"},       {-5, "00:00:00"},
                 {0.9, "00:00:00"},     {59.999, "00:00:59"},
                 {3599.9, "00:59:59"},  {3600, "01:00:00"},
                 {360000, "100:00:00"}, {std::numeric_limits<double>::quiet_NaN(), "00:00:00"}};
    for (const auto &c : cases)
        EXPECT_EQ(ToolString::stringFromDuration(c.seconds).toStdString(), c.text) << c.seconds;
}

TEST(ToolString, DecimalSizesBeginAtKilobytesAndEndAtTerabytes) {
    const struct {
        double bytes;
        int decimals;
        const char *text;
    } cases[] = {{0, 1, " 0.0 KB"},     {500, 1, " 0.5 KB"},     {1000, 2, "1.00 KB"}, {1001, 3, "1.001 KB"},
                 {1e6, 1, "1000.0 KB"}, {1000001, 1, " 1.0 MB"}, {5e15, 0, "5000 TB"}, {1500, 7, "   2 KB"}};
    for (const auto &c : cases)
        EXPECT_EQ(ToolString::formatSizeFromByte(c.bytes, c.decimals).toStdString(), c.text) << c.bytes;
}

TEST(ToolString, RenamingCountsUpAndReplacesEveryCountInTheName) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("name.mp3");
    EXPECT_EQ(ToolString::renameFromFilePath(path, 0), path);
    test::store(path, {});
    EXPECT_EQ(ToolString::renameFromFilePath(path, 0), folder.filePath("name(1).mp3"));
    test::store(folder.filePath("name(1).mp3"), {});
    EXPECT_EQ(ToolString::renameFromFilePath(path, 0), folder.filePath("name(2).mp3"));

    const QString marked = folder.filePath("b(1).mp3");
    test::store(marked, {});
    test::store(folder.filePath("b(1)(1).mp3"), {});
    EXPECT_EQ(ToolString::renameFromFilePath(marked, 0), folder.filePath("b(2)(2).mp3"));

    const QString bare = folder.filePath("bare");
    test::store(bare, {});
    EXPECT_EQ(ToolString::renameFromFilePath(bare, 0), folder.filePath("bare(1)"));
}

TEST(ToolString, CapitalYearIsTheWeekYear) {
    const QDateTime date(QDate(2018, 12, 31), QTime(14, 7, 9)); // the first week of 2019
    EXPECT_EQ(ToolString::stringFromDate(date, "yyyy-MM-dd HH:mm:ss"), "2018-12-31 14:07:09");
    EXPECT_EQ(ToolString::stringFromDate(date, "YYYY"), "2019");
    EXPECT_EQ(ToolString::stringFromDate(QDateTime(), "yyyy"), QString());
}

TEST(ToolString, DatesHaveTheDigitsAndTheCalendarThatProgramsRead) {
    for (const char *name : {"fa_IR", "ar_EG", "th_TH"}) {
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale(name), status);
        EXPECT_EQ(ToolString::stringFromDate(QDateTime(QDate(2018, 3, 5), QTime(14, 7, 9)), "yyyy-MM-dd HH:mm:ss"),
                  "2018-03-05 14:07:09")
            << name;
    }
}

TEST(ToolString, ExpressionsAreIcusAndBrokenOnesMatchNothing) {
    const QString text = "Duration: 00:03:12.45, start";
    EXPECT_EQ(ToolString::regexGetStringFromString(text, "\\d[\\d\\:]+"), "00:03:12");
    EXPECT_EQ(ToolString::regexGetArrayFromString("é1a22b333", "\\d+"), (QStringList{"1", "22", "333"}));
    EXPECT_FALSE(ToolString::regexGetStringFromString(text, "(").has_value());
    EXPECT_FALSE(ToolString::regexGetStringFromString(text, "xyz").has_value());
    EXPECT_EQ(ToolString::regexGetArrayFromString("ab", "x*").size(), 3);
}

TEST(ToolString, DigestsAndEncodingsAreTheStandardOnes) {
    EXPECT_EQ(ToolString::md5("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(ToolString::base64Decode(ToolString::base64Encode("\x00\xff ab")), QByteArray("\x00\xff ab"));
    EXPECT_EQ(ToolString::base64Decode("a*b"), QByteArray());
    EXPECT_EQ(ToolString::urlEncode("a b&é~"), "a%20b%26%C3%A9~");
    EXPECT_TRUE(ToolString::validateEmail("a.b@c.de"));
    EXPECT_FALSE(ToolString::validateEmail("x a.b@c.de"));
}

TEST(LeadingInteger, SaturatesInsteadOfWrapping) {
    constexpr auto most = std::numeric_limits<qint64>::max();
    constexpr auto least = std::numeric_limits<qint64>::min();
    const struct {
        const char *text;
        qint64 value;
    } cases[] = {{"12", 12},
                 {" +7x", 7},
                 {"-3", -3},
                 {"x", 0},
                 {"", 0},
                 {"08", 8},
                 {"9223372036854775807", most},
                 {"9223372036854775808", most},
                 {"99999999999999999999", most},
                 {"-9223372036854775808", least},
                 {"-99999999999999999999", least}};
    for (const auto &c : cases)
        EXPECT_EQ(leadingInteger(c.text), c.value) << c.text;
}

} // namespace
} // namespace cantorel
