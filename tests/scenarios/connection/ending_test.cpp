// How the daemon leaves the link when it ends, and the reset rule of the cards without one.
#include <gtest/gtest.h>

#include "carrier.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

constexpr char kKvtStatus[] = "/var/log/kvtinit.status";

const Lines kCleanUp = {
    "log: doing cleanup and exiting",
    "run: /bin/echo -n  > /var/log/lightbar",
    "run: /bin/rm -f /var/log/wireless.*",
};

const Lines kLinkDown = {
    "log: Stopping udhcpc on wwan0",
    std::string("run: ") + kReleaseLine,
    std::string("run: ") + kUpLine,
    "log: Stopping udhcpc on wwan0",
    std::string("run: ") + kTerminateLine,
    std::string("run: ") + kUpLine,
    std::string("modem: ") + kDisconnectCommand,
    "log: Resetting udhcpc fail counter file",
    std::string("run: ") + kDownLine,
};

Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Lines EndOf(const std::string& card, int signal) {
    World world(card);
    Carrier carrier(world);
    world.files.Write(kLeaseCounter, "LEASE_FAIL_COUNTER=3\n");
    world.Start();
    world.RunFor(5min);
    world.files.Write("/var/run/BackendResetControl", "1");
    world.daemon.Signal(signal);
    EXPECT_EQ(world.RunToExit(1min), 0);
    EXPECT_EQ(world.files.Read("/var/log/lightbar"), "");
    EXPECT_FALSE(Files::Exists("/var/log/wireless.cardstats"));
    EXPECT_FALSE(Files::Exists("/var/log/wireless.serialno"));
    EXPECT_FALSE(Files::Exists("/var/run/BackendResetControl"));
    EXPECT_TRUE(Files::Exists("/var/run/modemd.pid"));
    const std::string first = signal == SIGHUP ? "log: recieved" : "log: received";
    return From(ConnectionStory(world), first, 100);
}

TEST(Ending, OnSigtermOrSigintTakesTheLinkOfAnLteCardDown) {
    const Lines expected =
        Lines{"log: received SIGINT/SIGTERM"} + kCleanUp + kLinkDown + Lines{"log: exit"};
    EXPECT_EQ(EndOf("-E362", SIGTERM), expected);
    EXPECT_EQ(EndOf("-E371", SIGINT), expected);
}

TEST(Ending, OnSighupResetsTheModemFirst) {
    EXPECT_EQ(EndOf("-E362", SIGHUP),
              (Lines{"log: recieved SIGHUP, resetting device", "log: Resetting device",
                     std::string("run: ") + kResetLine} +
               kCleanUp + kLinkDown + Lines{"log: exit"}));
}

TEST(Ending, OfOtherCardsLeavesTheLinkAlone) {
    const Lines expected = Lines{"log: received SIGINT/SIGTERM"} + kCleanUp + Lines{"log: exit"};
    for (const char* card : {"-881", "-USB305", "-mc75i", ""}) {
        SCOPED_TRACE(card);
        EXPECT_EQ(EndOf(card, SIGTERM), expected);
    }
}

TEST(Ending, WritesTheLeaseCounterOfAnLteCardOnly) {
    EndOf("-E362", SIGTERM);
    EXPECT_EQ(Files::Read(kLeaseCounter), "LEASE_FAIL_COUNTER=0\n");
    EndOf("-881", SIGTERM);
    EXPECT_EQ(Files::Read(kLeaseCounter), "LEASE_FAIL_COUNTER=3\n");
}

TEST(Ending, InTheMiddleOfARestartWaitsForItsEnd) {
    World world("-E362");
    Carrier carrier(world);
    world.Start();
    ASSERT_TRUE(world.RunUntilCommand(kDisconnectCommand, 2min));
    world.trace.Clear();
    world.daemon.Signal(SIGTERM);
    EXPECT_EQ(world.RunToExit(1min), 0);
    EXPECT_EQ(From(ConnectionStory(world), "modem: ", 6),
              (Lines{std::string("modem: ") + kConnectCommand, "log: Starting/Signaling udhcpc",
                     std::string("run: ") + kStartLine, std::string("modem: ") + kStatusCommand,
                     "log: received SIGINT/SIGTERM", "log: doing cleanup and exiting"}));
}

class PppErrors : public ::testing::Test {
  protected:
    PppErrors() { world.files.Write(kProvisioningFile, "SYNC_TIME=no\n"); }

    // Writes the count and lets two passes go by. Returns the resets of the modem since.
    std::size_t Resets(int count) {
        world.trace.Clear();
        world.files.Write(kKvtStatus, "PPP_WIRELESS_ERROR_COUNTER=" + std::to_string(count) + "\n");
        world.RunFor(30s);
        return world.trace.ShellTimes(kResetLine).size();
    }

    World world{"-881"};
};

TEST_F(PppErrors, ResetAtEightNotAtNineAndAgainAtSixteen) {
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(Resets(7), 0U);
    EXPECT_EQ(Resets(8), 1U);
    EXPECT_TRUE(Files::Exists(kResettingMarker));
    EXPECT_EQ(Resets(8), 0U);
    EXPECT_TRUE(Files::Exists(kResettingMarker));
    EXPECT_EQ(Resets(9), 0U);
    EXPECT_FALSE(Files::Exists(kResettingMarker));
    EXPECT_EQ(Resets(16), 1U);
    EXPECT_EQ(Resets(24), 0U);  // swallowed by the marker
    EXPECT_EQ(Resets(32), 1U);
}

TEST_F(PppErrors, AtZeroMakeTheSameCountNewAgain) {
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(Resets(8), 1U);
    EXPECT_EQ(Resets(0), 0U);
    Files::Remove(kResettingMarker);
    EXPECT_EQ(Resets(8), 1U);
}

TEST_F(PppErrors, CountOnlyOnceTheRouterIsUpLongEnough) {
    world.router.SetUptime(0s);
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(Resets(8), 0U);
    world.RunFor(500s);
    EXPECT_EQ(world.trace.ShellTimes(kResetLine).size(), 0U);
    world.RunFor(2min);
    EXPECT_EQ(world.trace.ShellTimes(kResetLine).size(), 1U);
}

TEST_F(PppErrors, OnAFirstBootCountAfterHalfAnHour) {
    Files::Remove("/etc/ssh/ssh_host_dsa_key");
    world.router.SetUptime(601s);
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(Resets(8), 0U);
    world.RunFor(19min);
    EXPECT_EQ(world.trace.ShellTimes(kResetLine).size(), 0U);
    world.RunFor(2min);
    EXPECT_EQ(world.trace.ShellTimes(kResetLine).size(), 1U);
}

TEST_F(PppErrors, CountAtOnceWhenTheUptimeCannotBeRead) {
    world.router.RemoveUptime();
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(Resets(8), 1U);
    EXPECT_GT(world.trace.CountLog("Unable to open /proc/uptime"), 0U);
}

TEST_F(PppErrors, OfASilentModemAreNotLookedAt) {
    world.modem.Script([](const std::string&) { return std::string(); });
    world.Start();
    world.RunFor(5min);
    EXPECT_EQ(Resets(8), 0U);
}

}  // namespace
