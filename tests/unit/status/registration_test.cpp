#include "status/registration.h"

#include <gmock/gmock.h>

#include "state/timers.h"
#include "status_test.h"
#include "support/countdown_timer.h"

using testing::ElementsAre;
using testing::IsEmpty;

class Registration : public StatusTest {
  protected:
    Registration() { g_i_CardType = kCardSierra881; }

    void Check(const Lines& lines) {
        world.answers[IsLteCard() ? "AT+CEREG?" : "AT+CREG?"] = Answered(lines);
        CheckRegistration();
    }

    // Seconds that the registration timer counts from now on.
    int TimerPeriod() {
        int seconds = 0;
        while (!g_Cp_CregTimer->HasExpired() && seconds < 1000) {
            ++seconds;
            Wait(1);
        }
        return seconds;
    }
};

TEST_F(Registration, MapsEveryStatus) {
    const struct {
        int status;
        const char* full;
        const char* abbreviated;
        int period;
    } rows[] = {
        {0, "Not Registered, Not Searching", "Not Reg", 5},
        {1, "Registered, Home Network", "Reg Home", 30},
        {2, "Not registered, Searching", "Searching", 5},
        {3, "Registration Denied", "Reg Denied", 5},
        {4, "Status Unknown", "Unkn Stat", 5},
        {5, "Registered, Roaming", "Reg Roam", 30},
        {6, "Unknown", "Unknown", 5},
        {7, "Unknown", "Unknown", 5},
        {-1, "Unknown", "Unknown", 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        Check({"+CREG: 0," + std::to_string(row.status)});
        EXPECT_EQ(row.full, stats.creg);
        EXPECT_EQ(row.abbreviated, stats.creg_abr);
        EXPECT_EQ(row.status, stats.registration_status);
        EXPECT_EQ(row.period, g_i_CregPollPeriod);
        EXPECT_EQ(row.period, TimerPeriod());
        EXPECT_EQ(std::string(row.abbreviated) + "\n", Published("wirelessactivation_status"));
    }
}

TEST_F(Registration, LogsAStatusThatHasNoTextAtEveryLevel) {
    world.answers["AT+CREG?"] = Answered({"+CREG: 0,7"});
    EXPECT_EQ(kAtEveryLevel,
              LevelsThatLog("got 7 value for registration_status", CheckRegistration));
    world.answers["AT+CREG?"] = Answered({"+CREG: 0,5"});
    EXPECT_EQ(Levels(), LevelsThatLog("got 5 value for registration_status", CheckRegistration));
}

TEST_F(Registration, ReadsTheCellInModeTwo) {
    Check({R"(+CREG: 2,1,"1A2B","01C3D4E")"});
    EXPECT_EQ("Registered, Home Network", stats.creg);
    EXPECT_EQ("Reg Home", stats.creg_abr);
    EXPECT_EQ(30, g_i_CregPollPeriod);
    EXPECT_EQ("1A2B", stats.location_area_code);
    EXPECT_EQ("1C3D4E (1850702)", stats.serving_cell);
}

TEST_F(Registration, ReadsTheCellAsTheCLibraryScansHex) {
    const struct {
        const char* line;
        const char* area;
        const char* cell;
    } rows[] = {
        {"+CREG: 2,1,1a2b,c3d4", "1A2B", "C3D4 (50132)"},
        {"+CREG: 2,1,0x1A,0X2B", "1A", "2B (43)"},
        {"+CREG: 2,5, 00FF,  0A,7", "FF", "A (10)"},
        {"+CREG: 2,1,FFFFFFFF,FFFFFFFF", "FFFFFFFF", "FFFFFFFF (-1)"},
        {"+CREG: 2,1,1A2B", "1A2B", "0 (0)"},
        {"+CREG: 2,1,1A2B,zz", "1A2B", "0 (0)"},
        {"+CREG: 2,1", "0", "0 (0)"},
        {"+CREG:2,1,10,20,7", "10", "20 (32)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        Check({row.line});
        EXPECT_EQ(row.area, stats.location_area_code);
        EXPECT_EQ(row.cell, stats.serving_cell);
    }
}

TEST_F(Registration, LeavesTheCellInOtherModes) {
    stats.location_area_code = stats.serving_cell = "kept";
    Check({"+CREG: 0,5"});
    Check({R"(+CREG: 1,1,"1A2B","01C3")"});
    EXPECT_EQ("kept", stats.location_area_code);
    EXPECT_EQ("kept", stats.serving_cell);
    EXPECT_EQ("Registered, Home Network", stats.creg);
}

// The second scan stores four values at most: "more than four" never comes true, even on a line
// that has more, and the count that is logged is the second one.
// Guards oddity second-scan-counts.
TEST_F(Registration, CountsTheMatchesOfTheSecondScan) {
    world.answers["AT+CREG?"] = Answered({"+CREG: 2,1,1A2B,3C4D,7,8"});
    EXPECT_EQ(kAtNonZero, LevelsThatLog("DEBUG: Got num matches 4", CheckRegistration));
    EXPECT_EQ("1A2B", stats.location_area_code);
    EXPECT_EQ("3C4D (15437)", stats.serving_cell);
    world.answers["AT+CREG?"] = Answered({"+CREG: 2,1,1A2B"});
    EXPECT_EQ(kAtNonZero, LevelsThatLog("DEBUG: Got num matches 3", CheckRegistration));
}

// What a line does not fill stays from the line before: a mode of 2 without a status makes the
// lines behind it be scanned for a cell, too.
TEST_F(Registration, KeepsTheModeForTheNextLine) {
    stats.registration_status = 9;
    Check({"+CREG: 2"});
    EXPECT_EQ("0", stats.location_area_code);
    EXPECT_EQ("0 (0)", stats.serving_cell);
    EXPECT_EQ("Not Registered, Not Searching", stats.creg);
    EXPECT_EQ(9, stats.registration_status);
}

TEST_F(Registration, StopsAtTheFirstLineThatMatches) {
    Check({"noise", "AT+CREG?", "+CREG: 0,3", "+CREG: 0,1"});
    EXPECT_EQ("Registration Denied", stats.creg);
}

TEST_F(Registration, TakesNoAnswerForStatusZero) {
    for (const char* answer : {"", "\r\nERROR\r\n", "AT+CREG?\r\n", "\r\n+CREG: 1\r\n",
                               "\r\n+CEREG: 0,1\r\n", "\r\n +CREG: 0,1\r\n", "\r\n+CREG 0,1\r\n"}) {
        SCOPED_TRACE(answer);
        stats.registration_status = 4;
        g_i_CregPollPeriod = 30;
        world.answers["AT+CREG?"] = answer;
        CheckRegistration();
        EXPECT_EQ("Not Registered, Not Searching", stats.creg);
        EXPECT_EQ("Not Reg\n", Published("wirelessactivation_status"));
        EXPECT_EQ(5, g_i_CregPollPeriod);
        EXPECT_EQ(4, stats.registration_status);
    }
}

TEST_F(Registration, AsksTheNovatelCardsForTheirOwnLine) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        g_i_CardType = card;
        stats.location_area_code = stats.serving_cell = "kept";
        Check({"+CEREG: 2,5"});
        EXPECT_EQ("Registered, Roaming", stats.creg);
        EXPECT_EQ("kept", stats.location_area_code);
        EXPECT_EQ("kept", stats.serving_cell);
    }
    EXPECT_THAT(world.Commands(), ElementsAre("AT+CEREG?", "AT+CEREG?"));
}

TEST_F(Registration, KeepsTheQuotesOfTheNovatelCards) {
    g_i_CardType = kCardNovatelE362;
    Check({R"(+CEREG: "2","5")"});
    EXPECT_EQ("Not Registered, Not Searching", stats.creg);
    g_i_CardType = kCardSierraUsb305;
    Check({R"(+CREG: "0","5")"});
    EXPECT_EQ("Registered, Roaming", stats.creg);
}

TEST_F(Registration, DoesNothingOnOtherCards) {
    for (const int card : {kCardGeneric, kCardType3, kCardMc75i}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        CheckRegistration();
        EXPECT_THAT(world.Commands(), IsEmpty());
        EXPECT_EQ("(missing)", Published("wirelessactivation_status"));
        EXPECT_FALSE(g_Cp_CregTimer->IsRunning());
        EXPECT_EQ("", stats.creg);
    }
}

TEST_F(Registration, LogsLinesAndMatches) {
    world.answers["AT+CREG?"] = "\r\n+CREG: 2,1,\"1A\",\"2B\"\r\nOK\r\n";
    const Lines log = LogAtLevel(2, CheckRegistration);
    EXPECT_THAT(Lines(log.end() - 5, log.end()),
                ElementsAre("DEBUG: Checking line: \r", "DEBUG: Got num matches 0",
                            "DEBUG: Checking line: +CREG: 2,1,1A,2B\r", "DEBUG: Got num matches 4",
                            "DEBUG: Got Registration mode: 2, Registration status: 1"));
    EXPECT_EQ(kAbove1,
              LevelsThatLog("DEBUG: Checking line: +CREG: 2,1,1A,2B\r", CheckRegistration));
    EXPECT_EQ(kAtNonZero, LevelsThatLog("DEBUG: Got Registration mode: 2, Registration status: 1",
                                        CheckRegistration));
}

TEST_F(Registration, CountsAnEmptyLineAsTheCLibraryDoes) {
    world.answers["AT+CREG?"] = "ERROR\r\n";
    EXPECT_EQ(kAtNonZero, LevelsThatLog("DEBUG: Got num matches -1", CheckRegistration));
}

TEST_F(Registration, DoesNotLogTheLinesOfTheNovatelCards) {
    g_i_CardType = kCardNovatelE371;
    world.answers["AT+CEREG?"] = Answered({"+CEREG: 0,1"});
    for (const std::string& line : LogAtLevel(4, CheckRegistration)) {
        EXPECT_EQ(std::string::npos, line.find("Checking line")) << line;
    }
}

TEST_F(Registration, RestartsTheTimerAndRewritesTheFileOnEveryCheck) {
    Check({"+CREG: 0,1"});
    Wait(29);
    Check({"+CREG: 0,1"});
    EXPECT_EQ(30, TimerPeriod());
    EXPECT_THAT(FileSteps(),
                ElementsAre("write wirelessactivation_status", "write wirelessactivation_status"));
}
