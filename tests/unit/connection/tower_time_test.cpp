#include "connection/tower_time.h"

#include <map>

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

std::string NotValid(const std::string& time) {
    return "Time from tower does not look valid: " + time;
}

std::string Bad(const std::string& line) {
    return "Got BAD tower time: " + line + "\r";
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
    EXPECT_TRUE(world.Logged(NotValid("05:07:09 03/04/99")));
    AskE371("+CCLK: \"2026/03/04,05:07:09\"");
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2026")});
}

TEST_F(TowerTime, Of13IsTheYear2013FromTheClockAndFailsFromTheFallback) {
    Ask881("+CCLK: \"13/03/04,05:07:09+00\"");
    EXPECT_EQ(world.shell, Lines{UtcCommand("5:7:9 3/4/2013")});
    world.answers.erase("AT+CCLK?");
    AskFallback("13/3/4\r\n5:7:9");
    EXPECT_EQ(world.shell, Lines{});
    EXPECT_EQ(world.log, Lines{NotValid("05:07:09 03/04/13")});
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

struct RefusedTime {
    const char* command;
    const char* lines;
    Lines log;
    std::int64_t period;
};

TEST_F(TowerTime, ThatCannotBeIsRefusedAndAskedForSoonInAPossibleYear) {
    const Lines all_zero = {NotValid("00:00:00 00/00/0")};
    const Lines unknown_command = {
        "Modem does not appear to support tower time command, cannot time sync"};
    const RefusedTime rows[] = {
        {"AT$NWLTIME", "", all_zero, 777},
        {"AT$NWLTIME", "2026.3.4.5.7", all_zero, 777},
        {"AT$NWLTIME", "26.3.4.5.7.9", {NotValid("05:07:09 03/04/26")}, 777},  // not completed
        {"AT$NWLTIME", "2011.3.4.5.7.9", {NotValid("05:07:09 03/04/2011"), kBadSince}, 300},
        {"AT$NWLTIME",
         "2026.13.4.5.7.9",
         {Bad("2026.13.4.5.7.9"), NotValid("05:07:09 13/04/2026"), kBadSince},
         300},
        {"AT$NWLTIME",
         "2026.12.32.5.7.9",
         {Bad("2026.12.32.5.7.9"), NotValid("05:07:09 12/32/2026"), kBadSince},
         300},
        {"AT$NWLTIME",
         "2101.13.4.5.7.9",
         {Bad("2101.13.4.5.7.9"), NotValid("05:07:09 13/04/2101")},
         777},
        {"AT$CCLK?", "", all_zero, 777},
        {"AT$CCLK?", "+CCLK: \"26/03/04\"", all_zero, 777},
        // The year of a bad line is not completed, so it is far in the past.
        {"AT$CCLK?",
         "+CCLK: \"26/13/04,05:07:09\"",
         {Bad("+CCLK: \"26/13/04,05:07:09\""), NotValid("05:07:09 13/04/26")},
         777},
        {"AT$CCLK?",
         "+CCLK: \"26/-3/04,05:07:09\"",
         {Bad("+CCLK: \"26/-3/04,05:07:09\""), NotValid("05:07:09 -03/04/26")},
         777},
        {"at!time?", "ERROR", unknown_command, 777},
        {"at!time?", "2026/3/4\r\n5:7:9\r\nERROR", unknown_command, 777},
        {"at!time?", "+CME ERROR: 3", all_zero, 777},  // only a whole line is an error
        {"at!time?", " ERROR", all_zero, 777},
        {"at!time?", "2026/3/4", {kBadSince}, 300},
        {"at!time?", "5:7:9", {NotValid("05:07:09 00/00/0")}, 777},
        {"at!time?", "2026/13/4\r\n5:7:9", {NotValid("05:07:09 13/04/2026"), kBadSince}, 300},
    };
    const std::map<std::string, int> cards = {{"AT$NWLTIME", kCardNovatelE362},
                                              {"AT$CCLK?", kCardNovatelE371},
                                              {"at!time?", kCardSierra881}};
    for (const RefusedTime& row : rows) {
        SCOPED_TRACE(row.command + std::string(" ") + row.lines);
        Ask(cards.at(row.command), row.command, row.lines);
        EXPECT_EQ(world.log, row.log);
        EXPECT_EQ(world.shell, Lines{});
        EXPECT_EQ(Period(), row.period);
    }
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

TEST_F(TowerTime, OfThe881FallsBackAfterABadClockLine) {
    world.answers["at!time?"] = "\r\n2026/3/4\r\n5:7:9\r\n\r\nOK\r\n";
    Ask881("+CCLK: \"26/13/04,05:07:09\"");
    EXPECT_EQ(world.log, (Lines{"Got BAD tower time: +CCLK: \"26/13/04,05:07:09\"\r",
                                "Syncing system time to 05:07:09 03/04/2026 (LOCAL)"}));
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2026")});
}

TEST_F(TowerTime, OfThe881KeepsTheFirstDateAndTheFirstTime) {
    AskFallback("5:7:9 UTC\r\n2026/3/4\r\n2027/8/9\r\n6:6:6");
    EXPECT_EQ(world.shell, Lines{LocalCommand("5:7:9 3/4/2026")});
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
    AskE371("+CCLK: \"26/13/04,05:07:09\"");
    EXPECT_TRUE(world.Logged("DEBUG: year=26, month=13, day=4, hour=5, min=7, seconds=9"));
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
