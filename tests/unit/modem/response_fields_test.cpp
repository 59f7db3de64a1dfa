// Cutting values out of single lines.
#include "modem/response_fields.h"

#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "state/settings.h"

namespace {

using Lines = std::vector<std::string>;

class ResponseFields : public fake::DaemonTest {
  protected:
    std::string value1_ = "old1";
    std::string value2_ = "old2";
};

TEST_F(ResponseFields, TheValueIsTheRestBehindTheNeedle) {
    struct Row {
        const char* line;
        const char* needle;
        const char* expected;
    };
    const Row rows[] = {
        {"+CSQ: 17,99", "+CSQ:", " 17,99"}, {"xx+CSQ:", "+CSQ:", ""}, {"a=b=c", "=", "b=c"},
        {"+CMGS: 5\r", "+CMGS: ", "5\r"},   {"abc", "", "abc"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(ExtractAfterNeedle(row.line, row.needle, value1_), 1);
        EXPECT_EQ(value1_, row.expected);
    }
}

TEST_F(ResponseFields, AMissingNeedleLeavesTheValueAlone) {
    EXPECT_EQ(ExtractAfterNeedle("+CSQ: 17,99", "+CIND:", value1_), 0);
    EXPECT_EQ(value1_, "old1");
    EXPECT_EQ(ExtractAfterNeedle("", "x", value1_), 0);
}

TEST_F(ResponseFields, TheValueMayReplaceItsOwnLine) {
    std::string line = "ab=cd";
    EXPECT_EQ(ExtractAfterNeedle(line, "=", line), 1);
    EXPECT_EQ(line, "cd");
}

TEST_F(ResponseFields, TheNeedleIsTracedFromLevelTwoOn) {
    for (const int level : {-1, 0, 1}) {
        g_i_DebugLevel = level;
        ExtractAfterNeedle("ab+CSQ: 17", "+CSQ:", value1_);
        EXPECT_TRUE(world.log.empty()) << level;
    }
    g_i_DebugLevel = 2;
    ExtractAfterNeedle("ab+CSQ: 17", "+CSQ:", value1_);
    EXPECT_EQ(world.log, (Lines{
                             "DEBUG: In Line \"ab+CSQ: 17\" found needle",
                             "DEBUG: Needle1 (pos 2-6), length=5",
                             "DEBUG: Value1=\" 17\" (pos start 7), expected length=5, "
                             "real length=3",
                         }));
    world.log.clear();
    ExtractAfterNeedle("ab", "+CSQ:", value1_);
    EXPECT_TRUE(world.log.empty());
}

TEST_F(ResponseFields, TwoNeedlesGiveTheTextBetweenAndTheRest) {
    EXPECT_EQ(ExtractAroundNeedles("RSSI (dBm): -70 RSRP (dBm): -99",
                                   "RSSI (dBm):", "RSRP (dBm):", value1_, value2_),
              1);
    EXPECT_EQ(value1_, " -70 ");
    EXPECT_EQ(value2_, " -99");
}

// Deliberate: the length of the first value leaves the first needle's position out.
// Guards oddity first-value-runs-on.
TEST_F(ResponseFields, ALabelThatStartsLaterLetsTheFirstValueRunOn) {
    EXPECT_EQ(ExtractAroundNeedles("  RSSI (dBm): -70 RSRP (dBm): -99",
                                   "RSSI (dBm):", "RSRP (dBm):", value1_, value2_),
              1);
    EXPECT_EQ(value1_, " -70 RS");
    EXPECT_EQ(value2_, " -99");
}

TEST_F(ResponseFields, TheFirstValueIsCutAtTheEndOfTheLine) {
    EXPECT_EQ(ExtractAroundNeedles("....................A:1 B:2", "A:", "B:", value1_, value2_), 1);
    EXPECT_EQ(value1_, "1 B:2");
    EXPECT_EQ(value2_, "2");
}

TEST_F(ResponseFields, TheSecondNeedleMayStandFirst) {
    EXPECT_EQ(ExtractAroundNeedles("xxxxB:2 A:1", "A:", "B:", value1_, value2_), 1);
    EXPECT_EQ(value1_, "1");
    EXPECT_EQ(value2_, "2 A:1");
}

TEST_F(ResponseFields, ANegativeLengthMeansTheRestOfTheLine) {
    EXPECT_EQ(ExtractAroundNeedles("B:2 LABEL:1 and more", "LABEL:", "B:", value1_, value2_), 1);
    EXPECT_EQ(value1_, "1 and more");
    EXPECT_EQ(value2_, "2 LABEL:1 and more");
}

TEST_F(ResponseFields, BothNeedlesAreNeeded) {
    EXPECT_EQ(ExtractAroundNeedles("A:1", "A:", "B:", value1_, value2_), 0);
    EXPECT_EQ(ExtractAroundNeedles("B:1", "A:", "B:", value1_, value2_), 0);
    EXPECT_EQ(value1_, "old1");
    EXPECT_EQ(value2_, "old2");
}

TEST_F(ResponseFields, BothNeedlesAreTracedFromLevelTwoOn) {
    g_i_DebugLevel = 1;
    ExtractAroundNeedles("A:1 BB:23", "A:", "BB:", value1_, value2_);
    EXPECT_TRUE(world.log.empty());
    g_i_DebugLevel = 2;
    ExtractAroundNeedles("xA:1 BB:23", "A:", "BB:", value1_, value2_);
    EXPECT_EQ(world.log,
              (Lines{
                  "DEBUG: In Line \"xA:1 BB:23\" found Start and stop point",
                  "DEBUG: Needle1 (pos 1-2), length=2",
                  "DEBUG: Needle2 (pos 5-7), length=3",
                  "DEBUG: Value1=\"1 B\" (pos start 3), expected length=3, real length=3",
                  "DEBUG: Value2=\"23\" (pos start 8), expected length=2, real length=2",
              }));
}

TEST_F(ResponseFields, TheTraceShowsTheExpectedLengthEvenWhenItIsNegative) {
    g_i_DebugLevel = 3;
    ExtractAroundNeedles("B:LABEL:1", "LABEL:", "B:", value1_, value2_);
    EXPECT_TRUE(
        world.Logged("DEBUG: Value1=\"1\" (pos start 8), expected length=-6, real length=1"));
}

TEST_F(ResponseFields, TheCmsCodeIsTheTextBehindTheMarkerWithItsBlank) {
    EXPECT_EQ(GetCmsErrorCode("\r\n+CMS ERROR: 500\r\n", value1_), 1);
    EXPECT_EQ(value1_, "500\r\n");
    EXPECT_EQ(GetCmsErrorCode("+CMS ERROR:500", value2_), 0);
    EXPECT_EQ(GetCmsErrorCode("+CME ERROR: 500", value2_), 0);
    EXPECT_EQ(value2_, "old2");
}

TEST_F(ResponseFields, ServiceIsBadWhenItsTextHoldsNoAndABlank) {
    for (const int level : {-1, 0, 1}) {
        g_i_DebugLevel = level;
        world.log.clear();
        EXPECT_EQ(haveValidService("No Service"), 0);
        EXPECT_EQ(haveValidService("GSM No Network"), 0);
        EXPECT_EQ(world.log, (Lines{"Warning: Modem reports bad service : 'No Service'",
                                    "Warning: Modem reports bad service : 'GSM No Network'"}));
    }
}

TEST_F(ResponseFields, AnyOtherServiceIsGood) {
    for (const char* service :
         {"", "Limited Service", "Service", "no Service", "NoService", "No", "LTE", "Unknown"}) {
        SCOPED_TRACE(service);
        EXPECT_EQ(haveValidService(service), 1);
    }
    EXPECT_TRUE(world.log.empty());
    g_i_DebugLevel = -1;
    haveValidService("LTE");
    EXPECT_EQ(world.log, Lines{"DEBUG: haveValidService() Good service 'LTE'"});
}

// Guards oddity empty-signal-is-minus.
TEST_F(ResponseFields, AMagnitudeGetsItsSign) {
    struct Row {
        const char* text;
        const char* expected;
    };
    const Row rows[] = {
        {"57", "-57"},
        {"0", "0"},
        {"-3", "-3"},
        {"5a", "5a"},
        {"00", "-00"},
        {"", "-"},  // deliberate: nothing in the empty text fails the test for a
                    // number
        {"-", "-"},
        {"+5", "+5"},
        {" 5", " 5"},
        {"5.1", "5.1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        std::string text = row.text;
        NegateNumberText(text);
        EXPECT_EQ(text, row.expected);
    }
}

}  // namespace
