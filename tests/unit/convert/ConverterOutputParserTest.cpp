#include "convert/ConverterOutputParser.h"

#include <gtest/gtest.h>

namespace cantorel {
namespace {

TEST(ConverterOutputParser, ProgressIsToldOnlyWhereItIsKnown) {
    const struct {
        const char *text;
        int duration;
        std::optional<double> percent;
    } cases[] = {
        {"size= 1406kB time=00:01:30.00 bitrate= 128.0kbits/s speed=  60x", 180, 50},
        {"time= 00:00:45.99", 180, 25},
        {"time=00:03:00.00", 180, {}}, // not below the duration
        {"time=00:01:30.00", 0, {}},
        {"time=N/A bitrate=N/A", 180, {}},
        {"", 180, {}},
        {"time=-00:00:00.02", 180, {}},
    };
    for (const auto &[text, duration, percent] : cases)
        EXPECT_EQ(ConverterOutputParser::progress(QString::fromLatin1(text), duration), percent) << text;
}

TEST(ConverterOutputParser, DurationIsTheFirstWithoutItsFraction) {
    EXPECT_EQ(ConverterOutputParser::durationText(
                  QStringLiteral("Input #0\n  Duration: 00:03:25.31, start: 0.0\n  Duration: 00:00:01.00")),
              QStringLiteral("00:03:25"));
    EXPECT_EQ(ConverterOutputParser::durationText(QStringLiteral("Duration: N/A")), QString());
}

} // namespace
} // namespace cantorel
