// More than one life of the program in one world, and a log daemon that reads nothing.
#include <csignal>
#include <stdexcept>

#include "selftest/sample_world.h"

using namespace rig;

namespace {

constexpr char kLine[] = "touch /var/log/left";

TEST(Lives, TheNextOneFindsWhatTheLastOneHasLeft) {
    SampleWorld world("shell", kLine);
    world.Start();
    world.RunFor(15s);
    world.daemon.Kill();
    EXPECT_FALSE(world.daemon.Running());
    EXPECT_EQ(world.daemon.EndingSignal(), SIGKILL);
    bool told = false;
    world.clock.At(20s, [&] { told = true; });
    world.StartAgain(10s);
    EXPECT_EQ(world.clock.Now(), 25s);
    EXPECT_TRUE(told) << "the story goes on between two lives";
    EXPECT_TRUE(Files::Exists("/var/log/left"));
    world.RunFor(15s);
    EXPECT_EQ(world.trace.ShellTimes(kLine), (std::vector<Duration>{0s, 10s, 25s, 35s}));
}

TEST(Lives, NoneBeginsWhileOneRuns) {
    SampleWorld world("shell", kLine);
    EXPECT_THROW(world.StartAgain(1s), std::logic_error);
    world.Start();
    world.RunFor(1s);
    EXPECT_THROW(world.StartAgain(1s), std::logic_error);
}

TEST(StuckLog, TakesAsManyLinesAsItHasRoomFor) {
    SampleWorld world("shell", kLine);
    world.Start();
    world.RunFor(1s);
    world.router.StickLog(1);
    world.RunFor(1h);
    EXPECT_EQ(world.trace.LogTimes("system 0"), (std::vector<Duration>{0s, 10s}));
    EXPECT_EQ(world.trace.ShellTimes(kLine), (std::vector<Duration>{0s, 10s, 20s})) << "it waits";
    world.router.FreeLog();
    world.RunFor(11s);
    EXPECT_EQ(world.trace.LogTimes("system 0"), (std::vector<Duration>{0s, 10s, 3601s, 3611s}));
}

TEST(StuckLog, IsNoMatterForASleepThatDoesNotWaitForIt) {
    SampleWorld world("shell", kLine);
    world.Start();
    world.RunFor(1s);
    world.router.StickLog(1);
    world.router.FreeLog();
    world.RunFor(12s);
    EXPECT_EQ(world.trace.ShellTimes(kLine), (std::vector<Duration>{0s, 10s}));
}

}  // namespace
