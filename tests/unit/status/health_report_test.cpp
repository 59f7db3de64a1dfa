#include "status/health_report.h"

#include <gmock/gmock.h>

#include "status_test.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using S = GlobalStats;

struct Field {
    const char* name;
    StatsText text;
};

// What the report empties first, and what it leaves because other queries fill it, too.
const Field kReset[] = {
    {"poweron_time", &S::poweron_time},
    {"bootup_time", &S::bootup_time},
    {"system_mode", &S::system_mode},
    {"temperature", &S::temperature},
    {"mode", &S::mode},
    {"ps_state", &S::ps_state},
    {"wcdma_band", &S::wcdma_band},
    {"wcdma_channel", &S::wcdma_channel},
    {"gsm_band", &S::gsm_band},
    {"gsm_channel", &S::gsm_channel},
    {"gmm_ps_state", &S::gmm_ps_state},
    {"mm_cs_state", &S::mm_cs_state},
    {"wcdma_l1_state", &S::wcdma_l1_state},
    {"rrc_state", &S::rrc_state},
    {"rx_level", &S::rx_level},
    {"rx_level_c0", &S::rx_level_c0},
    {"rx_level_c1", &S::rx_level_c1},
    {"gprs_state", &S::gprs_state},
    {"lte_band", &S::lte_band},
    {"lte_bandwidth", &S::lte_bandwidth},
    {"lte_rx_channel", &S::lte_rx_channel},
    {"lte_tx_channel", &S::lte_tx_channel},
    {"lte_tracking_area_code", &S::lte_tracking_area_code},
};
const Field kKept[] = {
    {"rssi", &S::rssi},
    {"lte_rsrp", &S::lte_rsrp},
    {"lte_rsrq", &S::lte_rsrq},
    {"serving_cell", &S::serving_cell},
    {"location_area_code", &S::location_area_code},
};

constexpr char kToLte[] = "System mode: LTE\tPS state: Attached";

}  // namespace

class HealthReport : public StatusTest {
  protected:
    HealthReport() { g_i_CardType = kCardSierra881; }

    void Ask(const Lines& lines) {
        world.answers["at!gstatus?"] = Answered(lines);
        QueryHealthReport();
    }

    void FillAll(const std::string& text) {
        for (const Field& field : kReset) stats.*field.text = text;
        for (const Field& field : kKept) stats.*field.text = text;
    }
    void ExpectOnlyTheResetFieldsEmpty() const {
        for (const Field& field : kReset) EXPECT_EQ("", stats.*field.text) << field.name;
        for (const Field& field : kKept) EXPECT_EQ("old", stats.*field.text) << field.name;
    }
};

// Guards oddity figures-outlive-the-page.
TEST_F(HealthReport, EmptiesItsFieldsAndLeavesThoseOfOthers) {
    FillAll("old");
    Ask({"ERROR"});
    ExpectOnlyTheResetFieldsEmpty();
    EXPECT_THAT(world.Commands(), ElementsAre("at!gstatus?"));

    FillAll("old");
    world.answers.clear();
    QueryHealthReport();
    ExpectOnlyTheResetFieldsEmpty();
}

TEST_F(HealthReport, DoesNothingOnOtherCards) {
    for (const int card : {kCardGeneric, kCardType3, kCardSierraUsb305, kCardMc75i}) {
        g_i_CardType = card;
        FillAll("old");
        QueryHealthReport();
        for (const Field& field : kReset) EXPECT_EQ("old", stats.*field.text) << field.name;
    }
    EXPECT_THAT(world.Commands(), IsEmpty());
}

TEST_F(HealthReport, ReadsPairsOnAnySystem) {
    const struct {
        const char* line;
        StatsText first;
        const char* first_value;
        StatsText second;
        const char* second_value;
    } rows[] = {
        {"Current Time:  1234\t\tTemperature: 38", &S::poweron_time, "1234", &S::temperature, "38"},
        {"Bootup Time:   2 3\t\tMode:        ON LINE", &S::bootup_time, "23", &S::mode, "ONLINE"},
        {"System mode: WCDMA \tPS state: Not attached", &S::system_mode, "WCDMA", &S::ps_state,
         "Notattached"},
        {"WCDMA L1 State: L1M DCH\tRRC State: DISC ONN", &S::wcdma_l1_state, "L1MDCH",
         &S::rrc_state, "DISCONN"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        Ask({row.line});
        EXPECT_EQ(row.first_value, stats.*row.first);
        EXPECT_EQ(row.second_value, stats.*row.second);
    }
}

TEST_F(HealthReport, ReadsThePairsOfAnLteSystem) {
    Ask({kToLte, "LTE band:     B 4\tLTE bw:      10 MHz",
         "LTE Rx chan:  20 50\tLTE Tx chan: 20050",
         "RSRP (dBm):   -9 9\tTAC:         1A 2B (6699) ", "RSRQ (dB):    -11\tCell ID: 01 02 ",
         "RSSI (dBm):   -7 0"});
    EXPECT_EQ("LTE", stats.system_mode);
    EXPECT_EQ("Attached", stats.ps_state);
    EXPECT_EQ("B4", stats.lte_band);
    EXPECT_EQ("10MHz", stats.lte_bandwidth);
    EXPECT_EQ("2050", stats.lte_rx_channel);
    EXPECT_EQ("20050", stats.lte_tx_channel);
    EXPECT_EQ("-99", stats.lte_rsrp);
    EXPECT_EQ("1A 2B (6699)", stats.lte_tracking_area_code);  // trimmed, not cleaned
    EXPECT_EQ("-11", stats.lte_rsrq);
    EXPECT_EQ("01 02", stats.serving_cell);
    EXPECT_EQ("-70", stats.rssi);
}

TEST_F(HealthReport, ReadsTheWcdmaPairsOnAnyOtherSystem) {
    for (const char* system : {"System mode: WCDMA\tPS state: x", "System mode: LTE+\tPS state: x",
                               "System mode: lte\tPS state: x", ""}) {
        SCOPED_TRACE(system);
        Ask({system, "WCDMA band:   19 00\tGSM band: 8 50",
             "WCDMA channel: 6 12\tGSM channel: 1 28", "LTE band:     B4\tLTE bw: 10 MHz",
             "RSSI (dBm): -70"});
        EXPECT_EQ("1900", stats.wcdma_band);
        EXPECT_EQ("850", stats.gsm_band);
        EXPECT_EQ("612", stats.wcdma_channel);
        EXPECT_EQ("128", stats.gsm_channel);
        EXPECT_EQ("", stats.lte_band);
        EXPECT_EQ("Unknown", stats.rssi);
    }
}

TEST_F(HealthReport, ReadsNoWcdmaLabelsOnLte) {
    Ask({kToLte, "WCDMA band: 1900\tGSM band: 850", "WCDMA channel: 612\tGSM channel: 128"});
    EXPECT_EQ("", stats.wcdma_band);
    EXPECT_EQ("", stats.wcdma_channel);
    EXPECT_EQ("", stats.gsm_channel);
}

// The system counts as it stands at each line, from the line itself on.
// Guards oddity page-is-read-downwards.
TEST_F(HealthReport, SwitchesToLteInTheMiddleOfThePage) {
    Ask({"WCDMA band: 1900", "LTE band: early\tLTE bw: 1",
         "System mode: LTE\tPS state: x LTE band: B4\tLTE bw: 5", "WCDMA channel: 612"});
    EXPECT_EQ("1900", stats.wcdma_band);
    EXPECT_EQ("5", stats.lte_bandwidth);
    EXPECT_EQ("", stats.wcdma_channel);
}

TEST_F(HealthReport, ForgetsTheSystemOfTheLastPage) {
    Ask({kToLte});
    Ask({"RSSI (dBm): -70", "WCDMA band: 1900"});
    EXPECT_EQ("Unknown", stats.rssi);
    EXPECT_EQ("1900", stats.wcdma_band);
}

TEST_F(HealthReport, ReadsASingleWcdmaLabelWhileTheFieldIsEmpty) {
    Ask({"WCDMA band: WCDMA 800", "WCDMA channel: 4 385"});
    EXPECT_EQ("WCDMA800", stats.wcdma_band);
    EXPECT_EQ("4385", stats.wcdma_channel);
    EXPECT_EQ("", stats.gsm_band);

    Ask({"WCDMA band: first", "WCDMA band: second"});
    EXPECT_EQ("first", stats.wcdma_band);
    Ask({"WCDMA band: first", "WCDMA band: second\tGSM band: x"});
    EXPECT_EQ("second", stats.wcdma_band);
    Ask({"WCDMA band:\t\tGSM band: x"});
    EXPECT_EQ("GSMband:x", stats.wcdma_band);
}

// White space goes out of the first value only; the second keeps its carriage return.
// Guards oddity state-keeps-line-end.
TEST_F(HealthReport, JoinsTheMobilityStatesAtTheTab) {
    world.answers["at!gstatus?"] = "GMM (PS) state:REGISTERED\tNORMAL SERVICE";
    QueryHealthReport();
    EXPECT_EQ("REGISTERED:NORMAL SERVICE", stats.gmm_ps_state);
    Ask({"GMM (PS) state: DE REG\t\t NO IMSI ", "MM (CS) state:IDLE \tNORMAL SERVICE",
         "MM (CS) state: no tab"});
    EXPECT_EQ("DEREG:\t NO IMSI \r", stats.gmm_ps_state);
    EXPECT_EQ("IDLE:NORMAL SERVICE\r", stats.mm_cs_state);
}

TEST_F(HealthReport, ReadsCellAndLevelOfOrdinaryModels) {
    Ask({"Serving Cell: 12 34", "RX level (dBm): -7 1", "RX level C0: -80\tLAC: 1A2B",
         "RX level C1: -81\tCell ID: 0A1B"});
    EXPECT_EQ("1234", stats.serving_cell);
    EXPECT_EQ("-71", stats.rx_level);
    EXPECT_EQ("", stats.rx_level_c0);
    EXPECT_EQ("", stats.rx_level_c1);
    EXPECT_EQ("Unknown", stats.location_area_code);
}

TEST_F(HealthReport, ReadsTwoLevelsOfTheMc7700) {
    g_i_FirstHealthReport = 0;
    stats.serving_cell = "old";
    Ask({"Serving Cell: 1234", "RX level (dBm): -71"});
    EXPECT_EQ("old", stats.serving_cell);
    EXPECT_EQ("", stats.rx_level);
    Ask({"RX level C0: - 80\tLAC: 1A 2B ", "RX level C1: -80\tCell ID: 0A1B"});
    EXPECT_EQ("-80", stats.rx_level_c0);
    EXPECT_EQ("1A 2B", stats.location_area_code);
    EXPECT_EQ("-80", stats.rx_level_c1);
    EXPECT_EQ("0A1B", stats.serving_cell);
}

TEST_F(HealthReport, TrimsTheGprsState) {
    Ask({"GPRS State:  READY  NOW "});
    EXPECT_EQ("READY  NOW", stats.gprs_state);
}

// The length of a pair's first value counts from the start of the line: with the first label
// further in, the value runs on into the second label. Readers know it so.
TEST_F(HealthReport, LetsAnIndentedPairRunOn) {
    Ask({"  Current Time: 1234 Temperature: 38"});
    EXPECT_EQ("1234Te", stats.poweron_time);
    EXPECT_EQ("38", stats.temperature);
}

TEST_F(HealthReport, NeedsBothLabelsOfAPair) {
    Ask({"Current Time: 1234", "Temperature: 38", "LTE band: B4"});
    EXPECT_EQ("", stats.poweron_time);
    EXPECT_EQ("", stats.temperature);
}

TEST_F(HealthReport, LogsNothingBelowLevelTwo) {
    world.answers["at!gstatus?"] = Answered({kToLte});
    EXPECT_THAT(LogAtLevel(0, QueryHealthReport), IsEmpty());
    EXPECT_EQ(kAbove1, LevelsThatLog("DEBUG: Needle1 (pos 0-11), length=12", QueryHealthReport));
}

class NovatelHealth : public StatusTest {
  protected:
    void Ask(const Lines& lines) {
        world.answers["AT+TEMP"] = Answered(lines);
        QueryHealthReport();
    }
};

TEST_F(NovatelHealth, IsTheTemperatureAlone) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        g_i_CardType = card;
        for (const Field& field : kReset) stats.*field.text = "old";
        for (const Field& field : kKept) stats.*field.text = "old";
        Ask({"+TEMP: 41", "System mode: LTE\tPS state: x"});
        EXPECT_EQ("41", stats.temperature);
        stats.temperature = "";
        for (const Field& field : kReset) EXPECT_EQ("", stats.*field.text) << field.name;
        for (const Field& field : kKept) EXPECT_EQ("old", stats.*field.text) << field.name;
    }
    EXPECT_THAT(world.Commands(), ElementsAre("AT+TEMP", "AT+TEMP"));
}

TEST_F(NovatelHealth, TakesTheLastTemperatureTrimmed) {
    g_i_CardType = kCardNovatelE362;
    Ask({"+TEMP: 40", "x +TEMP:\t4 1 "});
    EXPECT_EQ("4 1", stats.temperature);
    Ask({"ERROR"});
    EXPECT_EQ("", stats.temperature);
}

// The mode that the card's own service query has set is gone before it is published.
TEST_F(NovatelHealth, EmptiesTheSystemModeOfTheServiceQuery) {
    g_i_CardType = kCardNovatelE371;
    stats.system_mode = "LTE Only";
    Ask({"+TEMP: 40"});
    EXPECT_EQ("", stats.system_mode);
}

TEST_F(NovatelHealth, LogsEachLine) {
    g_i_CardType = kCardNovatelE362;
    world.answers["AT+TEMP"] = "+TEMP: 41\r\nOK\r\n";
    const Lines log = LogAtLevel(2, QueryHealthReport);
    EXPECT_THAT(Lines(log.end() - 4, log.end()),
                ElementsAre("DEBUG: checking line : +TEMP: 41\r", "DEBUG: line looks like +TEMP:",
                            "DEBUG: checking line : OK\r", "DEBUG: checking line : "));
}
