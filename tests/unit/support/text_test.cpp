// Cleaning, testing and converting pieces of modem text.
#include "support/text.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "fakes/fixture.h"

namespace {

template <typename Cleaner>
std::string After(Cleaner cleaner, std::string text) {
    cleaner(text);
    return text;
}

TEST(Text, StripLineEndsTakesThemFromAnywhere) {
    EXPECT_EQ(After(StripLineEnds, "\r\na\rb\nc\r\n"), "abc");
    EXPECT_EQ(After(StripLineEnds, " a\t "), " a\t ");
    EXPECT_EQ(After(StripLineEnds, ""), "");
}

TEST(Text, CleanWhiteSpaceTakesBlanksTabsAndLineEndsFromAnywhere) {
    EXPECT_EQ(After(CleanWhiteSpace, " my \tapn\r\n"), "myapn");
    EXPECT_EQ(After(CleanWhiteSpace, "n o"), "no");
    EXPECT_EQ(After(CleanWhiteSpace, " \t\r\n"), "");
}

TEST(Text, CleanWhiteSpaceKeepsOtherWhiteSpace) {
    EXPECT_EQ(After(CleanWhiteSpace, "a\v\fb"), "a\v\fb");
}

TEST(Text, TrimTakesAllWhiteSpaceFromTheEnds) {
    EXPECT_EQ(After(Trim, " \t\v\f\r\na b\t "), "a b");
    EXPECT_EQ(After(Trim, "   "), "");
    EXPECT_EQ(After(Trim, ""), "");
    EXPECT_EQ(After(Trim, "\xa0x\xa0"), "\xa0x\xa0");
}

TEST(Text, TrimLeftKeepsTheRightEnd) {
    EXPECT_EQ(After(TrimLeft, " \ta "), "a ");
    EXPECT_EQ(After(TrimLeft, " "), "");
}

TEST(Text, ToLowerChangesLettersOnly) {
    EXPECT_EQ(After(ToLower, "YeS_1-Z"), "yes_1-z");
    EXPECT_EQ(After(ToLower, "\xc4\xff"), "\xc4\xff");
}

TEST(Text, RemoveCharRemovesEachOne) {
    std::string text = "\"+1\"";
    RemoveChar(text, '"');
    EXPECT_EQ(text, "+1");
}

TEST(Text, ContainsFindsAnywhere) {
    EXPECT_TRUE(Contains("-E362E371", "E371"));
    EXPECT_FALSE(Contains("-e362", "E362"));
    EXPECT_TRUE(Contains("abc", ""));
    EXPECT_FALSE(Contains("", "a"));
}

TEST(Text, SignedNumbersAreDigitsWithAtMostALeadingMinus) {
    for (const char* number : {"0", "-3", "57", "007", "99999999999999999999"}) {
        SCOPED_TRACE(number);
        EXPECT_TRUE(IsInteger(number));
    }
    for (const char* other : {"5a", "2x", "+5", " 5", "5 ", "--5", "5-", "1.5"}) {
        SCOPED_TRACE(other);
        EXPECT_FALSE(IsInteger(other));
    }
}

// Deliberate: nothing in them fails.
// Guards oddity empty-is-a-number.
TEST(Text, TheEmptyTextAndALoneMinusPassAsNumbers) {
    EXPECT_TRUE(IsInteger(""));
    EXPECT_TRUE(IsInteger("-"));
}

TEST(Text, AFieldIsUnknownWhenEmptyOrNamedSo) {
    EXPECT_TRUE(IsStillUnknown(""));
    EXPECT_TRUE(IsStillUnknown("Unknown"));
    EXPECT_FALSE(IsStillUnknown("unknown"));
    EXPECT_FALSE(IsStillUnknown("Unknown "));
    EXPECT_FALSE(IsStillUnknown("LTE"));
}

TEST(Text, ToIntTakesTheLeadingNumber) {
    EXPECT_EQ(ToInt("8"), 8);
    EXPECT_EQ(ToInt(" \t42abc"), 42);
    EXPECT_EQ(ToInt("-7"), -7);
    EXPECT_EQ(ToInt("+7"), 7);
    EXPECT_EQ(ToInt("010"), 10);
    EXPECT_EQ(ToInt("0x10"), 0);
    EXPECT_EQ(ToInt("abc"), 0);
    EXPECT_EQ(ToInt(""), 0);
    EXPECT_EQ(ToInt("-"), 0);
    EXPECT_EQ(ToInt("2147483647"), INT_MAX);
    EXPECT_EQ(ToInt("-2147483648"), INT_MIN);
}

// Also where a long has 32 bits and would stop at the greatest one.
TEST(Text, ToIntKeepsTheLow32BitsOfAGreatNumber) {
    EXPECT_EQ(ToInt("2147483648"), INT_MIN);
    EXPECT_EQ(ToInt("4294967295"), -1);
    EXPECT_EQ(ToInt("4294967304"), 8);
    EXPECT_EQ(ToInt("9223372036854775807"), -1);
    EXPECT_EQ(ToInt("99999999999999999999"), -1) << "stops at the greatest number of 64 bits";
}

TEST(Text, FormatTakesWhateverLengthItNeeds) {
    const std::string word(5000, 'x');
    EXPECT_EQ(Format("%d:%s", -3, word.c_str()), "-3:" + word);
    EXPECT_EQ(Format("%s", ""), "");
}

class LocalTimeTest : public fake::DaemonTest {};

TEST_F(LocalTimeTest, PrintsTheWallClockInTheLocalZone) {
    EXPECT_EQ(LocalTime("%Y-%m-%d %H:%M:%S"), "2026-03-14 09:15:00");
}

TEST_F(LocalTimeTest, FollowsTheZoneOfTheRouter) {
    setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    tzset();
    EXPECT_EQ(LocalTime("%Y-%m-%d %H:%M:%S"), "2026-03-14 05:15:00");
    setenv("TZ", "NPT-5:45", 1);
    tzset();
    EXPECT_EQ(LocalTime("%Y-%m-%d %H:%M:%S"), "2026-03-14 15:00:00");
}

TEST_F(LocalTimeTest, IsEmptyWhenTheRoomIsTooSmall) {
    EXPECT_EQ(LocalTime("%H:%M:%S", 9), "09:15:00");
    EXPECT_EQ(LocalTime("%H:%M:%S", 8), "");
    EXPECT_EQ(LocalTime(std::string(100, 'x').c_str(), 1000), "");
}

}  // namespace
