// The passive timer: stopped, counting, expired; and what a moved wall clock does to it.
#include "support/countdown_timer.h"

#include <cstdint>

#include "fakes/fixture.h"

namespace {

class CountdownTimer : public fake::DaemonTest {
  protected:
    void Wait(std::int64_t milliseconds) { world.now_us += milliseconds * 1000; }
    void WaitSeconds(std::int64_t seconds) { Wait(seconds * 1000); }
};

TEST_F(CountdownTimer, StartsStopped) {
    cCountdownTimer timer(0, 5);
    WaitSeconds(100);
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_FALSE(timer.HasExpired());
    EXPECT_FALSE(timer.IsCounting());
    EXPECT_EQ(timer.GetElapsed(), 0u);
}

TEST_F(CountdownTimer, ExpiresWhenThePeriodHasPassedAndNotAMillisecondSooner) {
    cCountdownTimer timer(0, 5);
    timer.Start();
    EXPECT_TRUE(timer.IsRunning());
    EXPECT_TRUE(timer.IsCounting());
    Wait(4999);
    EXPECT_FALSE(timer.HasExpired());
    EXPECT_TRUE(timer.IsCounting());
    Wait(1);
    EXPECT_TRUE(timer.HasExpired());
    EXPECT_FALSE(timer.IsCounting());
}

TEST_F(CountdownTimer, StaysExpiredAndRunningUntilStartedOrStopped) {
    cCountdownTimer timer(0, 1);
    timer.Start();
    WaitSeconds(3);
    EXPECT_TRUE(timer.HasExpired());
    EXPECT_TRUE(timer.HasExpired());
    EXPECT_TRUE(timer.IsRunning());
    timer.Start();
    EXPECT_FALSE(timer.HasExpired());
    WaitSeconds(1);
    EXPECT_TRUE(timer.HasExpired());
    timer.Stop();
    EXPECT_FALSE(timer.HasExpired());
    EXPECT_FALSE(timer.IsCounting());
    EXPECT_FALSE(timer.IsRunning());
}

TEST_F(CountdownTimer, StartOnARunningTimerBeginsThePeriodAnew) {
    cCountdownTimer timer(0, 10);
    timer.Start();
    WaitSeconds(9);
    timer.Start();
    WaitSeconds(9);
    EXPECT_TRUE(timer.IsCounting());
    EXPECT_EQ(timer.GetElapsed(), 9u);
}

TEST_F(CountdownTimer, ASecondPeriodIsTheDefault) {
    cCountdownTimer timer;
    timer.Start();
    Wait(999);
    EXPECT_FALSE(timer.HasExpired());
    Wait(1);
    EXPECT_TRUE(timer.HasExpired());
}

TEST_F(CountdownTimer, ACountAloneMeansSeconds) {
    cCountdownTimer timer(3);
    timer.Start();
    Wait(2999);
    EXPECT_FALSE(timer.HasExpired());
    Wait(1);
    EXPECT_TRUE(timer.HasExpired());
}

TEST_F(CountdownTimer, TheFlagAloneGivesOneUnit) {
    cCountdownTimer milliseconds(true);
    cCountdownTimer seconds(false);
    milliseconds.Start();
    seconds.Start();
    Wait(1);
    EXPECT_TRUE(milliseconds.HasExpired());
    EXPECT_FALSE(seconds.HasExpired());
    Wait(999);
    EXPECT_TRUE(seconds.HasExpired());
}

TEST_F(CountdownTimer, OnlyTheFlagOneMeansMilliseconds) {
    cCountdownTimer milliseconds(1, 5);
    cCountdownTimer two(2, 5);
    cCountdownTimer negative(-1, 5);
    for (cCountdownTimer* timer : {&milliseconds, &two, &negative}) timer->Start();
    Wait(5);
    EXPECT_TRUE(milliseconds.HasExpired());
    EXPECT_FALSE(two.HasExpired());
    EXPECT_FALSE(negative.HasExpired());
    EXPECT_EQ(milliseconds.GetElapsed(), 5u);
}

TEST_F(CountdownTimer, AZeroPeriodIsExpiredAtOnce) {
    cCountdownTimer timer(0, 0);
    EXPECT_FALSE(timer.HasExpired());
    timer.Start();
    EXPECT_TRUE(timer.HasExpired());
}

TEST_F(CountdownTimer, ANewPeriodCountsAtTheNextTestAndFromTheOldStart) {
    cCountdownTimer timer(0, 10);
    timer.SetPeriod(4);
    EXPECT_FALSE(timer.IsRunning());
    timer.Start();
    WaitSeconds(5);
    EXPECT_TRUE(timer.HasExpired());
    timer.SetPeriod(30);
    EXPECT_TRUE(timer.IsCounting());
    timer.SetPeriod(5);
    EXPECT_TRUE(timer.HasExpired());
}

TEST_F(CountdownTimer, ElapsedIsCutToWholeUnits) {
    cCountdownTimer timer(0, 100);
    timer.Start();
    Wait(1999);
    EXPECT_EQ(timer.GetElapsed(), 1u);
}

TEST_F(CountdownTimer, MicrosecondsAreCutBeforeTheyAreSubtracted) {
    world.now_us = 1000 * 1000000LL + 999;  // 1000.000999 s
    cCountdownTimer timer(1, 1);
    timer.Start();
    world.now_us += 1;  // 1000.001000 s
    EXPECT_TRUE(timer.HasExpired());
}

// Deliberate: the wall clock is meant, and the difference is unsigned.
// Guards oddity timers-follow-the-clock.
TEST_F(CountdownTimer, AClockSetBackExpiresEveryRunningTimer) {
    cCountdownTimer timer(0, 14400);
    timer.Start();
    Wait(-1);
    EXPECT_TRUE(timer.HasExpired());
    EXPECT_EQ(timer.GetElapsed(), 4294967295u / 1000);
    WaitSeconds(-86400);
    EXPECT_TRUE(timer.HasExpired());
}

TEST_F(CountdownTimer, AClockSetBackDoesNotTouchAStoppedTimer) {
    cCountdownTimer timer(0, 5);
    WaitSeconds(-100);
    EXPECT_FALSE(timer.HasExpired());
}

TEST_F(CountdownTimer, AClockSetForwardExpiresEarly) {
    cCountdownTimer timer(0, 900);
    timer.Start();
    WaitSeconds(899);
    EXPECT_FALSE(timer.HasExpired());
    WaitSeconds(86400);
    EXPECT_TRUE(timer.HasExpired());
}

// 2^32 milliseconds are 49 days, 17 hours, 2 minutes and 47.296 seconds.
TEST_F(CountdownTimer, ElapsedWrapsAroundAfterFortyNineDays) {
    cCountdownTimer timer(0, 30);
    timer.Start();
    Wait(4294967295LL);
    EXPECT_EQ(timer.GetElapsed(), 4294967u);
    EXPECT_TRUE(timer.HasExpired());
    Wait(1);
    EXPECT_EQ(timer.GetElapsed(), 0u);
    EXPECT_TRUE(timer.IsCounting());
}

TEST_F(CountdownTimer, AClockBeyondTheYear2038StillCounts) {
    world.now_us = 2147483647LL * 1000000;
    cCountdownTimer timer(0, 5);
    timer.Start();
    WaitSeconds(5);
    EXPECT_EQ(timer.GetElapsed(), 5u);
    EXPECT_TRUE(timer.HasExpired());
}

TEST_F(CountdownTimer, FormatsTheElapsedTime) {
    struct Row {
        std::int64_t seconds;
        const char* expected;
    };
    const Row rows[] = {
        {0, " 00:00:00 "},
        {59, " 00:00:59 "},
        {60, " 00:01:00 "},
        {3725, " 01:02:05 "},
        {86399, " 23:59:59 "},
        {86400, " 1 Days, 00:00:00 "},
        {90061, " 1 Days, 01:01:01 "},
        {3 * 86400 + 4 * 3600 + 5 * 60 + 6, " 3 Days, 04:05:06 "},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.seconds);
        cCountdownTimer timer(0, 5);
        timer.Start();
        WaitSeconds(row.seconds);
        EXPECT_STREQ(timer.FormatElapsed(), row.expected);
    }
}

TEST_F(CountdownTimer, FormatsAMillisecondTimerInSeconds) {
    cCountdownTimer timer(1, 5);
    timer.Start();
    Wait(1500);
    EXPECT_EQ(timer.GetElapsed(), 1500u);
    EXPECT_STREQ(timer.FormatElapsed(), " 00:00:01 ");
    timer.Start();
    Wait(61999);
    EXPECT_STREQ(timer.FormatElapsed(), " 00:01:01 ");
}

TEST_F(CountdownTimer, FormatsAStoppedTimerAsZero) {
    cCountdownTimer timer(0, 5);
    timer.Start();
    WaitSeconds(9);
    timer.Stop();
    EXPECT_STREQ(timer.FormatElapsed(), " 00:00:00 ");
}

}  // namespace
