#include "connection/dhcp_client.h"

#include <filesystem>

#include "connection_test.h"
#include "state/settings.h"
#include "state/statistics_record.h"

namespace {

constexpr char kTerminateLine[] = "kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null";
constexpr char kReleaseLine[] =
    "kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null";
constexpr char kUpLine[] = "ifconfig wwan0 0.0.0.0 up &> /dev/null";
constexpr char kCounterFile[] = "/tmp/udhcpc.wwan0.lfc";

class DhcpClient : public ConnectionTest {};

TEST_F(DhcpClient, TerminatesInModeOne) {
    StopUdhcpc(1);
    EXPECT_EQ(Story(),
              (Lines{"log: Stopping udhcpc on wwan0", std::string("run: ") + kTerminateLine,
                     std::string("run: ") + kUpLine, "sleep 500 ms"}));
}

TEST_F(DhcpClient, ReleasesInEveryOtherMode) {
    for (const int mode : {0, 2, -1, 15}) {
        SCOPED_TRACE(mode);
        StartStory();
        StopUdhcpc(mode);
        EXPECT_EQ(world.shell, (Lines{kReleaseLine, kUpLine}));
    }
}

TEST_F(DhcpClient, StoppingShowsItsCommandAboveLevelZero) {
    const auto stop = [] { StopUdhcpc(1); };
    EXPECT_EQ(LevelsThatLog("Stopping udhcpc on wwan0", stop), kAlways);
    EXPECT_EQ(LevelsThatLog("DEBUG: running command 'kill `cat /var/run/udhcpc-wwan0.pid "
                            "2> /dev/null` &> /dev/null'",
                            stop),
              kAbove0);
    EXPECT_EQ(LevelsThatLog("DEBUG: running command 'kill -USR2 `cat /var/run/udhcpc-wwan0.pid "
                            "2> /dev/null` &> /dev/null'",
                            [] { StopUdhcpc(0); }),
              kAbove0);
}

TEST_F(DhcpClient, StoppingEndsTheCallTime) {
    g_S_Globalstats.qmi_call_time = "00:12:31";
    g_S_Globalstats.previous_qmi_call_time = "00:12:01";
    StopUdhcpc(0);
    EXPECT_EQ(g_S_Globalstats.qmi_call_time, "Unknown");
    EXPECT_EQ(g_S_Globalstats.previous_qmi_call_time, "00:12:01");
}

TEST_F(DhcpClient, StoppingWorksWhileTheInterfaceIsDisabled) {
    g_S_PppConfig.interface_enabled = false;
    StopUdhcpc(1);
    EXPECT_EQ(world.shell, (Lines{kTerminateLine, kUpLine}));
}

TEST_F(DhcpClient, AFailingShellStopsNothing) {
    world.shell_status[kTerminateLine] = 256;
    StopUdhcpc(1);
    EXPECT_EQ(world.shell, (Lines{kTerminateLine, kUpLine}));
}

TEST_F(DhcpClient, StartsWithTheDefaultRoute) {
    StartUdhcpc();
    EXPECT_EQ(Story(), (Lines{"log: Starting/Signaling udhcpc",
                              "run: udhcpc -T 3 -S -b -i wwan0 &> /dev/null", "sleep 500 ms"}));
}

TEST_F(DhcpClient, StartsWithoutTheDefaultRouteKeepingTwoBlanks) {
    g_S_PppConfig.default_route = false;
    StartUdhcpc();
    EXPECT_EQ(world.shell, Lines{"udhcpc -T 3 -S -b -i wwan0 -G  &> /dev/null"});
}

// Guards oddity client-line-logged-short.
TEST_F(DhcpClient, StartingShowsTheBaseTextOnly) {
    g_S_PppConfig.default_route = false;
    EXPECT_EQ(LevelsThatLog("DEBUG: running command 'udhcpc -T 3 -S -b -i wwan0'", StartUdhcpc),
              kAbove0);
    EXPECT_EQ(LevelsThatLog("Starting/Signaling udhcpc", StartUdhcpc), kAlways);
}

TEST_F(DhcpClient, DoesNotStartWhileTheInterfaceIsDisabled) {
    g_S_PppConfig.interface_enabled = false;
    g_i_DebugLevel = 4;
    StartUdhcpc();
    EXPECT_EQ(Story(), Lines{});
    EXPECT_EQ(world.slept_us, 0);
}

TEST_F(DhcpClient, WritesTheLeaseFailCounter) {
    ResetLeaseFailCounter();
    EXPECT_EQ(Get(kCounterFile), "LEASE_FAIL_COUNTER=0\n");
    EXPECT_EQ(Story(),
              (Lines{"log: Resetting udhcpc fail counter file", "write: /tmp/udhcpc.wwan0.lfc"}));
}

TEST_F(DhcpClient, RewritesTheLeaseFailCounterWhole) {
    Put(kCounterFile, "LEASE_FAIL_COUNTER=12345\nLAST=yesterday\n");
    ResetLeaseFailCounter();
    EXPECT_EQ(Get(kCounterFile), "LEASE_FAIL_COUNTER=0\n");
}

TEST_F(DhcpClient, ALinkInThePlaceOfTheCounterIsNotFollowed) {
    Put("/var/precious", "keep me");
    std::filesystem::create_symlink(RealPath("/var/precious"), RealPath(kCounterFile));
    ResetLeaseFailCounter();
    EXPECT_EQ(Get(kCounterFile), "LEASE_FAIL_COUNTER=0\n");
    EXPECT_EQ(Get("/var/precious"), "keep me");
}

}  // namespace
