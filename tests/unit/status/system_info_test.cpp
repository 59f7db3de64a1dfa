#include "status/system_info.h"

#include <gmock/gmock.h>

#include "status_test.h"

using testing::ElementsAre;
using testing::IsEmpty;

class Sysinfo : public StatusTest {
  protected:
    Sysinfo() { g_i_CardType = kCardSierra881; }

    void Ask(const std::string& line) {
        world.answers["at^sysinfo"] = Answered({line});
        GetSysinfo();
    }
};

TEST_F(Sysinfo, NamesAllFive) {
    Ask("^SYSINFO:2,3,1,5,1");
    EXPECT_EQ("Service", stats.service_status);
    EXPECT_EQ("Circuit and Packet Switched Service", stats.service_domain);
    EXPECT_EQ(0, stats.roaming);
    EXPECT_EQ("WCDMA Mode", stats.system_mode);
    EXPECT_EQ("Available", stats.sim_status);
}

TEST_F(Sysinfo, NamesTheServiceStatus) {
    const char* const texts[] = {"No Service",      "Limited Service",
                                 "Service",         "Limited Regional Service",
                                 "Power Save Mode", "Unknown"};
    for (int number = 0; number < 6; ++number) {
        Ask("^SYSINFO:" + std::to_string(number) + ",0,0,0,0");
        EXPECT_EQ(texts[number], stats.service_status) << number;
    }
}

TEST_F(Sysinfo, NamesTheServiceDomain) {
    const char* const texts[] = {"No Service", "Circuit Switched Service Only",
                                 "Packet Switched Service Only",
                                 "Circuit and Packet Switched Service", "Unknown"};
    for (int number = 0; number < 5; ++number) {
        Ask("^SYSINFO:0," + std::to_string(number) + ",0,0,0");
        EXPECT_EQ(texts[number], stats.service_domain) << number;
    }
}

// The comparison is with the character codes of "0" and "1".
// Guards oddity roaming-stays-0.
TEST_F(Sysinfo, RoamingIsComparedWithCharacterCodes) {
    const std::pair<const char*, int> rows[] = {{"0", 0},  {"1", 0},  {"48", 0},
                                                {"49", 1}, {"50", 0}, {"2", 0}};
    for (const auto& [number, roaming] : rows) {
        stats.roaming = 1;
        Ask(std::string("^SYSINFO:2,3,") + number + ",5,1");
        EXPECT_EQ(roaming, stats.roaming) << number;
    }
}

// Guards oddity no-serivce.
TEST_F(Sysinfo, NamesTheSystemModeInItsOwnSpelling) {
    const std::pair<int, const char*> rows[] = {
        {0, "No Serivce"}, {3, "GSM/GPRS Mode"}, {5, "WCDMA Mode"}};
    for (const auto& [number, text] : rows) {
        Ask("^SYSINFO:2,3,0," + std::to_string(number) + ",1");
        EXPECT_EQ(text, stats.system_mode);
    }
}

// A mode without a text, or no answer at all, leaves what another query has put there.
TEST_F(Sysinfo, LeavesTheSystemModeOfAnotherQuery) {
    stats.system_mode = "LTE";
    for (const char* line : {"^SYSINFO:2,3,0,17,1", "^SYSINFO:2,3,0,1,1", "ERROR", ""}) {
        Ask(line);
        EXPECT_EQ("LTE", stats.system_mode) << line;
    }
}

TEST_F(Sysinfo, NamesTheSimState) {
    const std::pair<int, const char*> rows[] = {{0, "Not Available"},
                                                {1, "Available"},
                                                {255, "Not Present / PIN Locked"},
                                                {2, "Unknown"},
                                                {-1, "Unknown"}};
    for (const auto& [number, text] : rows) {
        Ask("^SYSINFO:2,3,0,5," + std::to_string(number));
        EXPECT_EQ(text, stats.sim_status) << number;
    }
}

TEST_F(Sysinfo, ConvertsFieldsAsTheCLibraryDoes) {
    Ask("^SYSINFO: 2abc, +3,\t49 ,005,1 x,9,9");
    EXPECT_EQ("Service", stats.service_status);
    EXPECT_EQ("Circuit and Packet Switched Service", stats.service_domain);
    EXPECT_EQ(1, stats.roaming);
    EXPECT_EQ("WCDMA Mode", stats.system_mode);
    EXPECT_EQ("Available", stats.sim_status);
}

TEST_F(Sysinfo, IsLeftOutUnlessTheAnswerHasOneColonAndFiveFields) {
    for (const char* line : {"^SYSINFO:2,3,0,5", "^SYSINFO:2:3,0,5,1,1", "^SYSINFO 2,3,0,5,1",
                             "^SYSINFO:", "ERROR", "^SYSINFO:2,3,0,5,1\r\n+CSQ: 3,1"}) {
        SCOPED_TRACE(line);
        stats.service_status = stats.service_domain = stats.sim_status = "old";
        stats.system_mode = "old";
        stats.roaming = 1;
        Ask(line);
        EXPECT_EQ("Unknown", stats.service_status);
        EXPECT_EQ("Unknown", stats.service_domain);
        EXPECT_EQ("Unknown", stats.sim_status);
        EXPECT_EQ("old", stats.system_mode);
        EXPECT_EQ(0, stats.roaming);
    }
}

TEST_F(Sysinfo, IsAskedOfTheUsb305Too) {
    g_i_CardType = kCardSierraUsb305;
    Ask("^SYSINFO:2,3,0,5,1");
    EXPECT_EQ("Service", stats.service_status);
}

TEST_F(Sysinfo, LogsBothTokenCountsAlike) {
    world.answers["at^sysinfo"] = Answered({"^SYSINFO:2,3,0,5,1"});
    const Lines log = LogAtLevel(2, GetSysinfo);
    EXPECT_THAT(Lines(log.end() - 2, log.end()),
                ElementsAre("DEBUG: GetSysinfo() first token count is : 2",
                            "DEBUG: GetSysinfo() first token count is : 5"));
    EXPECT_EQ(kAbove1, LevelsThatLog("DEBUG: GetSysinfo() first token count is : 2", GetSysinfo));
}

TEST_F(Sysinfo, OnlyResetsTheFieldsOfOtherCards) {
    for (const int card : {kCardGeneric, kCardType3, kCardMc75i}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        stats.service_status = stats.service_domain = stats.sim_status = "old";
        stats.system_mode = "old";
        stats.roaming = 1;
        stats.sim_ready = true;
        GetSysinfo();
        EXPECT_EQ("Unknown", stats.service_status);
        EXPECT_EQ("Unknown", stats.service_domain);
        EXPECT_EQ("Unknown", stats.sim_status);
        EXPECT_EQ("old", stats.system_mode);
        EXPECT_EQ(0, stats.roaming);
        EXPECT_TRUE(stats.sim_ready);
    }
    EXPECT_THAT(world.Commands(), IsEmpty());
}

class SimReady : public StatusTest {
  protected:
    SimReady() { g_i_CardType = kCardNovatelE362; }
};

TEST_F(SimReady, IsSetWhenTheSimHasCompleted) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        g_i_CardType = card;
        stats.sim_ready = false;
        world.answers["at$qcsimstat?"] = Answered({"$QCSIMSTAT: 0, SIM INIT COMPLETED"});
        GetSysinfo();
        EXPECT_TRUE(stats.sim_ready);
    }
}

TEST_F(SimReady, IsNeverTakenBack) {
    stats.sim_ready = true;
    world.answers["at$qcsimstat?"] = Answered({"$QCSIMSTAT: 1, SIM REMOVED"});
    GetSysinfo();
    EXPECT_TRUE(stats.sim_ready);
}

TEST_F(SimReady, WaitsForTheWord) {
    world.answers["at$qcsimstat?"] = Answered({"$QCSIMSTAT: 2, completed"});
    GetSysinfo();
    EXPECT_FALSE(stats.sim_ready);
}

TEST_F(SimReady, WaitsASecondForTheAnswer) {
    GetSysinfo();
    EXPECT_EQ(1070000, world.slept_us);
    EXPECT_THAT(world.Commands(), ElementsAre("at$qcsimstat?"));
}

TEST_F(SimReady, LogsTheWordAndStops) {
    world.answers["at$qcsimstat?"] = "x COMPLETED\r\ny COMPLETED\r\n";
    const Lines log = LogAtLevel(2, GetSysinfo);
    EXPECT_THAT(Lines(log.end() - 3, log.end()),
                ElementsAre("DEBUG: token count is : 3", "DEBUG: checking line : x COMPLETED\r",
                            "DEBUG: line looks like COMPLETED, cleaning white space"));
}
