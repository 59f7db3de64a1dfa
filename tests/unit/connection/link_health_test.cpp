#include "connection/link_health.h"

#include <filesystem>

#include "connection_test.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "support/countdown_timer.h"

namespace {

constexpr char kCounter[] = "/sys/class/net/wwan0/statistics/tx_bytes";
constexpr char kWarning[] = "Warning: TX count on wwan0 not incrementing.";

class PingCheck : public ConnectionTest {};

TEST_F(PingCheck, DoesNotRunOnAStoppedTimer) {
    EXPECT_EQ(RunPingCheck(), 0);
    EXPECT_EQ(Story(), Lines{});
    EXPECT_FALSE(g_Cp_PingTimer->IsRunning());
}

TEST_F(PingCheck, DoesNotRunBeforeThePeriodIsOver) {
    g_Cp_PingTimer->Start();
    world.now_us += 600 * kSecond - 1000;
    EXPECT_EQ(RunPingCheck(), 0);
    EXPECT_EQ(world.shell, Lines{});
    EXPECT_EQ(g_Cp_PingTimer->GetElapsed(), 599U);
}

TEST_F(PingCheck, RunsAndRestartsTheTimer) {
    g_Cp_PingTimer->Start();
    world.now_us += 600 * kSecond;
    EXPECT_EQ(RunPingCheck(), 1);
    EXPECT_EQ(world.shell, Lines{kPingLine});
    EXPECT_EQ(g_Cp_PingTimer->GetElapsed(), 0U);
    EXPECT_EQ(RunPingCheck(), 0);
}

TEST_F(PingCheck, DoesNotCareHowThePingWent) {
    world.shell_status[kPingLine] = 256;
    g_Cp_PingTimer->Start();
    world.now_us += 600 * kSecond;
    EXPECT_EQ(RunPingCheck(), 1);
}

TEST_F(PingCheck, RunsWhenTheClockIsSetBack) {
    g_Cp_PingTimer->Start();
    world.now_us -= 3600 * kSecond;
    EXPECT_EQ(RunPingCheck(), 1);
}

class TxBytes : public ConnectionTest {
  protected:
    int Check(const std::string& counter) {
        Put(kCounter, counter);
        return CheckTxBytes();
    }
};

TEST_F(TxBytes, PassWhenTheyGrow) {
    EXPECT_EQ(Check("1\n"), 1);
    EXPECT_EQ(Check("5000\n"), 1);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_current, 5000);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_previous, 5000);
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(TxBytes, FailWhenEqual) {
    Check("5000\n");
    EXPECT_EQ(Check("5000\n"), 0);
    EXPECT_EQ(world.log, Lines{kWarning});
}

TEST_F(TxBytes, OfZeroFailFromTheStart) {
    EXPECT_EQ(Check("0\n"), 0);
    EXPECT_EQ(world.log, Lines{kWarning});
}

// Guards oddity tx-count-stays.
TEST_F(TxBytes, ThatRestartFailUntilTheyPassTheOldHigh) {
    Check("5000\n");
    EXPECT_EQ(Check("0\n"), 0);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_current, 0);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_previous, 5000);
    EXPECT_EQ(Check("4999\n"), 0);
    EXPECT_EQ(Check("5000\n"), 0);
    EXPECT_EQ(Check("5001\n"), 1);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_previous, 5001);
}

TEST_F(TxBytes, AboveTwoGigabytesCountAsNegative) {
    Check("2147483647\n");
    EXPECT_EQ(Check("2147483648\n"), 0);
    EXPECT_LT(g_S_Globalstats.tx_bytes_current, 0);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_previous, 2147483647);
}

// On every processor: a reading that stopped at the greatest int would not grow either, but it
// would not come back above 4 GiB.
TEST_F(TxBytes, AreCutToTheirLow32Bits) {
    struct Row {
        const char* counter;
        int current;
        int verdict;
    };
    Check("2147483000\n");
    for (const Row& row :
         {Row{"4294967295\n", -1, 0}, Row{"4294967296\n", 0, 0}, Row{"6442450296\n", 2147483000, 0},
          Row{"6442450297\n", 2147483001, 1}, Row{"6442450944\n", -2147483647 - 1, 0}}) {
        SCOPED_TRACE(row.counter);
        EXPECT_EQ(Check(row.counter), row.verdict);
        EXPECT_EQ(g_S_Globalstats.tx_bytes_current, row.current);
    }
}

TEST_F(TxBytes, WithoutACounterFileFailSilently) {
    g_S_Globalstats.tx_bytes_current = 7;
    EXPECT_EQ(CheckTxBytes(), 0);
    EXPECT_EQ(world.log, Lines{});
    EXPECT_EQ(g_S_Globalstats.tx_bytes_current, 7);
}

TEST_F(TxBytes, BehindADanglingLinkFailSilently) {
    Put(kCounter, "");
    Remove(kCounter);
    std::filesystem::create_symlink("/nonexistent/counter", RealPath(kCounter));
    EXPECT_EQ(CheckTxBytes(), 0);
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(TxBytes, ThatAreNoNumberReadAsZero) {
    g_S_Globalstats.tx_bytes_previous = 10;
    for (const char* text : {"", "\n", "none\n", "x99\n"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Check(text), 0);
        EXPECT_EQ(g_S_Globalstats.tx_bytes_current, 0);
    }
}

TEST_F(TxBytes, TakeTheLeadingNumber) {
    EXPECT_EQ(Check(" 812 bytes\n"), 1);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_current, 812);
}

TEST_F(TxBytes, ShowAGoodCountAboveLevelZero) {
    EXPECT_EQ(LevelsThatLog("Last wwan0 TX count 800 > 700 (good)",
                            [this] {
                                g_S_Globalstats.tx_bytes_previous = 700;
                                Check("800\n");
                            }),
              kAbove0);
    EXPECT_EQ(LevelsThatLog(kWarning, [this] { Check("1\n"); }), kAlways);
}

}  // namespace
