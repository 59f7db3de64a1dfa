// First stories: the shipped daemon in simulated time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/world.h"

using namespace rig;
using ::testing::Contains;

TEST(SignalPoll, FlipsToTheOtherFormAfterAnError) {
    World world("-d");
    world.modem().Answer("AT+CSQ", "\r\nERROR\r\n");
    world.Start();
    world.RunFor(65s);
    EXPECT_THAT(world.Commands(), Contains("AT+CSQ?"));
    EXPECT_EQ(world.CountLog("AT command gave an error, switching CSQ modes to AT+CSQ?"), 1U);
}

TEST(SimulatedDay, IsLivedByEveryModel) {
    for (const char* option : {"", "-881", "-E362", "-E371", "-USB305", "-mc75i"}) {
        SCOPED_TRACE(option);
        World world(option);
        world.Start();
        world.RunFor(24h);
        EXPECT_TRUE(world.Running());
        EXPECT_EQ(world.Now(), 24h);
        EXPECT_GT(world.CommandTimes("AT+CSQ").size(), 5000U);
        world.Signal(SIGTERM);
        EXPECT_EQ(world.RunToExit(60s), 0);
    }
}
