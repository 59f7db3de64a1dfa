// The data call of the LTE cards: cold start, drops, outages, and the reset of the modem.
#include <gtest/gtest.h>

#include "carrier.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

std::size_t CountCommand(const World& world, const std::string& command) {
    return world.trace.CommandTimes(command).size();
}

TEST(LteLink, ComesUpAfterAColdStartAndThenStays) {
    World world("-E362");
    Carrier carrier(world);
    world.Start();
    world.RunFor(2min);

    const Lines expected = {
        std::string("run: ") + kUpLine,
        "log: Service Type changed from 'Unknown' to 'LTE'",
        "log: Starting/Signaling udhcpc",
        std::string("run: ") + kStartLine,
        // A check that finds the call down, and all that the restart does.
        std::string("modem: ") + kStatusCommand,
        std::string("run: touch ") + kDialing,
        std::string("log: ") + kRestarting,
        "log: Last connect time was reported as 'Unknown'",
        "log: Last connect end reason was 'Unknown'",
        "log: Last qmi result was 'Unknown'",
        "log: Stopping udhcpc on wwan0",
        std::string("run: ") + kTerminateLine,
        std::string("run: ") + kUpLine,
        "log: Resetting udhcpc fail counter file",
        std::string("modem: ") + kDisconnectCommand,
        std::string("modem: ") + kConnectCommand,
        "log: Starting/Signaling udhcpc",
        std::string("run: ") + kStartLine,
        std::string("modem: ") + kStatusCommand,
    };
    EXPECT_EQ(From(ConnectionStory(world), "run: ", expected.size()), expected);

    world.RunFor(58min);
    EXPECT_EQ(world.trace.CountLog(kRestarting), 1U);
    EXPECT_EQ(CountCommand(world, kConnectCommand), 1U);
    EXPECT_EQ(CountCommand(world, kDisconnectCommand), 1U);
    EXPECT_EQ(Files::Read(kLeaseCounter), "LEASE_FAIL_COUNTER=0\n");
    EXPECT_FALSE(Files::Exists(kNotDialing));
    // It stays when the call is up: only a disabled interface removes it.
    EXPECT_TRUE(Files::Exists(kDialing));
}

// Each restart fails two checks, before and after it. So the sixth, the twelfth and the eighteenth
// end with more than ten; and the reset rule strikes at 8 and 16 restarts, its marker being taken
// away by the ninth and the seventeenth.
TEST(LteOutage, ResetsTheModemByBothRules) {
    World world("-E362");
    Carrier carrier(world);
    world.modem.Control("connect-fails 14 3 forever");
    world.Start();
    ASSERT_TRUE(world.RunUntil([&] { return world.trace.CountLog(kRestarting) == 19; }, 1h));

    Lines seen;
    for (const std::string& line : world.trace.Log()) {
        if (line == kRestarting) seen.push_back("restart");
        if (line == kGaveUp) seen.push_back("gave up");
        if (line == "Resetting device") seen.push_back("reset");
    }
    Lines expected;
    for (int restart = 1; restart <= 19; ++restart) {
        expected.push_back("restart");
        if (restart % 6 == 0) expected.push_back("gave up");
        if (restart % 6 == 0 || restart % 8 == 0) expected.push_back("reset");
    }
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(world.trace.ShellTimes(kResetLine).size(), 5U);
    EXPECT_EQ(CountRemovals(world, kResettingMarker), 2U);
    EXPECT_FALSE(Files::Exists(kResettingMarker));
}

TEST(LteOutage, WithoutAnAddressRestartsButNeverGivesUp) {
    World world("-E362");
    Carrier carrier(world);
    world.modem.Control("no-address on");
    world.Start();
    ASSERT_TRUE(world.RunUntil([&] { return world.trace.CountLog(kRestarting) == 16; }, 1h));
    world.RunFor(20s);
    // The first check finds no call at all; each of the others, and the one behind every restart,
    // a call without an address.
    EXPECT_EQ(world.trace.CountLog("Interface wwan0 is connected, but does not have a valid IP."),
              31U);
    EXPECT_EQ(world.trace.CountLog(kGaveUp), 0U);
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 2U);  // 8 and 16 restarts
}

TEST(LteOutage, OfUnknownStateIsResetAfterElevenChecksWithoutARestart) {
    World world("-E362");
    Carrier carrier(world);
    world.Start();
    world.RunFor(5min);
    world.trace.Clear();
    world.modem.Control("unknown on");
    ASSERT_TRUE(world.RunUntilLog(kGaveUp, 15min));
    EXPECT_EQ(CountCommand(world, kStatusCommand), 11U);
    EXPECT_EQ(world.trace.CountLog(kRestarting), 0U);
    world.modem.Control("unknown off");
    world.RunFor(15min);
    EXPECT_EQ(world.trace.CountLog(kGaveUp), 1U);
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 1U);
}

// 504 drops, twenty minutes apart. On the third day an outage refuses eight connects; on the fifth
// the interface is disabled for an hour.
//
// The cold start is one restart, each drop one more, but for the three of that hour, in which there
// is no call; enabling the interface is one, and the outage eight. The outage resets the modem
// twice, at its sixth restart by the failed checks and at its eighth by the reset rule, whose
// marker its ninth restart takes away.
TEST(LteWeek, OfAFlappingLinkIsCountedToTheLastRestart) {
    World world("-E362");
    Carrier carrier(world);
    world.trace.Keep({rig::Kind::kLog, rig::Kind::kShell, rig::Kind::kUnlink});
    world.modem.Sim().SetHeardLimit(0);
    world.clock.Every(20min, [&] { world.modem.Control("drop-call"); });
    world.clock.At(48h + 5min, [&] { world.modem.Control("connect-fails 14 3 8"); });
    world.clock.At(96h + 5min, [&] { world.files.Write(kPppFile, "CM_ENABLE_INTERFACE=no\n"); });
    world.clock.At(97h + 5min, [&] { world.files.Write(kPppFile, "CM_ENABLE_INTERFACE=yes\n"); });
    world.Start();
    world.RunFor(7 * 24h + 10min);

    constexpr std::size_t kRestarts = 1 + (504 - 3) + 1 + 8;
    EXPECT_EQ(world.trace.CountLog(kRestarting), kRestarts);
    EXPECT_EQ(world.trace.ShellTimes(std::string("touch ") + kDialing).size(), kRestarts);
    EXPECT_EQ(world.trace.CountLog("Resetting udhcpc fail counter file"), kRestarts);
    EXPECT_EQ(world.trace.ShellTimes(kTerminateLine).size(), kRestarts + 1);  // once when disabled
    EXPECT_EQ(world.trace.ShellTimes(kStartLine).size(), kRestarts + 1);  // once for the service
    EXPECT_EQ(CountRemovals(world, kDialing), 1U);
    EXPECT_EQ(CountRemovals(world, kNotDialing), 1U);
    EXPECT_EQ(world.trace.CountLog(kGaveUp), 1U);
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 2U);
    EXPECT_EQ(CountRemovals(world, kResettingMarker), 1U);
    EXPECT_FALSE(Files::Exists(kResettingMarker));
    EXPECT_TRUE(Files::Exists(kDialing));
    EXPECT_FALSE(Files::Exists(kNotDialing));
    EXPECT_EQ(world.trace.CountLog("Warning: TX count on wwan0 not incrementing."), 0U);
}

}  // namespace
