// The parts of the reset rule that touch no file; its marker is played in the scenarios.
#include "core/error_checks.h"

#include <climits>

#include "fakes/fixture.h"
#include "state/settings.h"

namespace {

class ErrorChecks : public fake::DaemonTest {};

TEST_F(ErrorChecks, ACountOfZeroIsNeverDueAndChangesNothing) {
    int last_seen = 5;
    EXPECT_FALSE(ResetIsDue(0, 8, last_seen));
    EXPECT_EQ(last_seen, 5);
}

TEST_F(ErrorChecks, TheSameCountIsNotDueTwice) {
    int last_seen = 16;
    EXPECT_FALSE(ResetIsDue(16, 8, last_seen));
    EXPECT_EQ(last_seen, 16);
}

TEST_F(ErrorChecks, BelowTheCutoffOnlyTheUptimeIsRead) {
    g_i_UptimeCutoff = INT_MAX;
    g_i_LteConnectAttempts = 8;
    int last_seen = 3;
    for (const int card : {0, 7, 8}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        CheckErrorCounts(last_seen);
        EXPECT_TRUE(world.log.empty());
    }
    EXPECT_EQ(last_seen, 3);
    EXPECT_TRUE(world.shell.empty());
}

TEST_F(ErrorChecks, TheUptimeIsToldAtANonZeroLevel) {
    g_i_UptimeCutoff = INT_MAX;
    int last_seen = 0;
    g_i_DebugLevel = -1;
    CheckErrorCounts(last_seen);
    ASSERT_EQ(world.log.size(), 1u);
    double uptime = 0;
    int cutoff = 0;
    EXPECT_EQ(std::sscanf(world.log[0].c_str(), "Uptime current: %lf, uptime cutoff is %d", &uptime,
                          &cutoff),
              2);
    EXPECT_GT(uptime, 0.0);
    EXPECT_EQ(cutoff, INT_MAX);
}

TEST_F(ErrorChecks, TheLteCardsWithoutErrorsAreLeftAlone) {
    g_i_UptimeCutoff = 0;
    g_i_DebugLevel = -1;
    int last_seen = 4;
    for (const int card : {7, 8}) {
        g_i_CardType = card;
        world.log.clear();
        CheckErrorCounts(last_seen);
        EXPECT_EQ(world.log.back(), "Uptime > 0, checking LTE connection errors");
    }
    EXPECT_EQ(last_seen, 4);
    EXPECT_TRUE(world.shell.empty());
}

}  // namespace
