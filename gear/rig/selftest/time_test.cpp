// Time, signals and the end of the program.

#include "selftest/sample_world.h"

using namespace rig;
using ::testing::ElementsAre;

TEST(SimulatedTime, MovesByTheSleepsAlone) {
    SampleWorld world("clocks");
    world.Start();
    world.RunFor(30s);
    EXPECT_THAT(world.Log(), ElementsAre("0 1773479700.0 2026-03-14 09:15:00",
                                         "10000 1773479710.0 2026-03-14 09:15:10",
                                         "20000 1773479720.0 2026-03-14 09:15:20"));
    EXPECT_EQ(world.Now(), 30s);
}

TEST(SimulatedTime, StopsBeforeWhatHappensAtTheVeryEnd) {
    SampleWorld world("clocks");
    world.Start();
    world.RunFor(9999999us);
    EXPECT_EQ(world.Log().size(), 1U);
    world.RunFor(1us);
    EXPECT_EQ(world.Log().size(), 1U);
    world.RunFor(1us);
    EXPECT_EQ(world.Log().size(), 2U);
}

TEST(WallClock, JumpsWithoutMovingTheSleeps) {
    SampleWorld world("clocks");
    world.At(5s, [&] { world.JumpClock(-1h); });
    world.At(15s, [&] { world.JumpClock(24h + 1ms); });
    world.Start();
    world.RunFor(30s);
    EXPECT_THAT(world.Log(), ElementsAre("0 1773479700.0 2026-03-14 09:15:00",
                                         "10000 1773476110.0 2026-03-14 08:15:10",
                                         "20000 1773562520.1000 2026-03-15 08:15:20"));
}

TEST(WallClock, StartsWhereAndInTheZoneThatTheStorySays) {
    SampleWorld world("clocks");
    world.SetWallClock("2000-02-29 23:59:59");
    world.SetEnvironment("TZ", "EST5");
    world.Start();
    world.RunFor(1s);
    EXPECT_THAT(world.Log(), ElementsAre("0 951868799.0 2000-02-29 18:59:59"));
}

TEST(Events, ComeInTheOrderOfTheirTimesThenOfTheirMaking) {
    SampleWorld world("clocks");
    std::string order;
    world.At(20s, [&] { order += "c"; });
    world.At(10s, [&] { order += "a"; });
    world.At(10s, [&] { order += "b"; });
    world.Every(15s, [&] { order += "-"; });
    world.Start();
    world.RunFor(40s);
    EXPECT_EQ(order, "ab-c-");
}

TEST(Signals, CutASleepShortAtTheirInstant) {
    SampleWorld world("sleeper");
    world.At(13600ms, [&] { world.Signal(SIGHUP); });
    world.Start();
    world.RunFor(60s);
    EXPECT_THAT(world.Log(), ElementsAre("signal 1 left 6"));
    EXPECT_EQ(world.LogTimes("signal 1 left 6"), std::vector<Duration>{13600ms});
}

TEST(Signals, InterruptAPauseOfMicroseconds) {
    SampleWorld world("sleeper");
    world.At(10400ms, [&] { world.Signal(SIGHUP); });
    world.Start();
    world.RunFor(20s);
    EXPECT_THAT(world.Log(), ElementsAre("usleep interrupted 4"));
}

TEST(Signals, EndTheProgramThroughItsHandler) {
    SampleWorld world("sleeper");
    world.At(25s, [&] { world.Signal(SIGTERM); });
    world.Start();
    EXPECT_EQ(world.RunToExit(60s), 7);
    EXPECT_EQ(world.ExitStatus(), 7);
    EXPECT_FALSE(world.Running());
    EXPECT_EQ(world.Now(), 25500ms);
}

TEST(Signals, EndAProgramWithoutHandler) {
    SampleWorld world("clocks");
    world.ExpectEndBySignal();
    world.At(25s, [&] { world.Signal(SIGTERM); });
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(world.EndingSignal(), SIGTERM);
    EXPECT_EQ(world.Now(), 25s);
}

TEST(Signals, CanComeBeforeAnyCall) {
    SampleWorld usual("sleeper");
    usual.Start();
    usual.RunFor(60s);
    const std::uint64_t calls = usual.Calls();
    ASSERT_GT(calls, 10U);
    for (std::uint64_t call = 3; call <= calls; ++call) {  // the first two install the handlers
        SCOPED_TRACE(call);
        SampleWorld world("sleeper");
        world.SignalAtCall(call, SIGTERM);
        world.Start();
        EXPECT_EQ(world.RunToExit(90s), 7);
    }
}

TEST(RunUntil, StopsAtTheVeryCall) {
    SampleWorld world("clocks");
    world.Start();
    EXPECT_TRUE(world.RunUntilLog("20000 1773479720.0 2026-03-14 09:15:20", 60s));
    EXPECT_EQ(world.Now(), 20s);
    EXPECT_EQ(world.Log().size(), 3U);
    bool happened = false;
    world.At(39s, [&] { happened = true; });
    EXPECT_TRUE(world.RunUntil([&] { return happened; }, 60s));
    EXPECT_EQ(world.Now(), 39s);
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
    EXPECT_EQ(world.Now(), 100s);
}

TEST(Trouble, ACrashFailsTheTest) {
    SampleWorld world("crash");
    world.Start();
    EXPECT_NONFATAL_FAILURE(world.RunFor(10s), "the daemon");
    EXPECT_FALSE(world.Running());
}

TEST(Trouble, AHangFailsTheTest) {
    SampleWorld world("hang");
    world.SetPatience(1s);
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
    EXPECT_EQ(world.ErrorOutput(), "something is wrong\n");
}

TEST(Trouble, APersonsTerminalIsOne) {
    SampleWorld world("complain");
    world.OnTerminal();
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 3);
    EXPECT_EQ(world.ErrorOutput(), "something is wrong\r\n");
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
        world.KeepSleeps();
        world.Every(7s, [&] { world.ModemSays("\r\n^RSSI: 3\r\n"); });
        world.Start();
        world.RunFor(10min);
        std::ostringstream text;
        for (const Event& event : world.GetTrace().Events()) text << event << "\n";
        return text.str();
    };
    const std::string first = run();
    EXPECT_GT(first.size(), 10000U);
    EXPECT_EQ(run(), first);
}
