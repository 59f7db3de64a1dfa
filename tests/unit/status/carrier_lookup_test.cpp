#include "status/carrier_lookup.h"

#include <gmock/gmock.h>

#include "status_test.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class CarrierLookup : public StatusTest {
  protected:
    CarrierLookup() { g_i_CardType = kCardSierra881; }

    void Look(const std::string& plmn_line, const Lines& operators) {
        world.answers["at!GSMINFO?"] = Answered({plmn_line});
        world.answers["AT+COPN"] = Answered(operators);
        world.heard.clear();
        GetGsmCarrierFromOperatorNameList();
    }
};

TEST_F(CarrierLookup, NamesTheNetworkInUse) {
    Look("PLMN: 310 410", {R"(+COPN: "310260","Other Net")", R"(+COPN: "310410","Example Net")"});
    EXPECT_EQ("310410", stats.carrier_plmn);
    EXPECT_EQ("Example Net", stats.carrier);
    EXPECT_THAT(world.log, ElementsAre("Carrier name set to \"Example Net\""));
    EXPECT_THAT(world.Commands(), ElementsAre("at!GSMINFO?", "AT+COPN"));
}

TEST_F(CarrierLookup, WaitsTwoSecondsForEachAnswer) {
    Look("PLMN: 310410", {});
    EXPECT_EQ(2 * 2070000 + 2 * 50000, world.slept_us);
}

TEST_F(CarrierLookup, DoesNotAskForTheListAgain) {
    Look("PLMN: 310410", {R"(+COPN: "310410","Example Net")"});
    Look("PLMN: 310410", {R"(+COPN: "310410","New Name")"});
    EXPECT_THAT(world.Commands(), ElementsAre("at!GSMINFO?"));
    EXPECT_EQ("Example Net", stats.carrier);
}

// The kept number is searched for inside the new one, so a longer number with the same start
// counts as the same network.
// Guards oddity carrier-by-substring.
TEST_F(CarrierLookup, TakesALongerNumberForTheSameNetwork) {
    stats.carrier_plmn = "31041";
    stats.carrier = "Example Net";
    Look("PLMN: 310410", {R"(+COPN: "310410","Other Net")"});
    EXPECT_THAT(world.Commands(), ElementsAre("at!GSMINFO?"));
    EXPECT_EQ("31041", stats.carrier_plmn);
    stats.carrier_plmn = "310410";
    Look("PLMN: 31041", {R"(+COPN: "31041","Short Net")"});
    EXPECT_EQ("Short Net", stats.carrier);
    EXPECT_EQ("31041", stats.carrier_plmn);
}

TEST_F(CarrierLookup, AsksForTheListWhileTheNameIsUnknown) {
    for (const char* unknown : {"", "Unknown"}) {
        for (const char* kept_number : {"", "310410", "Unknown"}) {
            SCOPED_TRACE(std::string(unknown) + "/" + kept_number);
            stats.carrier = unknown;
            stats.carrier_plmn = kept_number;
            Look("PLMN: 310410", {R"(+COPN: "310410","Example Net")"});
            EXPECT_THAT(world.Commands(), Contains("AT+COPN"));
            EXPECT_EQ("Example Net", stats.carrier);
        }
    }
}

TEST_F(CarrierLookup, TakesTheFirstLineThatHoldsTheNumberAnywhere) {
    Look("PLMN: 31041", {R"(+COPN: "310410","First Net")", R"(+COPN: "31041","Second Net")"});
    EXPECT_EQ("First Net", stats.carrier);
    stats.carrier = "Unknown";
    Look("PLMN: 42", {R"(+COPN: "310260","Net 42")", R"(+COPN: "42","Right Net")"});
    EXPECT_EQ("Net 42", stats.carrier);
}

TEST_F(CarrierLookup, TrimsTheNameAndDropsItsQuotes) {
    Look("PLMN: 310410", {R"(+COPN: "310410"," Exam"ple	Net ",9)"});
    EXPECT_EQ("Example\tNet", stats.carrier);
}

TEST_F(CarrierLookup, KeepsBothFieldsWithoutANumber) {
    for (const char* line : {"ERROR", "PLMN 310410", "PLMN:", "PLMN: \t "}) {
        SCOPED_TRACE(line);
        stats.carrier = "Example Net";
        stats.carrier_plmn = "310410";
        Look(line, {R"(+COPN: "310410","Other Net")"});
        EXPECT_EQ("Example Net", stats.carrier);
        EXPECT_EQ("310410", stats.carrier_plmn);
        EXPECT_THAT(world.Commands(), ElementsAre("at!GSMINFO?"));
    }
}

TEST_F(CarrierLookup, TakesTheFirstPlmnLine) {
    world.answers["at!GSMINFO?"] = Answered({"x PLMN: 1 ", "PLMN: 2"});
    GetGsmCarrierFromOperatorNameList();
    EXPECT_EQ("1", stats.carrier_plmn);
}

TEST_F(CarrierLookup, RecordsTheNumberEvenWhenTheListDoesNotKnowIt) {
    stats.carrier = "Old Net";
    stats.carrier_plmn = "310260";
    Look("PLMN: 310410", {R"(+COPN: "310260","Old Net")"});
    EXPECT_EQ("310410", stats.carrier_plmn);
    EXPECT_EQ("Old Net", stats.carrier);
    EXPECT_THAT(world.log, IsEmpty());
}

TEST_F(CarrierLookup, KeepsTheNameWhenTheLineHasNone) {
    stats.carrier = "Old Net";
    Look("PLMN: 310410", {"+COPN 310410"});
    EXPECT_EQ("Old Net", stats.carrier);
}

TEST_F(CarrierLookup, FindsItsLineInAListOfThreeThousand) {
    Lines operators;
    for (int i = 0; i < 3000; ++i) {
        operators.push_back("+COPN: \"" + std::to_string(200000 + i) + "\",\"Net " +
                            std::to_string(i) + "\"");
    }
    Look("PLMN: 202999", operators);
    EXPECT_EQ("Net 2999", stats.carrier);
}

TEST_F(CarrierLookup, IsForTheSierra881Only) {
    EXPECT_THAT(CardsAsked(GetGsmCarrierFromOperatorNameList), ElementsAre(kCardSierra881));
}

TEST_F(CarrierLookup, LogsWhatItFinds) {
    world.answers["at!GSMINFO?"] = "PLMN: 310 410\r\n";
    world.answers["AT+COPN"] = "+COPN: 1,A\r\n+COPN: 310410,Net\r\n";
    const auto look = [this] {
        stats.carrier = "Unknown";
        GetGsmCarrierFromOperatorNameList();
    };
    const std::pair<const char*, Levels> rows[] = {
        {"DEBUG: token count for at!GSMINFO? is : 2", kAbove1},
        {"DEBUG: GetGsmCarrierFromOperatorNameList() Got carrier number : 310410", kAtNonZero},
        {"DEBUG: AT+COPN list is 31 bytes", kAtNonZero},
        {"DEBUG: token count for AT+COPN is : 3", kAbove1},
        {"DEBUG: checking line : +COPN: 1,A\r", kAbove1},
        {"DEBUG: found carrier number 310410", kAtNonZero},
        {"DEBUG:     on line matching +COPN: 310410,Net\r", kAtNonZero},
        {"Carrier name set to \"Net\"", kAtEveryLevel},
        {"DEBUG: checking line : PLMN: 310 410\r", {}},
    };
    for (const auto& [line, levels] : rows) EXPECT_EQ(levels, LevelsThatLog(line, look)) << line;
}

TEST_F(CarrierLookup, LogsTheCacheHitBeforeItLooksAtTheName) {
    world.answers["at!GSMINFO?"] = "PLMN: 310410\r\n";
    stats.carrier_plmn = "310410";
    const char* const message = "DEBUG: l_s_this_carrier_number == g_S_Globalstats.carrier_plmn";
    EXPECT_EQ(kAbove1, LevelsThatLog(message, GetGsmCarrierFromOperatorNameList));
    stats.carrier = "Example Net";
    EXPECT_EQ(kAbove1, LevelsThatLog(message, GetGsmCarrierFromOperatorNameList));
}

TEST_F(CarrierLookup, LogsAMissingNumber) {
    world.answers["at!GSMINFO?"] = "PLMN:\r\n";
    EXPECT_EQ(kAtNonZero,
              LevelsThatLog("DEBUG: GetGsmCarrierFromOperatorNameList(): could not find line match "
                            "for \"PLMN:\"",
                            GetGsmCarrierFromOperatorNameList));
}
