// A router without one of the programs and files that the daemon counts on: what it says, what it
// leaves undone, and that it goes on. docs/runtime.md tells the same.
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
constexpr char kStuck[] = "Warning: TX count on wwan0 not incrementing.";

TEST(MissingHelper, WithoutUdhcpcTheModemIsResetOverAndOver) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetShellStatus("udhcpc", kNotFound);
    world.Start();
    ASSERT_TRUE(world.RunUntilLog("Resetting device", 1h));
    EXPECT_GE(world.trace.CountLog("Interface wwan0 is connected, but does not have a valid IP."),
              2U);
    EXPECT_GE(world.trace.CountLog(kRestarting), 8U);
    EXPECT_TRUE(world.RunUntilLog("Resetting device", 2h));
}

TEST(MissingHelper, WithoutIfconfigTheStartWarnsAndGoesOn) {
    World world("-E362");
    world.router.SetShellStatus("ifconfig", kNotFound);
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(
        world.trace.CountLog("Warning: Modem type set to E362/E371, but int wwan0 does not appear "
                             "to exist."),
        1U);
    EXPECT_TRUE(Files::Exists(kStatistics));
}

// The daemon's own ping is the only traffic of a quiet router.
TEST(MissingHelper, WithoutPingAQuietLinkCountsAsDead) {
    World world("-E362");
    Carrier carrier(world);
    std::uint64_t sent = 1000;
    world.router.SetTxBytes([&sent](rig::Duration) { return sent; });
    world.router.OnShell("ping", [&sent](const std::string&) {
        sent += 84;
        return 0;
    });
    world.Start();
    world.RunFor(2h);
    EXPECT_EQ(world.trace.CountLog(kStuck), 0U);
    world.router.SetShellStatus("ping", kNotFound);
    ASSERT_TRUE(world.RunUntilLog("Resetting device", 1h));
    EXPECT_EQ(world.trace.CountLog(kStuck), 8U);
}

TEST(MissingHelper, WithoutDateTheLogSpeaksOfAClockThatNobodySets) {
    World world("-E362");
    world.router.SetShellStatus("/bin/date", kNotFound);
    world.Start();
    world.RunFor(3h);
    EXPECT_EQ(world.trace.CountLogContaining("Syncing system time to "), 1U);  // no second try
}

TEST(MissingHelper, WithoutTheResetToolNothingTellsThatThereWasNone) {
    World world("-881");
    world.port.RemoveDevice();
    world.router.SetShellStatus("ResetPCMCIA", kNotFound);
    world.Start();
    EXPECT_EQ(world.RunToExit(5min), 255);
    world.trace.ExpectLogInOrder({"Failed to open port 5 times, exiting", "Resetting device"});
}

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

TEST(MissingFile, WithoutTheTransmitCountTheModemIsResetAndNoLineSaysWhy) {
    World world("-E362");
    Carrier carrier(world);
    world.router.RemoveTxBytes();
    world.Start();
    ASSERT_TRUE(world.RunUntilLog("Resetting device", 1h));
    EXPECT_EQ(world.trace.CountLog(kStuck), 0U);
}

}  // namespace
