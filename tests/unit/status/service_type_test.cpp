#include "status/service_type.h"

#include <gmock/gmock.h>

#include "state/timers.h"
#include "status_test.h"
#include "support/countdown_timer.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kDisconnect[] = "AT$NWQMIDISCONNECT";
constexpr char kNoServiceMessage[] = "No service after 30 seconds, sending modem a disconnect.";

}  // namespace

class E362Service : public StatusTest {
  protected:
    E362Service() { g_i_CardType = kCardNovatelE362; }

    // Whether good service has come.
    bool Ask(const Lines& lines) {
        world.answers["AT$NWSYSMODE"] = Answered(lines);
        return QueryServiceType();
    }
};

TEST_F(E362Service, SwitchesTheEchoOffAndAsks) {
    world.answers["ATE0"] = Answered({"LTE"});
    QueryServiceType();
    EXPECT_THAT(world.Commands(), ElementsAre("ATE0", "AT$NWSYSMODE"));
    EXPECT_EQ("Unknown", stats.service_type);
    EXPECT_EQ("Unknown", stats.previous_service_type);
}

TEST_F(E362Service, TakesTheTrimmedLine) {
    const std::pair<const char*, const char*> rows[] = {
        {"  LTE ", "LTE"}, {"eHRPD", "eHRPD"}, {"No Service", "No Service"},
        {"ABC", "ABC"},    {"\tLTE", "LTE"},   {"1 2", "1 2"},
    };
    for (const auto& [line, service] : rows) {
        SCOPED_TRACE(line);
        Ask({line});
        EXPECT_EQ(service, stats.service_type);
        EXPECT_EQ(service, stats.previous_service_type);
    }
}

// Two characters and the carriage return: the OK behind the answer is no service type.
TEST_F(E362Service, SkipsTheEchoAndShortLines) {
    Ask({"AT$NWSYSMODE", "xx AT$NWSYSMODE yy", "AB", ""});
    EXPECT_EQ("Unknown", stats.service_type);
    EXPECT_THAT(LogLinesWith("Service Type changed"), IsEmpty());
}

TEST_F(E362Service, KeepsItsServiceWhenOnlyTheOkFollows) {
    Ask({"LTE"});
    world.log.clear();
    world.shell.clear();
    Ask({"LTE"});
    EXPECT_EQ("LTE", stats.service_type);
    EXPECT_THAT(world.log, IsEmpty());
    EXPECT_THAT(world.shell, IsEmpty());
}

TEST_F(E362Service, IsUnknownWithoutAnAnswerAndRemembersTheLastOne) {
    Ask({"LTE"});
    world.answers.clear();
    QueryServiceType();
    EXPECT_EQ("Unknown", stats.service_type);
    EXPECT_EQ("LTE", stats.previous_service_type);
}

TEST_F(E362Service, StopsAtAChangedLineAndVisitsAllOthers) {
    Ask({"LTE"});
    Ask({"LTE", "eHRPD", "No Service"});
    EXPECT_EQ("eHRPD", stats.service_type);
    EXPECT_EQ("eHRPD", stats.previous_service_type);
    EXPECT_FALSE(g_Cp_NoServiceTimer->IsRunning());
}

TEST_F(E362Service, LogsEveryChangeAtEveryLevel) {
    EXPECT_EQ(kAtEveryLevel, LevelsThatLog("Service Type changed from 'Unknown' to 'LTE'", [this] {
                  stats.previous_service_type = "Unknown";
                  Ask({"LTE"});
              }));
    EXPECT_EQ(kAtEveryLevel, LevelsThatLog("Service Type changed from '' to 'LTE'", [this] {
                  stats.previous_service_type = "";
                  Ask({"LTE"});
              }));
}

TEST_F(E362Service, GoodServiceIsToldOnceAndStopsTheTimer) {
    g_Cp_NoServiceTimer->Start();
    EXPECT_TRUE(Ask({"LTE"}));
    EXPECT_FALSE(g_Cp_NoServiceTimer->IsRunning());
    EXPECT_THAT(world.log, ElementsAre("Service Type changed from 'Unknown' to 'LTE'"));
    EXPECT_FALSE(Ask({"LTE"}));
    EXPECT_THAT(world.shell, IsEmpty());
}

// What the modem says behind the line that changed the service is not looked at.
TEST_F(E362Service, TheFirstChangeEndsTheQuery) {
    EXPECT_TRUE(Ask({"LTE", "No Service"}));
    EXPECT_EQ("LTE", stats.service_type);
    EXPECT_FALSE(Ask({"No Service", "eHRPD"}));
    EXPECT_EQ("No Service", stats.service_type);
}

TEST_F(E362Service, BadServiceStartsTheTimer) {
    EXPECT_FALSE(Ask({"No Service"}));
    EXPECT_TRUE(g_Cp_NoServiceTimer->IsRunning());
    EXPECT_THAT(world.log, ElementsAre("Service Type changed from 'Unknown' to 'No Service'",
                                       "Warning: Modem reports bad service : 'No Service'"));
}

TEST_F(E362Service, AnotherBadServiceDoesNotStartTheTimerAgain) {
    Ask({"No Service"});
    Wait(20);
    Ask({"No Signal"});
    Wait(11);
    EXPECT_TRUE(g_Cp_NoServiceTimer->HasExpired());
}

TEST_F(E362Service, ThirtySecondsWithoutServiceDisconnectOnce) {
    Ask({"No Service"});
    Wait(29);
    Ask({"No Service"});
    EXPECT_THAT(world.Commands(), Not(Contains(kDisconnect)));
    Wait(1);
    Ask({"No Service"});
    EXPECT_EQ(1, world.CountLogged(kNoServiceMessage));
    EXPECT_FALSE(g_Cp_NoServiceTimer->IsRunning());
    Wait(60);
    Ask({"No Service"});
    EXPECT_EQ(1, world.CountLogged(kNoServiceMessage));
    const Lines commands = world.Commands();
    EXPECT_EQ(1, std::count(commands.begin(), commands.end(), kDisconnect));
}

// The timer is looked at before the change is: service that comes back too late still costs the
// data call.
TEST_F(E362Service, ServiceThatIsBackTooLateIsDisconnectedAllTheSame) {
    Ask({"No Service"});
    Wait(31);
    EXPECT_TRUE(Ask({"LTE"}));
    EXPECT_EQ(1, world.CountLogged(kNoServiceMessage));
    EXPECT_THAT(world.Commands(), Contains(kDisconnect));
}

// Neither good nor bad: the timer runs on, but nobody looks at it until the modem speaks again.
TEST_F(E362Service, SilenceIsNotCountedAsNoService) {
    Ask({"No Service"});
    Wait(31);
    world.answers.clear();
    EXPECT_FALSE(QueryServiceType());
    EXPECT_TRUE(g_Cp_NoServiceTimer->IsRunning());
    EXPECT_THAT(world.Commands(), Not(Contains(kDisconnect)));
    Ask({"No Service"});
    EXPECT_THAT(world.Commands(), Contains(kDisconnect));
}

TEST_F(E362Service, LogsTheTimersLife) {
    const auto lose_service = [this] {
        g_Cp_NoServiceTimer->Stop();
        stats.previous_service_type = "LTE";
        Ask({"No Service"});
    };
    EXPECT_EQ(kAtNonZero, LevelsThatLog("DEBUG: starting g_Cp_NoServiceTimer", lose_service));
    EXPECT_EQ(kAbove0, LevelsThatLog("DEBUG: g_Cp_NoServiceTimer is running, at 12", [&] {
                  lose_service();
                  Wait(12);
                  Ask({"No Service"});
              }));
    EXPECT_EQ(kAtEveryLevel, LevelsThatLog(kNoServiceMessage, [&] {
                  lose_service();
                  Wait(31);
                  Ask({"No Service"});
              }));
}

TEST_F(E362Service, LogsEachLine) {
    world.answers["AT$NWSYSMODE"] = "AT$NWSYSMODE\r\n LTE \r\nOK\r\n";
    stats.previous_service_type = "LTE";
    const Lines log = LogAtLevel(2, QueryServiceType);
    EXPECT_THAT(
        Lines(log.end() - 6, log.end()),
        ElementsAre("DEBUG: checking line : AT$NWSYSMODE\r", "DEBUG: checking line :  LTE \r",
                    "DEBUG: line not empty, cleaning white space",
                    "DEBUG: line after cleaning (length 3): LTE", "DEBUG: checking line : OK\r",
                    "DEBUG: checking line : "));
    EXPECT_EQ(kAbove1,
              LevelsThatLog("DEBUG: line not empty, cleaning white space", QueryServiceType));
}

class E371Service : public StatusTest {
  protected:
    E371Service() { g_i_CardType = kCardNovatelE371; }

    void Ask(const Lines& lines) {
        world.answers["AT$NWRAT?"] = Answered(lines);
        QueryServiceType();
    }
};

// Some texts end in a blank, and it belongs to them.
TEST_F(E371Service, NamesTheMode) {
    const char* const texts[] = {"Automatic",       "GSM Only", "Unknown", "LTE Only",
                                 "CDMA (1x) only ", "HDR Only", "Unknown"};
    for (int mode = 0; mode < 7; ++mode) {
        SCOPED_TRACE(mode);
        Ask({"$NWRAT: " + std::to_string(mode) + ",2,8"});
        EXPECT_EQ(texts[mode], stats.system_mode);
    }
    Ask({"$NWRAT: -1,2,8"});
    EXPECT_EQ("Unknown", stats.system_mode);
}

// Guards oddity texts-end-in-blanks.
TEST_F(E371Service, NamesTheDomain) {
    const char* const texts[] = {"Circuit-switched only ", "Packet-switched only ", "CS and PS",
                                 "Unknown"};
    for (int domain = 0; domain < 4; ++domain) {
        SCOPED_TRACE(domain);
        Ask({"$NWRAT: 0," + std::to_string(domain) + ",8"});
        EXPECT_EQ(texts[domain], stats.service_domain);
    }
    Ask({"$NWRAT: 0,-1,8"});
    EXPECT_EQ("Unknown", stats.service_domain);
}

TEST_F(E371Service, NamesTheState) {
    const char* const texts[] = {
        "Searching",      "WCDMA CS", "WCDMA PS", "WCDMA CS and PS", "GSM CS",  "GSM PS",
        "GSM CS and PS",  "LTE CS",   "LTE PS",   "LTE CS and PS",   "CDMA CS", "CDMA PS",
        "CDMA CS and PS", "HDR CS",   "HDR PS",   "HDR CS and PS",   "Unknown"};
    for (int state = 0; state < 17; ++state) {
        SCOPED_TRACE(state);
        Ask({"$NWRAT: 0,2," + std::to_string(state)});
        EXPECT_EQ(texts[state], stats.service_type);
    }
    Ask({"$NWRAT: 0,2,-5"});
    EXPECT_EQ("Unknown", stats.service_type);
}

TEST_F(E371Service, ModeTwoHasNoTextOfItsOwn) {
    Ask({"$NWRAT: 2,1,8"});
    EXPECT_EQ("Unknown", stats.system_mode);
    EXPECT_EQ("Packet-switched only ", stats.service_domain);
    EXPECT_EQ("LTE PS", stats.service_type);
}

TEST_F(E371Service, TakesTheFirstLineWithThreeNumbers) {
    Ask({"AT$NWRAT?", "$NWRAT: 0,1", "$NWRAT: 3,1,7", "$NWRAT: 1,0,4"});
    EXPECT_EQ("LTE Only", stats.system_mode);
    EXPECT_EQ("LTE CS", stats.service_type);
    EXPECT_THAT(world.Commands(), ElementsAre("ATE0", "AT$NWRAT?"));
}

TEST_F(E371Service, LeavesModeAndDomainWithoutAWholeLine) {
    stats.system_mode = stats.service_domain = "kept";
    stats.service_type = "LTE PS";
    Ask({"$NWRAT: 0,1", "$NWRAT 0,1,2"});
    EXPECT_EQ("kept", stats.system_mode);
    EXPECT_EQ("kept", stats.service_domain);
    EXPECT_EQ("Unknown", stats.service_type);
}

TEST_F(E371Service, WatchesNoChangeAndNoTimer) {
    g_Cp_NoServiceTimer->Start();
    Wait(40);
    Ask({"$NWRAT: 0,2,0"});
    EXPECT_EQ("Unknown", stats.previous_service_type);
    EXPECT_TRUE(g_Cp_NoServiceTimer->IsRunning());
    EXPECT_THAT(world.log, IsEmpty());
    EXPECT_THAT(world.shell, IsEmpty());
}

TEST_F(E371Service, LogsMatchesAndValues) {
    world.answers["AT$NWRAT?"] = "\r\n$NWRAT: 0,2,8\r\nOK\r\n";
    const Lines log = LogAtLevel(1, QueryServiceType);
    EXPECT_THAT(Lines(log.end() - 4, log.end()),
                ElementsAre("DEBUG: Got num matches 0", "DEBUG: Got num matches 3",
                            "DEBUG: Got NWRAT: $NWRAT: 0,2,8\r",
                            "DEBUG: mode=0, domain=2, currentState=8"));
    for (const char* line : {"DEBUG: Got num matches 3", "DEBUG: Got NWRAT: $NWRAT: 0,2,8\r",
                             "DEBUG: mode=0, domain=2, currentState=8"}) {
        EXPECT_EQ(kAtNonZero, LevelsThatLog(line, QueryServiceType)) << line;
    }
}

class SierraService : public StatusTest {
  protected:
    SierraService() { g_i_CardType = kCardSierra881; }
};

TEST_F(SierraService, IsTheTextBehindTheCntiLabel) {
    const std::pair<const char*, const char*> rows[] = {
        {"*CNTI: 0,HSDPA/HSUPA", "HSPA"},
        {"*CNTI: 0, HSDPA/HSUPA ", "HSPA"},
        {"*CNTI: 0,UMTS", "UMTS"},
        {"*CNTI: 0,HSDPA", "HSDPA"},
        {"*CNTI: 0,HSDPA/HSUPA+", "HSDPA/HSUPA+"},
        {"*CNTI: 0,", ""},
        {"echo *CNTI: 0, EDGE", "EDGE"},
    };
    for (const int card : {kCardSierra881, kCardType3, kCardSierraUsb305}) {
        g_i_CardType = card;
        for (const auto& [line, service] : rows) {
            SCOPED_TRACE(line);
            world.answers["AT*CNTI=0"] = Answered({line, "*CNTI: 0,later"});
            QueryServiceType();
            EXPECT_EQ(service, stats.service_type);
            EXPECT_EQ(service, stats.previous_service_type);
        }
    }
}

TEST_F(SierraService, FallsBackToTheRadioAccessQuery) {
    world.answers["AT*CNTI=0"] = "\r\n*CNTI: 1,UMTS\r\nERROR\r\n";
    world.answers["AT!GETRAT?"] = Answered({"!GETRAT: HSDPA/HSUPA "});
    QueryServiceType();
    EXPECT_EQ("HSDPA/HSUPA", stats.service_type);  // shortened only behind the first label
    EXPECT_THAT(world.Commands(), ElementsAre("AT*CNTI=0", "AT!GETRAT?"));
}

TEST_F(SierraService, AsksOnceWhenTheFirstAnswerWillDo) {
    world.answers["AT*CNTI=0"] = Answered({"*CNTI: 0,UMTS"});
    QueryServiceType();
    EXPECT_THAT(world.Commands(), ElementsAre("AT*CNTI=0"));
}

TEST_F(SierraService, IsUnknownWhenNeitherAnswers) {
    stats.service_type = "UMTS";
    stats.previous_service_type = "UMTS";
    QueryServiceType();
    EXPECT_EQ("Unknown", stats.service_type);
    EXPECT_EQ("UMTS", stats.previous_service_type);
    EXPECT_THAT(LogLinesWith("changed"), IsEmpty());
}

TEST_F(SierraService, LogsAChangeUnlessTheOldValueIsEmpty) {
    world.answers["AT*CNTI=0"] = Answered({"*CNTI: 0,UMTS"});
    const char* const message = "Service Type changed from 'EDGE' to 'UMTS'";
    EXPECT_EQ(kAtEveryLevel, LevelsThatLog(message, [this] {
                  stats.previous_service_type = "EDGE";
                  QueryServiceType();
              }));
    EXPECT_EQ(Levels(), LevelsThatLog("Service Type changed from '' to 'UMTS'", [this] {
                  stats.previous_service_type = "";
                  QueryServiceType();
              }));
    EXPECT_EQ(Levels(),
              LevelsThatLog("Service Type changed from 'UMTS' to 'UMTS'", QueryServiceType));
}

TEST_F(SierraService, LeavesTheTimerAndTheDhcpClientAlone) {
    world.answers["AT*CNTI=0"] = Answered({"*CNTI: 0,No Service"});
    QueryServiceType();
    EXPECT_FALSE(g_Cp_NoServiceTimer->IsRunning());
    EXPECT_THAT(world.shell, IsEmpty());
    EXPECT_THAT(LogLinesWith("bad service"), IsEmpty());
}

TEST_F(SierraService, LogsBothQueriesAlike) {
    world.answers["AT*CNTI=0"] = "ERROR\r\n";
    world.answers["AT!GETRAT?"] = "!GETRAT: UMTS\r\n";
    const Lines wanted = {"DEBUG: token count is : 2", "DEBUG: checking line : !GETRAT: UMTS\r",
                          "DEBUG: line looks like '!GETRAT:', cleaning white space"};
    const Lines log = LogAtLevel(2, QueryServiceType);
    const auto tail = log.end() - 4;  // then the change
    EXPECT_EQ(wanted, Lines(tail, tail + 3));
}

TEST_F(SierraService, IsNotAskedOfGenericModemsAndTheMc75i) {
    EXPECT_THAT(CardsAsked(QueryServiceType),
                ElementsAre(kCardSierra881, kCardType3, kCardSierraUsb305, kCardNovatelE362,
                            kCardNovatelE371));
    stats.service_type = "kept";
    g_i_CardType = kCardMc75i;
    QueryServiceType();
    EXPECT_EQ("kept", stats.service_type);
}
