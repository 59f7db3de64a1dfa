// A router without one of the programs and files that the daemon counts on: what it says, what it
// leaves undone, and that it goes on. docs/runtime.md tells the same. Those whose absence takes
// hours to show have their stories in recovery/router_faults.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "carrier.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;
using ::testing::Contains;
using ::testing::StartsWith;

namespace {

constexpr int kNotFound = 127;  // as a shell has it
constexpr char kStatistics[] = "/var/log/wireless.cardstats";

TEST(MissingHelper, WithoutTouchThereAreNoMarkers) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetShellStatus("touch", kNotFound);
    world.Start();
    ASSERT_TRUE(world.RunUntilLog(kRestarting, 5min));
    world.RunFor(1min);
    EXPECT_FALSE(Files::Exists(kDialing));
}

TEST(MissingHelper, WithoutMkdirAReceivedMessageIsOnlyInTheLog) {
    World world("-881");
    world.router.SetShellStatus("mkdir", kNotFound);
    world.clock.At(30s, [&world] { world.modem.Control("sms 15550100 \"on my way\""); });
    world.Start();
    world.RunFor(3min);
    EXPECT_THAT(world.trace.Log(), Contains(StartsWith("Got SMS from ")));
    EXPECT_THAT(world.trace.CommandsMatching("AT+CMGD=0,1"), Contains("AT+CMGD=0,1"));
    EXPECT_FALSE(Files::Exists("/tmp/sms"));
}

TEST(MissingHelper, WithoutMvAMessageThatCannotBeSentIsLost) {
    World world("-881");
    world.router.SetShellStatus("mv", kNotFound);
    world.modem.Control("sms-fails 38 forever body");
    world.files.Write("/tmp/sms/send/pump", "TO=5550100\nMSG=Hello\n");
    world.Start();
    world.RunFor(10min);
    EXPECT_EQ(world.trace.CountLogContaining("Max send attempt, moving file to "), 1U);
    EXPECT_FALSE(Files::Exists("/tmp/sms/send/pump"));
    EXPECT_TRUE(Files::List("/tmp/sms/send_fail").empty());
}

TEST(MissingHelper, WithoutRmOldFilesStayBehindTheEnd) {
    World world("-881");
    world.router.SetShellStatus("/bin/rm", kNotFound);
    world.Start();
    world.RunFor(2min);
    world.daemon.Signal(SIGTERM);
    EXPECT_EQ(world.RunToExit(1min), 0);
    EXPECT_FALSE(Files::Exists(kStatistics));
    EXPECT_TRUE(Files::Exists("/var/log/wireless.serialno"));
}

TEST(MissingHelper, WithoutAShellWhatTheModemSaysIsPublishedAllTheSame) {
    for (const char* card : {"-881", "-E362"}) {
        World world(card);
        world.router.SetShellStatus("", kNotFound);
        world.Start();
        world.RunFor(5min);
        EXPECT_THAT(Files::Read(kStatistics), StartsWith("#File generated ")) << card;
        world.daemon.Signal(SIGTERM);
        EXPECT_EQ(world.RunToExit(1min), 0) << card;
    }
}

TEST(MissingFile, WithoutTheUptimeErrorsCountFromTheStart) {
    World world("-881");
    world.router.RemoveUptime();
    world.files.Write("/var/log/kvtinit.status", "PPP_WIRELESS_ERROR_COUNTER=8\n");
    world.Start();
    ASSERT_TRUE(world.RunUntilLog("Resetting device", 2min));
    EXPECT_GE(world.trace.CountLog("Unable to open /proc/uptime"), 1U);
}

}  // namespace
