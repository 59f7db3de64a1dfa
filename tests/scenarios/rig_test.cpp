// First stories: the shipped daemon in simulated time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rig/card_options.h"
#include "rig/world.h"

using namespace rig;
using ::testing::Contains;

TEST(SignalPoll, FlipsToTheOtherFormAfterAnError) {
    World world("-d");
    world.modem.Answer("AT+CSQ", "\r\nERROR\r\n");
    world.Start();
    world.RunFor(65s);
    EXPECT_THAT(world.trace.Commands(), Contains("AT+CSQ?"));
    EXPECT_EQ(world.trace.CountLog("AT command gave an error, switching CSQ modes to AT+CSQ?"), 1U);
}

class Model : public ::testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(All, Model, ::testing::ValuesIn(rig::EveryCardOption()));

TEST_P(Model, IsServedForTwoHoursWithoutACommandThatItDoesNotKnow) {
    World world(GetParam());
    world.Start();
    world.RunFor(2h);
    EXPECT_EQ(world.clock.Now(), 2h);
    EXPECT_GT(world.trace.CommandTimes("AT+CSQ").size(), 400U);
    world.daemon.Signal(SIGTERM);
    EXPECT_EQ(world.RunToExit(60s), 0);
}

TEST(SimulatedDay, HasTheSameTraceEachTime) {
    const auto run = [] {
        World world("-E362");
        world.router.SetAddress("10.64.0.2");
        world.Start();
        world.RunFor(12h);
        return world.trace.Events();
    };
    const std::vector<Event> first = run();
    const std::vector<Event> second = run();
    ASSERT_EQ(first.size(), second.size());
    EXPECT_GT(first.size(), 50000U);
    for (std::size_t i = 0; i < first.size(); ++i) {
        ASSERT_TRUE(first[i] == second[i]) << first[i] << "\n" << second[i];
    }
}
