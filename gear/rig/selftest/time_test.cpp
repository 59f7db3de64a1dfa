// Time, signals and the end of the program.

#include "selftest/sample_world.h"

using namespace rig;
using ::testing::ElementsAre;

TEST(SimulatedTime, MovesByTheSleepsAlone) {
    SampleWorld world("clocks");
    world.Start();
    world.RunFor(30s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("0 1773479700.0 2026-03-14 09:15:00",
                                               "10000 1773479710.0 2026-03-14 09:15:10",
                                               "20000 1773479720.0 2026-03-14 09:15:20"));
    EXPECT_EQ(world.clock.Now(), 30s);
}

TEST(SimulatedTime, StopsBeforeWhatHappensAtTheVeryEnd) {
    SampleWorld world("clocks");
    world.Start();
    world.RunFor(9999999us);
    EXPECT_EQ(world.trace.Log().size(), 1U);
    world.RunFor(1us);
    EXPECT_EQ(world.trace.Log().size(), 1U);
    world.RunFor(1us);
    EXPECT_EQ(world.trace.Log().size(), 2U);
}

TEST(WallClock, JumpsWithoutMovingTheSleeps) {
    SampleWorld world("clocks");
    world.clock.At(5s, [&] { world.clock.Jump(-1h); });
    world.clock.At(15s, [&] { world.clock.Jump(24h + 1ms); });
    world.Start();
    world.RunFor(30s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("0 1773479700.0 2026-03-14 09:15:00",
                                               "10000 1773476110.0 2026-03-14 08:15:10",
                                               "20000 1773562520.1000 2026-03-15 08:15:20"));
}

TEST(WallClock, StartsWhereAndInTheZoneThatTheStorySays) {
    SampleWorld world("clocks");
    world.clock.Set("2000-02-29 23:59:59");
    world.daemon.SetEnvironment("TZ", "EST5");
    world.Start();
    world.RunFor(1s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("0 951868799.0 2000-02-29 18:59:59"));
}

TEST(Events, ComeInTheOrderOfTheirTimesThenOfTheirMaking) {
    SampleWorld world("clocks");
    std::string order;
    world.clock.At(20s, [&] { order += "c"; });
    world.clock.At(10s, [&] { order += "a"; });
    world.clock.At(10s, [&] { order += "b"; });
    world.clock.Every(15s, [&] { order += "-"; });
    world.Start();
    world.RunFor(40s);
    EXPECT_EQ(order, "ab-c-");
}

TEST(Signals, CutASleepShortAtTheirInstant) {
    SampleWorld world("sleeper");
    world.clock.At(13600ms, [&] { world.daemon.Signal(SIGHUP); });
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("signal 1 left 6"));
    EXPECT_EQ(world.trace.LogTimes("signal 1 left 6"), std::vector<Duration>{13600ms});
}

TEST(Signals, InterruptAPauseOfMicroseconds) {
    SampleWorld world("sleeper");
    world.clock.At(10400ms, [&] { world.daemon.Signal(SIGHUP); });
    world.Start();
    world.RunFor(20s);
    EXPECT_THAT(world.trace.Log(), ElementsAre("usleep interrupted 4"));
}

TEST(Signals, EndTheProgramThroughItsHandler) {
    SampleWorld world("sleeper");
    world.clock.At(25s, [&] { world.daemon.Signal(SIGTERM); });
    world.Start();
    EXPECT_EQ(world.RunToExit(60s), 7);
    EXPECT_EQ(world.daemon.ExitStatus(), 7);
    EXPECT_FALSE(world.daemon.Running());
    EXPECT_EQ(world.clock.Now(), 25500ms);
}

TEST(Signals, EndAProgramWithoutHandler) {
    SampleWorld world("clocks");
    world.daemon.ExpectEndBySignal();
    world.clock.At(25s, [&] { world.daemon.Signal(SIGTERM); });
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(world.daemon.EndingSignal(), SIGTERM);
    EXPECT_EQ(world.clock.Now(), 25s);
}

TEST(Signals, CanComeBeforeAnyCall) {
    SampleWorld usual("sleeper");
    usual.Start();
    usual.RunFor(60s);
    const std::uint64_t calls = usual.daemon.Calls();
    ASSERT_GT(calls, 10U);
    for (std::uint64_t call = 3; call <= calls; ++call) {  // the first two install the handlers
        SCOPED_TRACE(call);
        SampleWorld world("sleeper");
        world.daemon.SignalAtCall(call, SIGTERM);
        world.Start();
        EXPECT_EQ(world.RunToExit(90s), 7);
    }
}

TEST(RunUntil, StopsAtTheVeryCall) {
    SampleWorld world("clocks");
    world.Start();
    EXPECT_TRUE(world.RunUntilLog("20000 1773479720.0 2026-03-14 09:15:20", 60s));
    EXPECT_EQ(world.clock.Now(), 20s);
    EXPECT_EQ(world.trace.Log().size(), 3U);
    bool happened = false;
    world.clock.At(39s, [&] { happened = true; });
    EXPECT_TRUE(world.RunUntil([&] { return happened; }, 60s));
    EXPECT_EQ(world.clock.Now(), 39s);
}

TEST(RunUntil, FailsTheTestWhenItDoesNotHappen) {
    SampleWorld world("clocks");
    world.Start();
    EXPECT_NONFATAL_FAILURE(EXPECT_FALSE(world.RunUntil([] { return false; }, 5s)),
                            "did not happen in time");
}

TEST(EndOfTheProgram, ByItselfIsSeenWithItsStatus) {
    SampleWorld world("nothing");
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 0);
}

TEST(EndOfTheProgram, IsMissedWhenItDoesNotCome) {
    SampleWorld world("clocks");
    world.Start();
    EXPECT_NONFATAL_FAILURE(world.RunToExit(100s), "still runs");
    EXPECT_EQ(world.clock.Now(), 100s);
}

TEST(Trouble, ACrashFailsTheTest) {
    SampleWorld world("crash");
    world.Start();
    EXPECT_NONFATAL_FAILURE(world.RunFor(10s), "the daemon");
    EXPECT_FALSE(world.daemon.Running());
}

TEST(Trouble, AHangFailsTheTest) {
    SampleWorld world("hang");
    world.daemon.SetPatience(1s);
    world.Start();
    EXPECT_NONFATAL_FAILURE(world.RunFor(10s), "makes no call");
}

TEST(Trouble, AWordOnStandardErrorFailsTheTest) {
    EXPECT_NONFATAL_FAILURE(
        {
            SampleWorld world("complain");
            world.Start();
            world.RunToExit(1s);
        },
        "something is wrong");
}

TEST(Trouble, AWordOnStandardErrorIsAllowedWhenAskedFor) {
    SampleWorld world("complain");
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 4);
    EXPECT_EQ(world.daemon.ErrorOutput(), "something is wrong\n");
}

TEST(Trouble, APersonsTerminalIsOne) {
    SampleWorld world("complain");
    world.daemon.OnTerminal();
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 3);
    EXPECT_EQ(world.daemon.ErrorOutput(), "something is wrong\r\n");
}

#ifdef __SANITIZE_ADDRESS__
TEST(Trouble, ALeakFailsTheTest) {
    EXPECT_NONFATAL_FAILURE(
        {
            SampleWorld world("leak");
            world.Start();
            world.RunFor(10s);
        },
        "LeakSanitizer");
}
#endif

TEST(Determinism, TwoRunsHaveOneTrace) {
    const auto run = [] {
        SampleWorld world("talker");
        world.trace.KeepSleeps();
        world.clock.Every(7s, [&] { world.modem.Say("\r\n^RSSI: 3\r\n"); });
        world.Start();
        world.RunFor(10min);
        std::ostringstream text;
        for (const Event& event : world.trace.Events()) text << event << "\n";
        return text.str();
    };
    const std::string first = run();
    EXPECT_GT(first.size(), 10000U);
    EXPECT_EQ(run(), first);
}
