#include "status/signal_quality.h"

#include <gmock/gmock.h>

#include <cstring>

#include "status_test.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string Converted(const char* indicator_line) {
    char line[64] = "";
    std::strncpy(line, indicator_line, sizeof(line) - 1);
    ConvertIndicatorLine(line);
    return line;
}

}  // namespace

class IndicatorLine : public StatusTest {};

TEST_F(IndicatorLine, MapsTheSecondNumber) {
    const std::pair<const char*, const char*> rows[] = {
        {"+CIND: 5,0,1,0,0,0,0,0", "+CSQ: 99, 99"},  // 0 counts as unknown, not as weakest
        {"+CIND: 5,1,1,0,0,0,0,0", "+CSQ: 5, 99"},  {"+CIND: 5,2,1,0,0,0,0,0", "+CSQ: 14, 99"},
        {"+CIND: 5,3,1,0,0,0,0,0", "+CSQ: 22, 99"}, {"+CIND: 5,4,1,0,0,0,0,0", "+CSQ: 29, 99"},
        {"+CIND: 5,5,1,0,0,0,0,0", "+CSQ: 30, 99"}, {"+CIND: 5,6,1,0,0,0,0,0", "+CSQ: 99, 99"},
        {"+CIND: 5,-1,1", "+CSQ: 99, 99"},          {"+CIND: 0,4", "+CSQ: 29, 99"},
        {"+CIND:  5, 3", "+CSQ: 22, 99"},
    };
    for (const auto& [indicators, signal] : rows) {
        SCOPED_TRACE(indicators);
        EXPECT_EQ(signal, Converted(indicators));
    }
}

TEST_F(IndicatorLine, WithFewerThanTwoNumbersIsUnknown) {
    for (const char* line : {"+CIND:", "+CIND: 3", "+CIND: x,3", "+CIND:5,3,1", "+CIND: 5;3"}) {
        SCOPED_TRACE(line);
        EXPECT_EQ("+CSQ: 99, 99", Converted(line));
    }
}

TEST_F(IndicatorLine, LogsBothValuesAtAnyNonZeroLevel) {
    EXPECT_EQ(kAtNonZero, LevelsThatLog("got CIND signal value 3, setting CSQ value to 22",
                                        [] { Converted("+CIND: 5,3"); }));
}

TEST_F(IndicatorLine, GoesThroughTheLightbarLikeASignalLine) {
    char line[64] = "+CIND: 5,3,1,0,0,0,0,0";
    ConvertIndicatorLine(line);
    UpdateLightbar(line);
    EXPECT_EQ("22", stats.csq);
    EXPECT_EQ("+CSQ: 22, 99\n", Published("lightbar"));
}

class Lightbar : public StatusTest {};

TEST_F(Lightbar, PublishesTheLineAsItCame) {
    UpdateLightbar("+CSQ: 17,99");
    EXPECT_EQ("17", stats.csq);
    EXPECT_EQ("+CSQ: 17,99\n", Published("lightbar"));
}

TEST_F(Lightbar, TakesTheNumberBeforeTheFirstComma) {
    const std::pair<const char*, const char*> rows[] = {
        {"+CSQ: 17,99", "17"},
        {"+CSQ:5,99", "5"},
        {"+CSQ: 99,99", "99"},
        {"+CSQ: 1 7 ,9", "17"},
        {"+CSQ:\t12\t, 99, 3", "12"},
        {"+CSQ: 12", "12"},
        {"+CSQ: ,99", ""},
        {"+CSQ:", ""},
        {"noise +CSQ: 9,0", "9"},
        {"+CSQ: abc,1", "abc"},
    };
    for (const auto& [line, csq] : rows) {
        SCOPED_TRACE(line);
        UpdateLightbar(line);
        EXPECT_EQ(csq, stats.csq);
    }
}

// The previous value is taken over after the current one was emptied.
// Guards oddity unknown-signal-is-99.
TEST_F(Lightbar, LeavesThePreviousSignalEmpty) {
    UpdateLightbar("+CSQ: 17,99");
    EXPECT_EQ("", stats.previous_csq);
    UpdateLightbar("+CSQ: 18,99");
    EXPECT_EQ("", stats.previous_csq);
    EXPECT_EQ("18", stats.csq);
}

TEST_F(Lightbar, ReadsALineOfTwoBareNumbers) {
    stats.previous_csq = "kept";
    const std::pair<const char*, const char*> rows[] = {
        {"21, 99", "21"}, {"  7", "7"},    {"-3,1", "-3"}, {"+8", "8"},
        {"007", "7"},     {"x21, 99", ""}, {"", ""},
    };
    for (const auto& [line, csq] : rows) {
        SCOPED_TRACE(line);
        UpdateLightbar(line);
        EXPECT_EQ(csq, stats.csq);
        EXPECT_EQ("kept", stats.previous_csq);
    }
}

TEST_F(Lightbar, PublishesTheEcioBesideTheLine) {
    stats.ecio = "-5.5";
    UpdateLightbar("+CSQ: 17,99");
    EXPECT_EQ("-5.5\n", Published("lightbar_ecio_in"));
    stats.ecio = "";
    UpdateLightbar("+CSQ: 17,99");
    EXPECT_EQ("\n", Published("lightbar_ecio_in"));
}

TEST_F(Lightbar, NeverShowsTheModemsTextToAShell) {
    const std::string line = "+CSQ: 1$(reboot)`x`\"; rm -rf /,99";
    UpdateLightbar(line.c_str());
    EXPECT_THAT(world.shell, IsEmpty());
    EXPECT_EQ(line + "\n", Published("lightbar"));
}

TEST_F(Lightbar, PublishesALongLineWhole) {
    const std::string line = "+CSQ: 17," + std::string(100000, '9');
    UpdateLightbar(line.c_str());
    EXPECT_EQ(line + "\n", Published("lightbar"));
}

// The display keeps the file open.
TEST_F(Lightbar, IsWrittenInPlace) {
    UpdateLightbar("+CSQ: 17,99");
    EXPECT_THAT(FileSteps(), ElementsAre("write lightbar", "write lightbar_ecio_in"));
}

TEST_F(Lightbar, LogsTheLineAboveLevelOne) {
    EXPECT_EQ(kAbove1, LevelsThatLog("UpdateLightbar: +CSQ: 17,99 into /var/log/lightbar",
                                     [] { UpdateLightbar("+CSQ: 17,99"); }));
}

class NovatelSignal : public StatusTest {
  protected:
    NovatelSignal() { g_i_CardType = kCardNovatelE362; }

    void Ask(const Lines& lines) {
        world.answers["AT$NWRSSI=15"] = Answered(lines);
        QueryNovatelSignal();
    }
};

TEST_F(NovatelSignal, FillsTheFourFieldsOnBothCards) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        stats = GlobalStats();
        Ask({"RSSI=70", "ECIO=-6.5", "RSRP=-99", "RSRQ=-11"});
        EXPECT_EQ("-70", stats.rssi);
        EXPECT_EQ("-6.5", stats.ecio);
        EXPECT_EQ("-99", stats.lte_rsrp);
        EXPECT_EQ("-11", stats.lte_rsrq);
    }
}

TEST_F(NovatelSignal, GivesTheRssiItsSign) {
    const std::pair<const char*, const char*> rows[] = {
        {"RSSI=70", "-70"}, {"RSSI=0", "0"},     {"RSSI=-75", "-75"},  {"RSSI=7x", ""},
        {"RSSI=", "-"},     {"RSSI=-", "-"},     {"RSSI= 7 0", "-70"}, {"RSSI=+70", ""},
        {"RSSI=00", "-00"}, {"RSSI=70 dBm", ""}, {"x RSSI=71", "-71"},
    };
    for (const auto& [line, rssi] : rows) {
        SCOPED_TRACE(line);
        Ask({line});
        EXPECT_EQ(rssi, stats.rssi);
    }
}

TEST_F(NovatelSignal, LetsTheLastLineWin) {
    Ask({"RSRP=-99", "RSRP=-101", "RSSI=70", "RSSI=none"});
    EXPECT_EQ("-101", stats.lte_rsrp);
    EXPECT_EQ("", stats.rssi);
}

TEST_F(NovatelSignal, TestsAllLabelsOnOneLine) {
    Ask({"RSRP= -99 , RSRQ= -11"});
    EXPECT_EQ("-99,RSRQ=-11", stats.lte_rsrp);
    EXPECT_EQ("-11", stats.lte_rsrq);
}

TEST_F(NovatelSignal, EmptiesTheFieldsWhenTheModemDoesNotTell) {
    Ask({"RSSI=70", "ECIO=-6", "RSRP=-99", "RSRQ=-11"});
    world.answers["AT$NWRSSI=15"] = "\r\nERROR\r\n";
    QueryNovatelSignal();
    EXPECT_EQ("", stats.rssi);
    EXPECT_EQ("", stats.ecio);
    EXPECT_EQ("", stats.lte_rsrp);
    EXPECT_EQ("", stats.lte_rsrq);
}

TEST_F(NovatelSignal, OnlyClearsTheRssiOfOtherCards) {
    for (const int card :
         {kCardGeneric, kCardSierra881, kCardType3, kCardSierraUsb305, kCardMc75i}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        stats.rssi = "-70";
        stats.ecio = stats.lte_rsrp = stats.lte_rsrq = "kept";
        QueryNovatelSignal();
        EXPECT_EQ("", stats.rssi);
        EXPECT_EQ("kept", stats.ecio);
        EXPECT_EQ("kept", stats.lte_rsrp);
        EXPECT_EQ("kept", stats.lte_rsrq);
    }
    EXPECT_THAT(world.Commands(), IsEmpty());
}

// Cleaning is for the values; the line is logged as it came, and the extractors stay silent.
TEST_F(NovatelSignal, LogsEachLineAndLabel) {
    world.answers["AT$NWRSSI=15"] = "RSSI= 70\r\nOK\r\n";
    const Lines log = LogAtLevel(2, QueryNovatelSignal);
    EXPECT_THAT(Lines(log.end() - 5, log.end()),
                ElementsAre("DEBUG: token count is : 3", "DEBUG: checking line : RSSI= 70\r",
                            "DEBUG: line looks like RSSI=", "DEBUG: checking line : OK\r",
                            "DEBUG: checking line : "));
}

class SierraEcio : public StatusTest {
  protected:
    SierraEcio() { g_i_CardType = kCardSierra881; }

    void Ask(const Lines& lines) {
        world.answers["at+ecio?"] = Answered(lines);
        QuerySierraEcio();
    }
};

TEST_F(SierraEcio, TakesTheNumberBeforeTheUnit) {
    const std::pair<const char*, const char*> rows[] = {
        {"Tot Ec/Io: -5.5 dB", "-5.5"},
        {"Tot Ec/Io: -5.5", "-5.5"},
        {"Tot Ec/Io:\t- 7.0dBm", "-7.0"},
        {"Tot Ec/Io:", ""},
        {"Tot Ec/Io: dB -3", ""},
        {"1: Tot Ec/Io: -9 dB", "-9"},
        {"tot ec/io: -5", ""},
    };
    for (const auto& [line, ecio] : rows) {
        SCOPED_TRACE(line);
        Ask({line});
        EXPECT_EQ(ecio, stats.ecio);
    }
}

TEST_F(SierraEcio, StopsAtTheFirstLine) {
    Ask({"Tot Ec/Io: -5 dB", "Tot Ec/Io: -6 dB"});
    EXPECT_EQ("-5", stats.ecio);
}

TEST_F(SierraEcio, IsEmptyWhenTheModemDoesNotTell) {
    stats.ecio = "-5";
    QuerySierraEcio();
    EXPECT_EQ("", stats.ecio);
    EXPECT_THAT(world.Commands(), ElementsAre("at+ecio?"));
}

TEST_F(SierraEcio, IsNotAskedOfOtherCards) {
    EXPECT_THAT(CardsAsked(QuerySierraEcio), ElementsAre(kCardSierra881));
    stats.ecio = "kept";
    g_i_CardType = kCardNovatelE362;
    QuerySierraEcio();
    EXPECT_EQ("kept", stats.ecio);
}

TEST_F(SierraEcio, LogsTheLabelOfTheHit) {
    world.answers["at+ecio?"] = "Tot Ec/Io: -5 dB\r\nTot Ec/Io: -6 dB\r\n";
    const Lines log = LogAtLevel(2, QuerySierraEcio);
    EXPECT_THAT(
        Lines(log.end() - 3, log.end()),
        ElementsAre("DEBUG: token count is : 3", "DEBUG: checking line : Tot Ec/Io: -5 dB\r",
                    "DEBUG: line looks like 'Tot Ec/Io:', cleaning white space"));
}
