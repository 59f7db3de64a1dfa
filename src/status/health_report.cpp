// The status page of the 881 as a table of labels, and the temperature of the Novatel cards.

#include "status/health_report.h"

#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "modem/response_fields.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "support/text.h"

namespace {

using S = GlobalStats;

// Emptied before either command. rssi, lte_rsrp, lte_rsrq, serving_cell and location_area_code are
// deliberately not among them: other queries fill them, too, and their last value stays published.
// system_mode is among them, so what $NWRAT said of it on the E371 is gone before it is published.
// Oddity figures-outlive-the-page: RSSI, RSRP, RSRQ and cell may be older than the rest.
constexpr StatsText kResetFields[] = {
    &S::poweron_time,
    &S::bootup_time,
    &S::system_mode,
    &S::temperature,
    &S::mode,
    &S::ps_state,
    &S::wcdma_band,
    &S::wcdma_channel,
    &S::gsm_band,
    &S::gsm_channel,
    &S::gmm_ps_state,
    &S::mm_cs_state,
    &S::rrc_state,
    &S::rx_level,
    &S::wcdma_l1_state,
    &S::rx_level_c0,
    &S::rx_level_c1,
    &S::gprs_state,
    &S::lte_band,
    &S::lte_bandwidth,
    &S::lte_rx_channel,
    &S::lte_tx_channel,
    &S::lte_tracking_area_code,
};

enum class When { kAlways, kOnLte, kNotOnLte, kOtherModels, kMc7700 };

enum class Shape {
    kPair,         // two labels, two values
    kPairOrFirst,  // the same; when the first field is still empty, its label alone will do
    kSingle,       // one label, the rest of the line
    kJoined,       // label and tab: one field of "first value:second value"
};

using Cleaner = void (*)(std::string&);

struct Item {
    const char* label;
    StatsText field;
    Cleaner clean;
};

// One or two items of a line of the status page.
struct StatusRow {
    When when;
    Shape shape;
    Item first;
    Item second;
};

constexpr Cleaner kClean = CleanWhiteSpace;
constexpr Item kNone = {nullptr, nullptr, nullptr};

// clang-format off
// Each line of the page is tried against every row, in this order.
constexpr StatusRow kStatusRows[] = {
    {When::kAlways, Shape::kPair,
        {"Current Time:", &S::poweron_time, kClean}, {"Temperature:", &S::temperature, kClean}},
    {When::kAlways, Shape::kPair,
        {"Bootup Time:", &S::bootup_time, kClean}, {"Mode:", &S::mode, kClean}},
    {When::kAlways, Shape::kPair,
        {"System mode:", &S::system_mode, kClean}, {"PS state:", &S::ps_state, kClean}},
    {When::kOnLte, Shape::kPair,
        {"LTE band:", &S::lte_band, kClean}, {"LTE bw:", &S::lte_bandwidth, kClean}},
    {When::kOnLte, Shape::kPair,
        {"LTE Rx chan:", &S::lte_rx_channel, kClean}, {"LTE Tx chan:", &S::lte_tx_channel, kClean}},
    {When::kOnLte, Shape::kSingle,
        {"RSSI (dBm):", &S::rssi, kClean}, kNone},
    {When::kOnLte, Shape::kPair,
        {"RSRP (dBm):", &S::lte_rsrp, kClean}, {"TAC:", &S::lte_tracking_area_code, Trim}},
    {When::kOnLte, Shape::kPair,
        {"RSRQ (dB):", &S::lte_rsrq, kClean}, {"Cell ID:", &S::serving_cell, Trim}},
    {When::kNotOnLte, Shape::kPairOrFirst,
        {"WCDMA band:", &S::wcdma_band, kClean}, {"GSM band:", &S::gsm_band, kClean}},
    {When::kNotOnLte, Shape::kPairOrFirst,
        {"WCDMA channel:", &S::wcdma_channel, kClean}, {"GSM channel:", &S::gsm_channel, kClean}},
    {When::kAlways, Shape::kJoined,
        {"GMM (PS) state:", &S::gmm_ps_state, kClean}, kNone},
    {When::kAlways, Shape::kJoined,
        {"MM (CS) state:", &S::mm_cs_state, kClean}, kNone},
    {When::kAlways, Shape::kPair,
        {"WCDMA L1 State:", &S::wcdma_l1_state, kClean}, {"RRC State:", &S::rrc_state, kClean}},
    {When::kOtherModels, Shape::kSingle,
        {"Serving Cell:", &S::serving_cell, kClean}, kNone},
    {When::kOtherModels, Shape::kSingle,
        {"RX level (dBm):", &S::rx_level, kClean}, kNone},
    {When::kMc7700, Shape::kPair,
        {"RX level C0:", &S::rx_level_c0, kClean}, {"LAC:", &S::location_area_code, Trim}},
    {When::kMc7700, Shape::kPair,
        {"RX level C1:", &S::rx_level_c1, kClean}, {"Cell ID:", &S::serving_cell, Trim}},
    {When::kAlways, Shape::kSingle,
        {"GPRS State:", &S::gprs_state, Trim}, kNone},
};
// clang-format on

// The system mode counts as it stands at this moment, set by an earlier row of this line or by an
// earlier line of the page: deliberate, the lines above "System mode:" are read as WCDMA ones.
// Oddity page-is-read-downwards: lines above "System mode:" count as WCDMA ones.
bool Applies(When when) {
    switch (when) {
        case When::kAlways:
            return true;
        case When::kOnLte:
            return g_S_Globalstats.system_mode == "LTE";
        case When::kNotOnLte:
            return g_S_Globalstats.system_mode != "LTE";
        case When::kOtherModels:
            return g_i_FirstHealthReport != 0;
        case When::kMc7700:
            return g_i_FirstHealthReport == 0;
    }
    return false;
}

void Store(const Item& item, std::string value) {
    item.clean(value);
    g_S_Globalstats.*item.field = value;
}

void TakePair(const std::string& line, const StatusRow& row) {
    std::string first;
    std::string second;
    if (ExtractAroundNeedles(line, row.first.label, row.second.label, first, second) == 0) return;
    Store(row.first, first);
    Store(row.second, second);
}

void TakeSingle(const std::string& line, const Item& item) {
    std::string value;
    if (ExtractAfterNeedle(line, item.label, value) == 1) Store(item, value);
}

// The second value is kept exactly as it stands, line end included: deliberate.
// Oddity state-keeps-line-end: the GMM and MM states end in a carriage return.
void TakeJoined(const std::string& line, const Item& item) {
    std::string first;
    std::string second;
    if (ExtractAroundNeedles(line, item.label, "\t", first, second) == 0) return;
    item.clean(first);
    g_S_Globalstats.*item.field = first + ":" + second;
}

void TakeRow(const std::string& line, const StatusRow& row) {
    switch (row.shape) {
        case Shape::kPair:
            return TakePair(line, row);
        case Shape::kPairOrFirst:
            TakePair(line, row);
            if ((g_S_Globalstats.*row.first.field).empty()) TakeSingle(line, row.first);
            return;
        case Shape::kSingle:
            return TakeSingle(line, row.first);
        case Shape::kJoined:
            return TakeJoined(line, row.first);
    }
}

void Reset() {
    for (const StatsText field : kResetFields) (g_S_Globalstats.*field).clear();
}

void QueryTemperature() {
    constexpr char kLabel[] = "+TEMP:";
    Reset();
    for (const std::string& line : LinesOf(SendAtCommand("AT+TEMP", 0))) {
        LogChecking(line);
        if (!Contains(line, kLabel)) continue;
        LogHit(Hit::kPlain, kLabel);
        Store({kLabel, &S::temperature, Trim}, Behind(line, kLabel));
    }
}

void QueryStatusPage() {
    Reset();
    for (const std::string& line : LinesOf(SendAtCommand("at!gstatus?", 0))) {
        for (const StatusRow& row : kStatusRows) {
            if (Applies(row.when)) TakeRow(line, row);
        }
    }
}

}  // namespace

void QueryHealthReport() {
    if (IsLteCard()) {
        QueryTemperature();
    } else if (g_i_CardType == kCardSierra881) {
        QueryStatusPage();
    }
}
