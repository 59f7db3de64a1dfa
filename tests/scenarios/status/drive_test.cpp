// What a drive through town costs the data call, and what a display sees of it.
#include <gmock/gmock.h>

#include <fstream>
#include <string>

#include "rig/world.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

constexpr char kLightbar[] = "/var/log/lightbar";

}  // namespace

TEST(Drive, CostsTheE362ItsDataCallInTheTunnel) {
    World world("-E362");
    world.modem.Control("drive on");
    world.Start();
    world.RunFor(60min);
    // One tunnel of 70 seconds in each round of ten minutes.
    EXPECT_EQ(6U, world.trace.CountLog("No service after 30 seconds, sending modem a disconnect."));
}

// A display that opens the lightbar once follows the signal for as long as the daemon runs.
TEST(Drive, KeepsTheLightbarForADisplayThatHoldsItOpen) {
    World world("-881");
    world.Start();
    ASSERT_TRUE(world.RunUntil([] { return Files::Exists(kLightbar); }, 60s));
    world.modem.Control("signal 3 0");
    world.RunFor(20s);
    std::ifstream reader(kLightbar);
    world.modem.Control("signal 25 0");
    world.RunFor(20s);
    std::string line;
    ASSERT_TRUE(std::getline(reader, line));
    EXPECT_EQ("+CSQ: 25,0", line);
}
