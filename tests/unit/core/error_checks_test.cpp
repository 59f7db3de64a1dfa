#include "core/error_checks.h"

#include <sys/stat.h>

#include <filesystem>

#include "connection/connection_test.h"
#include "state/settings.h"

namespace {

constexpr char kMarker[] = "/tmp/kvtswi.resetting";
constexpr char kStatus[] = "/var/log/kvtinit.status";
constexpr char kResetLine[] = "ResetPCMCIA now &> /dev/null &";

class ResetRule : public ConnectionTest {
  protected:
    int last_seen = 0;
};

TEST_F(ResetRule, SaysNoToZero) {
    last_seen = 5;
    EXPECT_FALSE(ResetIsDue(0, 8, last_seen));
    EXPECT_EQ(last_seen, 5);
}

TEST_F(ResetRule, SaysNoToTheSameCountTwice) {
    EXPECT_TRUE(ResetIsDue(8, 8, last_seen));
    Remove(kMarker);
    EXPECT_FALSE(ResetIsDue(8, 8, last_seen));
    EXPECT_FALSE(Exists(kMarker));
}

TEST_F(ResetRule, WaitsForAMultipleOfTheModulus) {
    for (int count = 1; count <= 24; ++count) {
        SCOPED_TRACE(count);
        Remove(kMarker);
        EXPECT_EQ(ResetIsDue(count, 8, last_seen), count == 8 || count == 16 || count == 24);
        EXPECT_EQ(last_seen, count);
    }
}

TEST_F(ResetRule, AfterAResetOnlyRemovesTheMarkerAtTheNextChange) {
    EXPECT_TRUE(ResetIsDue(8, 8, last_seen));
    EXPECT_TRUE(Exists(kMarker));
    EXPECT_FALSE(ResetIsDue(9, 8, last_seen));
    EXPECT_FALSE(Exists(kMarker));
    EXPECT_TRUE(ResetIsDue(16, 8, last_seen));
    EXPECT_TRUE(Exists(kMarker));
}

TEST_F(ResetRule, AMarkerSwallowsEvenAMultiple) {
    EXPECT_TRUE(ResetIsDue(8, 8, last_seen));
    EXPECT_FALSE(ResetIsDue(16, 8, last_seen));
    EXPECT_FALSE(Exists(kMarker));
    EXPECT_TRUE(ResetIsDue(24, 8, last_seen));
}

TEST_F(ResetRule, KeepsTheMarkerWhileTheCountStands) {
    EXPECT_TRUE(ResetIsDue(8, 8, last_seen));
    EXPECT_FALSE(ResetIsDue(8, 8, last_seen));
    EXPECT_FALSE(ResetIsDue(0, 8, last_seen));
    EXPECT_TRUE(Exists(kMarker));
}

TEST_F(ResetRule, AppliesToNegativeCountsToo) {
    EXPECT_FALSE(ResetIsDue(-7, 8, last_seen));
    EXPECT_TRUE(ResetIsDue(-8, 8, last_seen));
}

TEST_F(ResetRule, LeavesAnEmptyMarkerThatOnlyItsOwnerWrites) {
    const mode_t before = umask(0);
    ResetIsDue(8, 8, last_seen);
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(RealPath(kMarker).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
    EXPECT_EQ(Get(kMarker), "");
}

TEST_F(ResetRule, DoesNotFollowALinkInThePlaceOfTheMarker) {
    std::filesystem::create_symlink(RealPath("/var/planted"), RealPath(kMarker));
    EXPECT_TRUE(ResetIsDue(8, 8, last_seen));
    EXPECT_FALSE(Exists("/var/planted"));
}

class ErrorChecks : public ConnectionTest {
  protected:
    ErrorChecks() {
        g_i_UptimeCutoff = 600;
        Put("/proc/uptime", "3600.25 7100.50\n");
    }

    // The number of resets that one run of the checks starts.
    std::size_t Resets() {
        StartStory();
        CheckErrorCounts(last_seen);
        std::size_t resets = 0;
        for (const std::string& line : world.shell) resets += line == kResetLine ? 1 : 0;
        return resets;
    }
    std::size_t ResetsForPpp(int count) {
        Put(kStatus, "PPP_WIRELESS_ERROR_COUNTER=" + std::to_string(count) + "\n");
        return Resets();
    }
    std::size_t ResetsForLte(int attempts, int tx_failures) {
        g_i_LteConnectAttempts = attempts;
        g_i_TxCheckFailures = tx_failures;
        return Resets();
    }

    int last_seen = 0;
};

TEST_F(ErrorChecks, TellThatTheyReset) {
    ResetsForPpp(8);
    EXPECT_EQ(Story(), (Lines{"write: /tmp/kvtswi.resetting", "log: Resetting device",
                              std::string("run: ") + kResetLine}));
}

TEST_F(ErrorChecks, ForgetTheLastCountAtZero) {
    EXPECT_EQ(ResetsForPpp(8), 1U);
    EXPECT_EQ(ResetsForPpp(0), 0U);
    EXPECT_EQ(last_seen, 0);
    EXPECT_EQ(ResetsForPpp(8), 0U);  // removes the marker
    EXPECT_EQ(ResetsForPpp(0), 0U);
    EXPECT_EQ(ResetsForPpp(8), 1U);
}

TEST_F(ErrorChecks, TakeAMissingCountForZero) {
    last_seen = 8;
    EXPECT_EQ(Resets(), 0U);
    EXPECT_EQ(last_seen, 0);
    last_seen = 8;
    Put(kStatus, "OTHER=8\n");
    EXPECT_EQ(Resets(), 0U);
    EXPECT_EQ(last_seen, 0);
}

TEST_F(ErrorChecks, ReadTheCountWithBlanksAroundIt) {
    Put(kStatus, "# state\nUP=1\n PPP_WIRELESS_ERROR_COUNTER = 8 \n");
    EXPECT_EQ(Resets(), 1U);
}

// The table reader doubles the last character of a file, here the 4 of 24.
TEST_F(ErrorChecks, ReadACountWithoutLineEndWithItsLastDigitTwice) {
    Put(kStatus, "PPP_WIRELESS_ERROR_COUNTER=24");
    CheckErrorCounts(last_seen);
    EXPECT_EQ(last_seen, 244);
}

TEST_F(ErrorChecks, DoNothingBelowTheCutoff) {
    Put("/proc/uptime", "599.99 100.0\n");
    EXPECT_EQ(ResetsForPpp(8), 0U);
    EXPECT_EQ(last_seen, 0);
    g_i_CardType = kCardNovatelE362;
    EXPECT_EQ(ResetsForLte(8, 8), 0U);
    EXPECT_EQ(last_seen, 0);
    EXPECT_EQ(Story(), Lines{});
}

TEST_F(ErrorChecks, RunAtTheCutoffItself) {
    Put("/proc/uptime", "600.00 100.0\n");
    EXPECT_EQ(ResetsForPpp(8), 1U);
}

TEST_F(ErrorChecks, TakeAMissingUptimeForLongEnough) {
    Remove("/proc/uptime");
    g_i_DebugLevel = 1;
    EXPECT_EQ(ResetsForPpp(8), 1U);
    ASSERT_GE(world.log.size(), 2U);
    EXPECT_EQ(world.log[0], "Unable to open /proc/uptime");
    EXPECT_EQ(world.log[1], "Uptime current: 601.000000, uptime cutoff is 600");
}

TEST_F(ErrorChecks, SayAtEveryLevelThatTheUptimeIsMissing) {
    Remove("/proc/uptime");
    EXPECT_EQ(LevelsThatLog("Unable to open /proc/uptime", [this] { Resets(); }), kAlways);
}

TEST_F(ErrorChecks, TakeAStrangeUptimeForShort) {
    for (const char* text : {"", "soon\n", "-5 1\n", "nan nan\n"}) {
        SCOPED_TRACE(text);
        Put("/proc/uptime", text);
        EXPECT_EQ(ResetsForPpp(8), 0U);
    }
    Put("/proc/uptime", "1e300 1\n");
    EXPECT_EQ(ResetsForPpp(8), 1U);
}

TEST_F(ErrorChecks, ShowTheirWorkAtANonZeroLevel) {
    const auto check = [this] { Resets(); };
    EXPECT_EQ(LevelsThatLog("Uptime current: 3600.250000, uptime cutoff is 600", check), kNonZero);
    EXPECT_EQ(LevelsThatLog("Uptime > 600, checking PPP errors", check), kNonZero);
    g_i_CardType = kCardNovatelE371;
    EXPECT_EQ(LevelsThatLog("Uptime > 600, checking LTE connection errors", check), kNonZero);
}

TEST_F(ErrorChecks, ShowTheCountFromLevelTwo) {
    const auto check = [this] { Resets(); };
    Put(kStatus, "PPP_WIRELESS_ERROR_COUNTER=1\n");
    EXPECT_EQ(LevelsThatLog("DEBUG: Read in 1 PPP Wireless error from file /var/log/kvtinit.status",
                            check),
              kAbove1);
    Put(kStatus, "PPP_WIRELESS_ERROR_COUNTER=3\n");
    EXPECT_EQ(LevelsThatLog(
                  "DEBUG: Read in 3 PPP Wireless errors from file /var/log/kvtinit.status", check),
              kAbove1);
    Remove(kStatus);
    EXPECT_EQ(LevelsThatLog(
                  "DEBUG: Read in 0 PPP Wireless errors from file /var/log/kvtinit.status", check),
              kAbove1);
}

TEST_F(ErrorChecks, OfTheLteCardsLookAtAttemptsAndFailedTransmitChecks) {
    for (const int card : {7, 8}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        last_seen = 0;
        Remove(kMarker);
        EXPECT_EQ(ResetsForLte(8, 0), 1U);
        EXPECT_EQ(ResetsForLte(9, 0), 0U);
        EXPECT_EQ(ResetsForLte(0, 8), 1U);
    }
}

TEST_F(ErrorChecks, OfTheLteCardsIgnoreThePppCount) {
    g_i_CardType = kCardNovatelE362;
    EXPECT_EQ(ResetsForPpp(8), 0U);
}

TEST_F(ErrorChecks, OfOtherCardsIgnoreTheLteCounts) {
    g_i_CardType = kCardSierra881;
    EXPECT_EQ(ResetsForLte(8, 8), 0U);
}

// Two counts above 0 take turns in the one last-seen value, so each counts as changed every time:
// the 8 resets on every run, and the 3 behind it takes the marker away.
// Guards oddity shared-last-seen.
TEST_F(ErrorChecks, OfTwoCountsShareOneLastSeenValue) {
    g_i_CardType = kCardNovatelE362;
    EXPECT_EQ(ResetsForLte(8, 3), 1U);
    EXPECT_EQ(last_seen, 3);
    EXPECT_FALSE(Exists(kMarker));  // The second count has already removed it.
    EXPECT_EQ(ResetsForLte(8, 3), 1U);
    EXPECT_EQ(ResetsForLte(8, 3), 1U);
}

TEST_F(ErrorChecks, OfTwoEqualCountsApplyTheRuleOnce) {
    g_i_CardType = kCardNovatelE362;
    EXPECT_EQ(ResetsForLte(8, 8), 1U);
    EXPECT_TRUE(Exists(kMarker));
    EXPECT_EQ(ResetsForLte(8, 8), 0U);
}

// Only the PPP count clears the last-seen value at 0.
TEST_F(ErrorChecks, OfTheLteCardsRememberTheLastCountAcrossZero) {
    g_i_CardType = kCardNovatelE362;
    EXPECT_EQ(ResetsForLte(8, 0), 1U);
    Remove(kMarker);
    EXPECT_EQ(ResetsForLte(0, 0), 0U);
    EXPECT_EQ(last_seen, 8);
    EXPECT_EQ(ResetsForLte(8, 0), 0U);
}

}  // namespace
