#include "modemctl/anonymize.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modemctl {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

constexpr Anonymizer::Key kKey = {1, 2};

bool HasRightCheckDigit(const std::string& digits) {
    int sum = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        int value = digits[digits.size() - 1 - i] - '0';
        if (i % 2 == 1) value = value > 4 ? 2 * value - 9 : 2 * value;
        sum += value;
    }
    return sum % 10 == 0;
}

TEST(Anonymizer, KeepsTheShape) {
    Anonymizer a(kKey);
    EXPECT_THAT(a.Replace(Personal::kNumber, "+15551234567"), MatchesRegex("\\+[1-9][0-9]{10}"));
    EXPECT_THAT(a.Replace(Personal::kCell, "02A1C3D"), MatchesRegex("[0-9]{2}[A-F][0-9][A-F][0-9]"
                                                                    "[A-F]"));
    EXPECT_THAT(a.Replace(Personal::kApn, "m2m.example.org"),
                MatchesRegex("[a-z][0-9][a-z]\\.[a-z]{7}\\.[a-z]{3}"));
    EXPECT_THAT(a.Replace(Personal::kSubscriber, "262011234567890"),
                MatchesRegex("26201[0-9]{10}"));
    EXPECT_THAT(a.Replace(Personal::kText, "Meet Bob, 17:30!"),
                MatchesRegex("[A-Z][a-z]{3} [A-Z][a-z]{2}, [0-9]{2}:[0-9]{2}!"));
    EXPECT_EQ(a.Replace(Personal::kText, "\xc3\xa9").size(), 2U);
    EXPECT_EQ(a.Replace(Personal::kSerial, ""), "");
    EXPECT_EQ(a.Replace(Personal::kSerial, "Unknown"), "Unknown");
}

TEST(Anonymizer, KeepsCheckDigitsRight) {
    Anonymizer a(kKey);
    const std::string imei = a.Replace(Personal::kSerial, "490154203237518");
    EXPECT_TRUE(HasRightCheckDigit(imei)) << imei;
    const std::string iccid = a.Replace(Personal::kSimCard, "8949020000001234563");
    EXPECT_THAT(iccid, MatchesRegex("89[0-9]{17}"));
}

TEST(Anonymizer, ReplacesTheSameByTheSameAndOthersByOthers) {
    Anonymizer a(kKey);
    const std::string once = a.Replace(Personal::kNumber, "+15551234567");
    EXPECT_EQ(a.Replace(Personal::kNumber, "15551234567"), once.substr(1));
    EXPECT_EQ(a.Replace(Personal::kText, "call 15551234567"),
              a.Replace(Personal::kText, "call") + " " + once.substr(1));
    std::set<std::string> replacements;
    for (int i = 1000; i < 3000; ++i) {
        const std::string number = std::to_string(i * 7919);
        const std::string replaced = a.Replace(Personal::kNumber, number);
        EXPECT_NE(replaced, number);
        EXPECT_TRUE(replacements.insert(replaced).second) << replaced;
    }
}

TEST(Anonymizer, OfTwoReportsCannotBeCompared) {
    Anonymizer one(Anonymizer::NewKey());
    Anonymizer other(Anonymizer::NewKey());
    EXPECT_NE(one.Replace(Personal::kSerial, "490154203237518"),
              other.Replace(Personal::kSerial, "490154203237518"));
}

TEST(Anonymizer, KeepsTheKindOfANetwork) {
    Anonymizer a(kKey);
    EXPECT_THAT(a.Replace(Personal::kAddress, "10.11.12.13"), MatchesRegex("10\\..*"));
    EXPECT_THAT(a.Replace(Personal::kAddress, "192.168.1.7"), MatchesRegex("192\\.168\\..*"));
    EXPECT_THAT(a.Replace(Personal::kAddress, "100.80.1.7"), MatchesRegex("100\\.80\\..*"));
    EXPECT_THAT(a.Replace(Personal::kAddress, "93.184.216.34"), MatchesRegex("203\\..*"));
    EXPECT_EQ(a.Replace(Personal::kAddress, "8.8.8.8"), "8.8.8.8");
    EXPECT_NE(a.Replace(Personal::kAddress, "10.11.12.13"), "10.11.12.13");
    EXPECT_THAT(a.Replace(Personal::kAddress, "fe80::1a2b:3c4d"), MatchesRegex("fe80::.*"));
}

TEST(Scrub, FindsNumbersAndAddressesInFreeText) {
    Anonymizer a(kKey);
    const std::string text =
        a.Scrub("gw 93.184.216.34, v6 2001:db8::12ab, imei 490154203237518, tel +15550123");
    for (const char* const secret : {"93.184.216.34", "12ab", "490154203237518", "15550123"}) {
        EXPECT_THAT(text, Not(HasSubstr(secret)));
    }
    EXPECT_THAT(text, HasSubstr("gw 203."));
}

TEST(Scrub, LeavesTimesVersionsAndSmallNumbersAlone) {
    Anonymizer a(kKey);
    for (const char* const text :
         {"2026-03-14T09:15:02+00:00", "sms_msg20260314-091502.1", "v1.45 starting", "attempt 2/5",
          "Syncing system time to 9:15:2 3/14/2026 (LOCAL)", "process 12345", ""}) {
        EXPECT_EQ(a.Scrub(text), text);
    }
}

TEST(Scrub, FindsWhatIsKnownWhereverItStandsAlone) {
    Anonymizer a(kKey);
    const std::string apn = a.Replace(Personal::kApn, "m2m.example.org");
    EXPECT_EQ(a.Scrub("APN 'm2m.example.org' refused"), "APN '" + apn + "' refused");
    EXPECT_EQ(a.Scrub("xm2m.example.orgx"), "xm2m.example.orgx");
    const std::string cell = a.Replace(Personal::kCell, "12345");
    EXPECT_EQ(a.Scrub("cell 12345"), "cell " + cell);
}

TEST(Leaks, SeesWhatWasForgotten) {
    Anonymizer a(kKey);
    const std::string replaced = a.Replace(Personal::kSerial, "490154203237518");
    EXPECT_TRUE(a.Leaks("serial=490154203237518\n"));
    EXPECT_FALSE(a.Leaks("serial=" + replaced + "\n"));
    EXPECT_FALSE(a.Leaks("serial=1490154203237518\n"));
}

}  // namespace
}  // namespace modemctl
