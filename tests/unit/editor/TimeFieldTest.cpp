#include "editor/models/TimeField.h"

#include <gtest/gtest.h>

namespace cantorel {
namespace {

TEST(TimeField, TimesArePrintedWithMillisecondsOfTwoDigitsWhereAPatternSaysSo) {
    EXPECT_EQ(TimeField::timeStringFormat(3725.25, "hh-mm-ss-sss"), "01:02:05.250");
    EXPECT_EQ(TimeField::timeStringFormat(65.0078125, "hh-mm-ss-sss"), "00:01:05.08");
    EXPECT_EQ(TimeField::timeStringFormat(3725.25, "hh-mm-ss"), "01:02:05");
    EXPECT_EQ(TimeField::wholeText(65.0078125), "00:01:05.008");
    EXPECT_EQ(TimeField::parseTimeFromTimeInval(59.9996), (TimeField::Parts{0, 1, 0, 0})) << "printing rounds";
    EXPECT_EQ(TimeField::parseTimeFromTimeInval(400000), (TimeField::Parts{111, 6, 40, 0}));
}

TEST(TimeField, StepperKeysAndTypingChangeThePartThatHasTheFocus) {
    TimeField field;
    field.setTime(10, 5, 4000);
    EXPECT_FALSE(field.press(1)) << "nothing has the focus";
    EXPECT_TRUE(field.step(1)) << "which the seconds take";
    EXPECT_EQ(field.time(), 11);
    EXPECT_EQ(field.focusOnIndex(), TimeField::Second);
    field.focus(TimeField::Millisecond);
    for (int i = 0; i < 10; ++i)
        field.press(1);
    EXPECT_EQ(field.time(), 11.1) << "ten milliseconds each, and no error sums up";
    field.focus(TimeField::Minute);
    EXPECT_FALSE(field.step(-1)) << "it would be below zero";
    EXPECT_EQ(field.time(), 11.1);
    EXPECT_TRUE(field.press(-1));
    EXPECT_EQ(field.time(), 5) << "a key stops at the least";
    field.focus(TimeField::Hour);
    EXPECT_TRUE(field.press(1));
    EXPECT_TRUE(field.press(1));
    EXPECT_EQ(field.time(), 4000);
    EXPECT_FALSE(field.press(1));
    EXPECT_TRUE(field.type(TimeField::Millisecond, 7));
    EXPECT_EQ(field.time(), 4000.007);
    EXPECT_TRUE(field.type(TimeField::Minute, -3)) << "as 0";
    EXPECT_EQ(field.time(), 3640.007);
    EXPECT_FALSE(field.type(TimeField::Second, 40));
    EXPECT_EQ(field.text(TimeField::Millisecond) + ' ' + field.text(TimeField::Hour), "007 01");
}

} // namespace
} // namespace cantorel
