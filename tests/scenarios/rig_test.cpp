// First stories: that the shipped daemon runs in simulated time at all.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/world.h"

using namespace rig;
using ::testing::Contains;
using ::testing::ElementsAre;

TEST(SignalPoll, FlipsToTheOtherFormAfterAnError) {
    World world("-d");
    world.modem().Answer("AT+CSQ", "\r\nERROR\r\n");
    world.Start();
    world.RunFor(65s);
    EXPECT_THAT(world.Commands(), Contains("AT+CSQ?"));
    EXPECT_EQ(world.CountLog("AT command gave an error, switching CSQ modes to AT+CSQ?"), 1U);
}
