// The uptime-gated checks and the reset rule with its marker file.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::Files;
using rig::World;
using Lines = std::vector<std::string>;

constexpr char kStatus[] = "/var/log/kvtinit.status";
constexpr char kMarker[] = "/tmp/kvtswi.resetting";
constexpr char kReset[] = "ResetPCMCIA now &> /dev/null &";

class ResetRule : public testing::Test {
  protected:
    // Writes the count and gives the daemon two passes to find it.
    static void Count(World& world, const std::string& text) {
        world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=" + text + "\n");
        world.RunFor(8s);
    }
    static std::size_t Resets(const World& world) { return world.trace.ShellTimes(kReset).size(); }
};

TEST_F(ResetRule, EightResetsNineOnlyRemovesTheMarkerSixteenResetsAgain) {
    World world;
    world.Start();
    world.RunFor(10s);
    Count(world, "8");
    EXPECT_EQ(Resets(world), 1u);
    EXPECT_TRUE(Files::Exists(kMarker));
    EXPECT_EQ(Files::Read(kMarker), "");
    Count(world, "9");
    EXPECT_EQ(Resets(world), 1u);
    EXPECT_FALSE(Files::Exists(kMarker));
    Count(world, "16");
    EXPECT_EQ(Resets(world), 2u);
    EXPECT_TRUE(Files::Exists(kMarker));
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 2u);
}

TEST_F(ResetRule, TheSameCountDoesNothingTheSecondTime) {
    World world;
    world.Start();
    world.RunFor(10s);
    Count(world, "8");
    Files::Remove(kMarker);
    world.RunFor(120s);
    EXPECT_EQ(Resets(world), 1u);
    EXPECT_FALSE(Files::Exists(kMarker));
}

TEST_F(ResetRule, TheMarkerSwallowsAMultipleOfEight) {
    World world;
    world.Start();
    world.RunFor(10s);
    Count(world, "8");
    Count(world, "16");
    EXPECT_EQ(Resets(world), 1u);
    EXPECT_FALSE(Files::Exists(kMarker));
    Count(world, "24");
    EXPECT_EQ(Resets(world), 2u);
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

TEST_F(ResetRule, ZeroForgetsTheLastCount) {
    World world;
    world.Start();
    world.RunFor(10s);
    Count(world, "8");
    Files::Remove(kMarker);
    Count(world, "0");
    Count(world, "8");
    EXPECT_EQ(Resets(world), 2u);
}

TEST_F(ResetRule, OtherCountsDoNothing) {
    World world;
    world.Start();
    world.RunFor(10s);
    for (const char* text : {"1", "7", "9", "15", "abc", "", "x8"}) {
        SCOPED_TRACE(text);
        Count(world, text);
        EXPECT_EQ(Resets(world), 0u);
        EXPECT_FALSE(Files::Exists(kMarker));
    }
}

TEST_F(ResetRule, RubbishInTheStatusFileIsNoCount) {
    World world;
    std::string rubbish;
    for (int i = 0; i < 200000; ++i) rubbish += static_cast<char>(i * 7919 >> 3);
    world.files.Write(kStatus, rubbish);
    world.Start();
    world.RunFor(30s);
    EXPECT_EQ(Resets(world), 0u);
    EXPECT_TRUE(world.daemon.Running());
}

TEST_F(ResetRule, ALinkPlantedAsTheMarkerIsNotFollowed) {
    World world;
    ASSERT_EQ(symlink("/tmp/victim", kMarker), 0);
    world.Start();
    world.RunFor(10s);
    Count(world, "8");
    EXPECT_FALSE(Files::Exists("/tmp/victim"));
    Files::Remove(kMarker);
}

TEST(ErrorChecks, BelowTheCutoffOnlyTheUptimeIsRead) {
    World world("-d -d -d");
    world.router.SetUptime(500s);
    world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=8\n");
    world.Start();
    world.RunFor(90s);
    EXPECT_GT(world.trace.CountLogContaining("Uptime current: 5"), 10u);
    world.trace.ExpectNoLog("checking PPP errors");
    EXPECT_EQ(world.trace.ShellTimes(kReset).size(), 0u);
    world.RunFor(30s);  // 600 s have come
    EXPECT_EQ(world.trace.CountLog("Uptime > 600, checking PPP errors") > 0, true);
    EXPECT_EQ(world.trace.ShellTimes(kReset).size(), 1u);
}

TEST(ErrorChecks, SayWhatTheyDoByLevel) {
    struct Row {
        const char* level;
        bool debug;
        bool above_one;
    };
    for (const Row& row : {Row{"-1", true, false}, Row{"0", false, false}, Row{"1", true, false},
                           Row{"2", true, true}}) {
        SCOPED_TRACE(row.level);
        World world;
        world.files.Write("/etc/kvt/wireless/cellmodem_provision_data.conf",
                          std::string("DEBUG_MODE=") + row.level + "\n");
        world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=1\n");
        world.Start();
        world.RunFor(15s);
        EXPECT_EQ(world.trace.CountLogContaining("Uptime current: 36") > 0, row.debug);
        EXPECT_EQ(world.trace.CountLog("Uptime > 600, checking PPP errors") > 0, row.debug);
        EXPECT_EQ(world.trace.CountLog("DEBUG: Read in 1 PPP Wireless error from file "
                                       "/var/log/kvtinit.status") > 0,
                  row.above_one);
    }
}

TEST(ErrorChecks, CountInThePluralUnlessThereIsOne) {
    World world("-d -d");
    world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=2\n");
    world.Start();
    world.RunFor(15s);
    Files::Remove(kStatus);
    world.RunFor(15s);
    world.trace.ExpectLogInOrder(
        {"DEBUG: Read in 2 PPP Wireless errors from file /var/log/kvtinit.status",
         "DEBUG: Read in 0 PPP Wireless errors from file /var/log/kvtinit.status"});
}

TEST(ErrorChecks, AnUptimeThatCannotBeReadCountsAsLongEnough) {
    World world("-d");
    world.router.RemoveUptime();
    world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=8\n");
    world.Start();
    world.RunFor(15s);
    world.trace.ExpectLogInOrder({"Unable to open /proc/uptime",
                                  "Uptime current: 601.000000, uptime cutoff is 600",
                                  "Uptime > 600, checking PPP errors", "Resetting device"});
}

TEST(ErrorChecks, TheLteCardsLookAtTheirOwnCounts) {
    for (const char* card : {"-E362", "-E371"}) {
        SCOPED_TRACE(card);
        World world(std::string(card) + " -d");
        world.router.SetAddress("10.1.2.3");
        world.files.Write(kStatus, "PPP_WIRELESS_ERROR_COUNTER=8\n");
        world.Start();
        world.RunFor(60s);
        EXPECT_GT(world.trace.CountLog("Uptime > 600, checking LTE connection errors"), 0u);
        world.trace.ExpectNoLog("checking PPP errors");
        EXPECT_EQ(world.trace.ShellTimes(kReset).size(), 0u);
    }
}

}  // namespace
