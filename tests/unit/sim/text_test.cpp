#include "sim/modem/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sim::kSecond;
using testing::ElementsAre;

TEST(NormaliseCommand, CapitalisesOutsideQuotesOnly) {
    EXPECT_EQ(sim::NormaliseCommand(" at+cgdcont=3,\"ipv4v6\",\"My.Apn\" "),
              "AT+CGDCONT=3,\"ipv4v6\",\"My.Apn\"");
}

TEST(SplitParameters, KeepsCommasInQuotesAndDropsTheQuotes) {
    EXPECT_THAT(sim::SplitParameters("1, \"a,b\",,2"), ElementsAre("1", "a,b", "", "2"));
    EXPECT_THAT(sim::SplitParameters(""), ElementsAre(""));
}

TEST(SplitWords, QuotesKeepBlanksAndEscapesAreKnown) {
    EXPECT_THAT(*sim::SplitWords("sms  +1 \"two words\" a\\x41\\r\\n"),
                ElementsAre("sms", "+1", "two words", "aA\r\n"));
    EXPECT_THAT(*sim::SplitWords("say \"\""), ElementsAre("say", ""));
    EXPECT_THAT(*sim::SplitWords("  "), ElementsAre());
}

TEST(SplitWords, RefusesAnOpenQuote) {
    EXPECT_FALSE(sim::SplitWords("say \"half"));
    EXPECT_FALSE(sim::SplitWords("say \"half\\\""));
}

TEST(Unescape, LeavesWhatItDoesNotKnow) {
    EXPECT_EQ(sim::Unescape("a\\qb\\"), "a\\qb\\");
    EXPECT_EQ(sim::Unescape("\\x4"), "\\x4");
    EXPECT_EQ(sim::Unescape("\\t\\e\\\\\\\""), "\t\x1b\\\"");
}

TEST(ParseInt, TakesOnlyAWholeNumberThatFits) {
    EXPECT_EQ(sim::ParseInt("-12"), -12);
    EXPECT_EQ(sim::ParseInt("1A2B", 16), 0x1A2B);
    EXPECT_FALSE(sim::ParseInt("12x"));
    EXPECT_FALSE(sim::ParseInt(""));
    EXPECT_FALSE(sim::ParseInt("99999999999"));
}

TEST(ParseDuration, KnowsItsUnits) {
    EXPECT_EQ(sim::ParseDuration("300ms"), 300'000);
    EXPECT_EQ(sim::ParseDuration("30s"), 30 * kSecond);
    EXPECT_EQ(sim::ParseDuration("30"), 30 * kSecond);
    EXPECT_EQ(sim::ParseDuration("5m"), 300 * kSecond);
    EXPECT_EQ(sim::ParseDuration("2h"), 7200 * kSecond);
    EXPECT_EQ(sim::ParseDuration("1d"), 86400 * kSecond);
}

TEST(ParseDuration, RefusesTheRest) {
    EXPECT_FALSE(sim::ParseDuration("-1s"));
    EXPECT_FALSE(sim::ParseDuration("s"));
    EXPECT_FALSE(sim::ParseDuration("3 s"));
    EXPECT_FALSE(sim::ParseDuration("3weeks"));
    EXPECT_FALSE(sim::ParseDuration("9223372036854775807d"));
}

}  // namespace
