// The lines of an answer, and what the log shows of the way through them.
#include "modem/answer.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "support/system_log.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kAnswer[] = "\r\n+CSQ: 20,99\r\n\r\nOK\r\n";

class Answer : public fake::DaemonTest {};

TEST_F(Answer, IsSplitAtLineFeedsAndKeepsItsCarriageReturns) {
    EXPECT_THAT(LinesOf(kAnswer), ElementsAre("\r", "+CSQ: 20,99\r", "\r", "OK\r", ""));
    EXPECT_THAT(LinesOf(""), IsEmpty());
}

TEST_F(Answer, TellsTheCountAboveLevelOneOnly) {
    for (const int level : {-1, 0, 1, 2, 3}) {
        SCOPED_TRACE(level);
        g_i_DebugLevel = level;
        world.log.clear();
        EXPECT_EQ(CountedLinesOf(kAnswer), LinesOf(kAnswer));
        LinesOf(kAnswer);
        EXPECT_EQ(world.CountLogged("DEBUG: token count is : 5"), level > 1 ? 1 : 0);
        EXPECT_EQ(world.log.size(), level > 1 ? 1u : 0u);
    }
}

TEST_F(Answer, AHitIsToldInOneOfThreeForms) {
    g_i_DebugLevel = 2;
    LogHit(Hit::kPlain, "+TEMP:");
    LogHit(Hit::kCleaned, "!GVER:");
    LogHit(Hit::kQuotedAndCleaned, "Tot Ec/Io:");
    LogCleaned("LTE");
    EXPECT_THAT(world.log, ElementsAre("DEBUG: line looks like +TEMP:",
                                       "DEBUG: line looks like !GVER:, cleaning white space",
                                       "DEBUG: line looks like 'Tot Ec/Io:', cleaning white space",
                                       "DEBUG: line after cleaning (length 3): LTE"));
    g_i_DebugLevel = 1;
    world.log.clear();
    LogHit(Hit::kPlain, "+TEMP:");
    EXPECT_THAT(world.log, IsEmpty());
}

TEST_F(Answer, TheFirstLineWithTheTextIsFoundAndTheWayToItLogged) {
    g_i_DebugLevel = 2;
    const cStringTokenizer lines = LinesOf("a\nb x\nc x");
    const std::string* line = FindLine(lines, "x");
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(*line, "b x");
    EXPECT_THAT(world.log, ElementsAre("DEBUG: checking line : a", "DEBUG: checking line : b x"));
    EXPECT_EQ(FindLine(lines, "none"), nullptr);
    EXPECT_EQ(world.log.size(), 5u) << "every line was looked at";
}

TEST_F(Answer, TheRestStandsBehindTheFirstLabel) {
    EXPECT_EQ(Behind("!GVER: 1.0 !GVER: 2", "!GVER:"), " 1.0 !GVER: 2");
    EXPECT_EQ(Behind("RSSI=", "RSSI="), "");
}

}  // namespace
