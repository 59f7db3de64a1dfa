// How the daemon leaves a link that is up, or about to be. What it does for each card, in which
// order, is told in core/shutdown_test.cpp and its units.
#include <gtest/gtest.h>

#include "carrier.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

TEST(Ending, TakesALinkThatIsUpDown) {
    World world("-E362");
    Carrier carrier(world);
    world.files.Write(kLeaseCounter, "LEASE_FAIL_COUNTER=3\n");
    world.Start();
    world.RunFor(5min);
    world.daemon.Signal(SIGTERM);
    EXPECT_EQ(world.RunToExit(1min), 0);
    EXPECT_EQ(From(ConnectionStory(world), "log: received", 100),
              (Lines{"log: received SIGINT/SIGTERM", "log: doing cleanup and exiting",
                     "run: /bin/echo -n  > /var/log/lightbar",
                     "run: /bin/rm -f /var/log/wireless.*", "log: Stopping udhcpc on wwan0",
                     std::string("run: ") + kReleaseLine, std::string("run: ") + kUpLine,
                     "log: Stopping udhcpc on wwan0", std::string("run: ") + kTerminateLine,
                     std::string("run: ") + kUpLine, std::string("modem: ") + kDisconnectCommand,
                     "log: Resetting udhcpc fail counter file", std::string("run: ") + kDownLine,
                     "log: exit"}));
    EXPECT_EQ(Files::Read(kLeaseCounter), "LEASE_FAIL_COUNTER=0\n");
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

}  // namespace
