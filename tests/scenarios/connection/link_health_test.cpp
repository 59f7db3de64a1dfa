// Ping and transmit counter, over hours.
#include <gtest/gtest.h>

#include "carrier.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

constexpr char kStuck[] = "Warning: TX count on wwan0 not incrementing.";

std::vector<rig::Duration> Pings(const World& world) {
    return world.trace.ShellTimes(kPingLine);
}

// The counter stands at 1000: the first check is good, as 1000 is above the 0 of the start; then
// one fails every 30 seconds, and the eighth resets the modem. The ninth removes the marker, the
// sixteenth resets again.
TEST(LinkHealth, ChecksEveryThirtySecondsWhileNothingLeavesAndResetsAtTheEighth) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetTxBytes(1000);
    world.Start();
    ASSERT_TRUE(world.RunUntil([&] { return world.trace.CountLog(kStuck) == 1; }, 1h));
    EXPECT_EQ(Pings(world).size(), 2U);
    ASSERT_TRUE(world.RunUntilLog("Resetting device", 30min));
    EXPECT_EQ(world.trace.CountLog(kStuck), 8U);
    EXPECT_EQ(Pings(world).size(), 9U);
    EXPECT_TRUE(Files::Exists(kResettingMarker));
    const auto pings = Pings(world);
    for (std::size_t i = 2; i < pings.size(); ++i) {
        EXPECT_GE(pings[i] - pings[i - 1], 30s);
        EXPECT_LE(pings[i] - pings[i - 1], 60s);
    }

    ASSERT_TRUE(world.RunUntil([&] { return world.trace.CountLog(kStuck) == 9; }, 2min));
    world.RunFor(10s);
    EXPECT_FALSE(Files::Exists(kResettingMarker));
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 1U);
    ASSERT_TRUE(world.RunUntilLog("Resetting device", 30min));
    EXPECT_EQ(world.trace.CountLog(kStuck), 16U);
    EXPECT_EQ(world.trace.CountLog(kRestarting), 1U);
}

TEST(LinkHealth, FailsAfterTheCounterRestartsUntilItPassesTheOldCount) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetTxBytes(1000000);
    world.Start();
    world.RunFor(15min);
    EXPECT_EQ(Pings(world).size(), 1U);
    // Twenty thousand bytes a minute from zero: above a million after fifty minutes.
    const rig::Duration restarted = world.clock.Now();
    world.router.SetTxBytes([restarted](rig::Duration now) {
        return static_cast<std::uint64_t>((now - restarted) / 3ms);
    });
    ASSERT_TRUE(world.RunUntilLog(kStuck, 10min));
    world.RunFor(10min);
    EXPECT_GT(world.trace.CountLog(kStuck), 10U);
    world.RunFor(35min);
    world.trace.Clear();
    world.RunFor(1h);
    EXPECT_EQ(world.trace.CountLog(kStuck), 0U);
}

TEST(LinkHealth, CountsAMissingCounterAsAFailureWithoutAWord) {
    World world("-E371");
    Carrier carrier(world);
    world.router.RemoveTxBytes();
    world.Start();
    ASSERT_TRUE(world.RunUntilLog("Resetting device", 1h));
    EXPECT_EQ(Pings(world).size(), 8U);
    EXPECT_EQ(world.trace.CountLog(kStuck), 0U);
}

}  // namespace
