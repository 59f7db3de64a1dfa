// The reset rule as a router lives it: the count in the status file, the uptime, the marker. Each
// step of the rule has its unit.
#include <gtest/gtest.h>

#include <string>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

constexpr char kStatus[] = "/var/log/kvtinit.status";
constexpr char kMarker[] = "/tmp/kvtswi.resetting";
constexpr char kReset[] = "ResetPCMCIA now &> /dev/null &";

std::size_t Resets(const World& world) {
    return world.trace.ShellTimes(kReset).size();
}

class ResetRule : public testing::Test {
  protected:
    // Writes the count and gives the daemon two passes to find it.
    static void Count(World& world, const std::string& text) {
        world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=" + text + "\n");
        world.RunFor(8s);
    }
};

TEST_F(ResetRule, EightResetsNineOnlyRemovesTheMarkerSixteenResetsAgain) {
    World world;
    world.Start();
    world.RunFor(10s);
    Count(world, "8");
    EXPECT_EQ(Resets(world), 1u);
    EXPECT_TRUE(Files::Exists(kMarker));
    Count(world, "9");
    EXPECT_EQ(Resets(world), 1u);
    EXPECT_FALSE(Files::Exists(kMarker));
    Count(world, "16");
    EXPECT_EQ(Resets(world), 2u);
    EXPECT_TRUE(Files::Exists(kMarker));
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 2u);
    Files::Remove(kMarker);
    world.RunFor(120s);
    EXPECT_EQ(Resets(world), 2u) << "the same count";
    EXPECT_FALSE(Files::Exists(kMarker));
}

TEST_F(ResetRule, AMarkerOfAnEarlierRunCounts) {
    World world;
    world.files.Write(kMarker, "");
    world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=8\n");
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(Resets(world), 0u);
    EXPECT_FALSE(Files::Exists(kMarker));
}

TEST(PppErrors, CountOnlyOnceTheRouterIsUpLongEnough) {
    for (const bool first_boot : {false, true}) {
        SCOPED_TRACE(first_boot);
        World world("-881");
        if (first_boot) Files::Remove("/etc/ssh/ssh_host_dsa_key");
        const auto cutoff = first_boot ? 1800s : 600s;
        world.router.SetUptime(cutoff - 100s);
        world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=8\n");
        world.Start();
        world.RunFor(99s);
        EXPECT_EQ(Resets(world), 0u);
        world.RunFor(30s);
        EXPECT_EQ(Resets(world), 1u);
    }
}

TEST(PppErrors, OfASilentModemAreNotLookedAt) {
    World world("-881");
    world.modem.Script([](const std::string&) { return std::string(); });
    world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=8\n");
    world.Start();
    world.RunFor(5min);
    EXPECT_EQ(Resets(world), 0u);
}

}  // namespace
