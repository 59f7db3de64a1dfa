#include "connection/tower_time.h"

#include "connection_test.h"
#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"

namespace {

constexpr char kBadSince[] = "Will check tower time again in 5 minutes";
constexpr char kHardware[] = " &> /dev/null; /bin/hwclock --systohc &> /dev/null";

std::string LocalCommand(const std::string& time) {
    return "/bin/date   -s \"" + time + "\"" + kHardware;
}

std::string UtcCommand(const std::string& time) {
    return "/bin/date  -u   -s \"" + time + "\"" + kHardware;
}

class TowerTime : public ConnectionTest {
  protected:
    TowerTime() { g_S_PppConfig.time_sync_enabled = true; }

    // The period that the timer now has, in seconds, to the second.
    std::int64_t Period() {
        const std::int64_t now = world.now_us;
        g_Cp_TowerTimeTimer->Start();
        std::int64_t seconds = 0;
        while (g_Cp_TowerTimeTimer->IsCounting()) {
            world.now_us += 1000000;
            ++seconds;
        }
        g_Cp_TowerTimeTimer->Stop();
        world.now_us = now;
        return seconds;
    }

    void Ask(int card, const std::string& command, const std::string& line) {
        g_i_CardType = card;
        world.answers[command] = "\r\n" + line + "\r\n\r\nOK\r\n";
        g_Cp_TowerTimeTimer->SetPeriod(777);
        StartStory();
        SyncTowerTime();
    }
    void AskE362(const std::string& line) { Ask(kCardNovatelE362, "AT$NWLTIME", line); }
    void AskE371(const std::string& line) { Ask(kCardNovatelE371, "AT$CCLK?", line); }
    void Ask881(const std::string& line) { Ask(kCardSierra881, "AT+CCLK?", line); }
    void AskFallback(const std::string& lines) { Ask(kCardSierra881, "at!time?", lines); }
};

TEST_F(TowerTime, IsLeftAloneWhileSyncTimeIsOff) {
    g_S_PppConfig.time_sync_enabled = false;
    AskE362("2026.3.4.5.7.9");
    EXPECT_EQ(Story(), Lines{});
    EXPECT_EQ(Period(), 777);
}

TEST_F(TowerTime, OfTheE362SetsTheLocalTime) {
    AskE362("2026.3.4.5.7.9");
    EXPECT_EQ(Story(), (Lines{"modem: AT$NWLTIME", "sleep 2000 ms",
                              "log: Syncing system time to 05:07:09 03/04/2026 (LOCAL)",
                              "run: " + LocalCommand("5:7:9 3/4/2026")}));
    EXPECT_EQ(Period(), 14400);
}

TEST_F(TowerTime, OfTheE371SetsTheLocalTime) {
    AskE371("+CCLK: \"26/03/04,05:07:09-20\"");
    EXPECT_EQ(Story(), (Lines{"modem: AT$CCLK?", "sleep 2000 ms",
                              "log: Syncing system time to 05:07:09 03/04/2026 (LOCAL)",
                              "run: " + LocalCommand("5:7:9 3/4/2026")}));
    EXPECT_EQ(Period(), 14400);
}

TEST_F(TowerTime, OfThe881SetsTheTimeInUtc) {
    Ask881("+CCLK: \"26/03/04,05:07:09+00\"");
    EXPECT_EQ(Story(),
              (Lines{"modem: AT+CCLK?", "sleep 2000 ms", "log: Using UTC switch when setting date",
                     "log: Syncing system time to 05:07:09 03/04/2026 (UTC)",
                     "run: " + UtcCommand("5:7:9 3/4/2026")}));
    EXPECT_EQ(Period(), 14400);
}

TEST_F(TowerTime, OfThe881FallbackSetsTheLocalTime) {
    AskFallback("2026/3/4\r\n5:7:9 CET");
    EXPECT_EQ(Story(),
              (Lines{"modem: AT+CCLK?", "sleep 2000 ms", "modem: at!time?", "sleep 2000 ms",
                     "log: Syncing system time to 05:07:09 03/04/2026 (LOCAL)",
                     "run: " + LocalCommand("5:7:9 3/4/2026")}));
    EXPECT_EQ(Period(), 14400);
}

TEST_F(TowerTime, IsUnsupportedOnOtherCards) {
    for (const int card : {0, 3, 4, 6}) {
        SCOPED_TRACE(card);
        Ask(card, "AT+CCLK?", "+CCLK: \"26/03/04,05:07:09+00\"");
        EXPECT_EQ(Story(), Lines{"log: Cannot sync to tower time, unsupported modem"});
        EXPECT_EQ(Period(), 777);
    }
}

TEST_F(TowerTime, WithTwoDigitYearsIsCompletedOnlyBelow99) {
    AskE371("+CCLK: \"98/03/04,05:07:09\"");
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2098")});
    AskE371("+CCLK: \"99/03/04,05:07:09\"");
    EXPECT_EQ(world.shell, Lines{});
    EXPECT_TRUE(world.Logged("Time from tower does not look valid: 05:07:09 03/04/99"));
    AskE371("+CCLK: \"2026/03/04,05:07:09\"");
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2026")});
}

TEST_F(TowerTime, Of13IsTheYear2013FromTheClockAndFailsFromTheFallback) {
    Ask881("+CCLK: \"13/03/04,05:07:09+00\"");
    EXPECT_EQ(world.shell, Lines{UtcCommand("5:7:9 3/4/2013")});
    world.answers.erase("AT+CCLK?");
    AskFallback("13/3/4\r\n5:7:9");
    EXPECT_EQ(world.shell, Lines{});
    EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 05:07:09 03/04/13"});
    EXPECT_EQ(Period(), 777);
}

TEST_F(TowerTime, OfTheE362IsNotCompleted) {
    AskE362("26.3.4.5.7.9");
    EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 05:07:09 03/04/26"});
    EXPECT_EQ(Period(), 777);
}

struct YearCase {
    const char* year;
    bool sets_the_clock;
    std::int64_t period;
};

TEST_F(TowerTime, IsTakenFromTheYear2012On) {
    for (const YearCase& row :
         {YearCase{"0", false, 777}, YearCase{"1980", false, 777}, YearCase{"2010", false, 777},
          YearCase{"2011", false, 300}, YearCase{"2012", true, 14400},
          YearCase{"2100", true, 14400}, YearCase{"2101", true, 14400}}) {
        SCOPED_TRACE(row.year);
        AskE362(std::string(row.year) + ".12.31.23.59.59");
        EXPECT_EQ(world.shell.size(), row.sets_the_clock ? 1U : 0U);
        EXPECT_EQ(Period(), row.period);
        EXPECT_EQ(world.Logged(kBadSince), row.period == 300);
    }
}

TEST_F(TowerTime, OfYear2011IsRefusedAndRetriedInFiveMinutes) {
    AskE362("2011.3.4.5.7.9");
    EXPECT_EQ(world.log,
              (Lines{"Time from tower does not look valid: 05:07:09 03/04/2011", kBadSince}));
    EXPECT_EQ(Period(), 300);
}

TEST_F(TowerTime, WithABadMonthOrDayIsRetriedInFiveMinutes) {
    AskE362("2026.13.4.5.7.9");
    EXPECT_EQ(world.log,
              (Lines{"Got BAD tower time: 2026.13.4.5.7.9\r",
                     "Time from tower does not look valid: 05:07:09 13/04/2026", kBadSince}));
    EXPECT_EQ(Period(), 300);
    AskE362("2026.12.32.5.7.9");
    EXPECT_EQ(world.log,
              (Lines{"Got BAD tower time: 2026.12.32.5.7.9\r",
                     "Time from tower does not look valid: 05:07:09 12/32/2026", kBadSince}));
    EXPECT_EQ(world.shell, Lines{});
}

TEST_F(TowerTime, WithABadDateBeyond2100IsNotRetriedSoon) {
    AskE362("2101.13.4.5.7.9");
    EXPECT_FALSE(world.Logged(kBadSince));
    EXPECT_EQ(Period(), 777);
}

// The year of a bad line is not completed, so it is far in the past.
TEST_F(TowerTime, OfTheE371WithABadMonthWaitsForTheCurrentPeriod) {
    AskE371("+CCLK: \"26/13/04,05:07:09\"");
    EXPECT_EQ(world.log, (Lines{"Got BAD tower time: +CCLK: \"26/13/04,05:07:09\"\r",
                                "Time from tower does not look valid: 05:07:09 13/04/26"}));
    EXPECT_EQ(Period(), 777);
}

TEST_F(TowerTime, StopsAtTheFirstWholeLineGoodOrBad) {
    AskE362("2026.13.4.5.7.9\r\n2026.3.4.5.7.9");
    EXPECT_EQ(world.shell, Lines{});
    AskE362("2026.3.4.5.7.9\r\n2027.3.4.5.7.9");
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2026")});
}

TEST_F(TowerTime, AcceptsTheDateZero) {
    AskE362("2026.0.0.0.0.0");
    EXPECT_EQ(world.shell, Lines{LocalCommand("0:0:0 0/0/2026")});
}

TEST_F(TowerTime, DoesNotCheckTheTimeOfDay) {
    AskE362("2026.3.4.99.99.99");
    EXPECT_EQ(world.shell, Lines{LocalCommand("99:99:99 3/4/2026")});
}

TEST_F(TowerTime, WithoutAnAnswerIsAllZero) {
    for (const int card : {7, 8}) {
        SCOPED_TRACE(card);
        Ask(card, "AT", "");
        EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 00:00:00 00/00/0"});
        EXPECT_EQ(Period(), 777);
    }
}

TEST_F(TowerTime, OfALineThatMatchesInPartIsAllZero) {
    AskE362("2026.3.4.5.7");
    EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 00:00:00 00/00/0"});
    AskE371("+CCLK: \"26/03/04\"");
    EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 00:00:00 00/00/0"});
}

TEST_F(TowerTime, WithANegativeMonthIsBad) {
    AskE371("+CCLK: \"26/-3/04,05:07:09\"");
    EXPECT_TRUE(world.LoggedContaining("Got BAD tower time"));
    EXPECT_EQ(world.shell, Lines{});
}

TEST_F(TowerTime, OfThe881FallsBackAfterABadClockLine) {
    world.answers["at!time?"] = "\r\n2026/3/4\r\n5:7:9\r\n\r\nOK\r\n";
    Ask881("+CCLK: \"26/13/04,05:07:09\"");
    EXPECT_EQ(world.log, (Lines{"Got BAD tower time: +CCLK: \"26/13/04,05:07:09\"\r",
                                "Syncing system time to 05:07:09 03/04/2026 (LOCAL)"}));
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2026")});
}

TEST_F(TowerTime, OfThe881GivesUpOnAnErrorLine) {
    for (const char* error : {"ERROR", "2026/3/4\r\n5:7:9\r\nERROR"}) {
        SCOPED_TRACE(error);
        AskFallback(error);
        EXPECT_EQ(world.log, Lines{"Modem does not appear to support tower time command, "
                                   "cannot time sync"});
        EXPECT_EQ(world.shell, Lines{});
        EXPECT_EQ(Period(), 777);
    }
}

TEST_F(TowerTime, OfThe881TakesOnlyAWholeLineForAnError) {
    AskFallback("+CME ERROR: 3");
    EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 00:00:00 00/00/0"});
    AskFallback(" ERROR");
    EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 00:00:00 00/00/0"});
}

TEST_F(TowerTime, OfThe881NeedsDateAndTime) {
    AskFallback("2026/3/4");
    EXPECT_EQ(world.log, Lines{kBadSince});
    EXPECT_EQ(Period(), 300);
    AskFallback("5:7:9");
    EXPECT_EQ(world.log, Lines{"Time from tower does not look valid: 05:07:09 00/00/0"});
    EXPECT_EQ(Period(), 777);
}

TEST_F(TowerTime, OfThe881KeepsTheFirstDateAndTheFirstTime) {
    AskFallback("5:7:9 UTC\r\n2026/3/4\r\n2027/8/9\r\n6:6:6");
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2026")});
}

TEST_F(TowerTime, OfThe881WithABadDateIsRetried) {
    AskFallback("2026/13/4\r\n5:7:9");
    EXPECT_EQ(world.log,
              (Lines{"Time from tower does not look valid: 05:07:09 13/04/2026", kBadSince}));
    EXPECT_EQ(Period(), 300);
}

TEST_F(TowerTime, SurvivesNoise) {
    for (const std::string& noise :
         {std::string(100000, '.'), std::string(1000, '9'), std::string("\x01\xff%n%s%n"),
          std::string("99999999999999999999.1.1.1.1.1")}) {
        AskE362(noise);
        AskE371(noise);
        AskFallback(noise);
        EXPECT_EQ(world.shell, Lines{});
    }
}

TEST_F(TowerTime, ShowsWhatTheE362SaidAboveLevelZero) {
    const auto ask = [this] { AskE362("2026.3.4.5.7.9"); };
    EXPECT_EQ(LevelsThatLog("DEBUG: Got num matches 6", ask), kAbove0);
    EXPECT_EQ(LevelsThatLog("DEBUG: Got tower time: 2026.3.4.5.7.9\r", ask), kAbove0);
    EXPECT_EQ(LevelsThatLog("DEBUG: year=2026, month=3, day=4, hour=5, min=7, seconds=9", ask),
              kAbove0);
    EXPECT_EQ(LevelsThatLog("Syncing system time to 05:07:09 03/04/2026 (LOCAL)", ask), kAlways);
}

TEST_F(TowerTime, ShowsTheYearAsTheModemSaidIt) {
    g_i_DebugLevel = 1;
    AskE371("+CCLK: \"26/03/04,05:07:09\"");
    EXPECT_TRUE(world.Logged("DEBUG: year=26, month=3, day=4, hour=5, min=7, seconds=9"));
}

TEST_F(TowerTime, CountsTheMatchesOfEveryLineUpToTheWholeOne) {
    g_i_DebugLevel = 1;
    AskE362("2026.3\r\n2026.3.4.5.7.9");
    EXPECT_EQ(world.CountLogged("DEBUG: Got num matches -1"), 1);  // the first, empty line
    EXPECT_EQ(world.CountLogged("DEBUG: Got num matches 2"), 1);
    EXPECT_EQ(world.CountLogged("DEBUG: Got num matches 6"), 1);
    EXPECT_EQ(world.CountLogged("DEBUG: Got num matches 0"), 0);  // OK is not looked at
}

TEST_F(TowerTime, ShowsTheFallbackAboveLevelZero) {
    const auto ask = [this] { AskFallback("2026/3/4\r\n5:7:9 CET"); };
    EXPECT_EQ(LevelsThatLog("DEBUG: Got tower date: 2026/3/4\r", ask), kAbove0);
    EXPECT_EQ(LevelsThatLog("DEBUG: year=2026, month=3, day=4", ask), kAbove0);
    EXPECT_EQ(LevelsThatLog("DEBUG: Got tower time: 5:7:9 CET\r", ask), kAbove0);
    EXPECT_EQ(LevelsThatLog("DEBUG: hour=5, min=7, seconds=9", ask), kAbove0);
}

}  // namespace
