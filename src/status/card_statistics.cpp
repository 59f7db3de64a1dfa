// The published keys, in the order in which readers have always found them.

#include "status/card_statistics.h"

#include <algorithm>
#include <cmath>

#include "state/published.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "status/identity.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"
#include "support/text_file_writer.h"

namespace {

using S = GlobalStats;
namespace key = published::key;

struct PublishedText {
    const char* key;
    StatsText field;
};

// ESN and IMEI carry the same field: deliberate, the web page shows whichever it looks for.
// Oddity esn-is-imei: CELLMODEM_ESN and CELLMODEM_IMEI are one value.
constexpr PublishedText kDeviceKeys[] = {
    {key::kEsn, &S::serial_number},
    {key::kImei, &S::serial_number},
    {key::kSimId, &S::sim_id},
    {key::kMdn, &S::mdn},
    {key::kManufacturer, &S::manufacturer},
    {key::kModel, &S::model},
    {key::kFirmwareVersion, &S::firmware_version},
    {key::kHardwareVersion, &S::hardware_version},
};

constexpr PublishedText kNetworkKeys[] = {
    {key::kCarrier, &S::carrier},
    {key::kCarrierPlmn, &S::carrier_plmn},
    {key::kBand, &S::band},
};

// Ec/Io stands in the file a second time for the LTE cards: deliberate, readers count lines.
// Oddity ecio-twice: of the LTE cards CELLMODEM_CURRENT_ECIO stands twice in the file.
constexpr PublishedText kLteCardKeys[] = {
    {key::kCurrentEcio, &S::ecio},
    {key::kLteRsrp, &S::lte_rsrp},
    {key::kLteRsrq, &S::lte_rsrq},
    {key::kQmiResult, &S::qmi_result},
    {key::kQmiResultNumber, &S::qmi_result_number},
    {key::kQmiState, &S::qmi_state},
    {key::kQmiEndReason, &S::qmi_end_reason},
    {key::kQmiCallTime, &S::qmi_call_time},
    {key::kServiceType, &S::service_type},
    {key::kSystemMode, &S::system_mode},
    {key::kServiceDomain, &S::service_domain},
    {key::kCreg, &S::creg},
    {key::kCregAbr, &S::creg_abr},
    {key::kTemperature, &S::temperature},
};

constexpr PublishedText k881KeysBeforeRoaming[] = {
    {key::kPoweronTime, &S::poweron_time},
    {key::kSystemMode, &S::system_mode},
    {key::kServiceType, &S::service_type},
    {key::kLteBand, &S::lte_band},
    {key::kLteRxChannel, &S::lte_rx_channel},
    {key::kLteTxChannel, &S::lte_tx_channel},
    {key::kLteBandwidth, &S::lte_bandwidth},
    {key::kLteRsrp, &S::lte_rsrp},
    {key::kLteRsrq, &S::lte_rsrq},
    {key::kLteTrackingAreaCode, &S::lte_tracking_area_code},
    {key::kWcdmaBand, &S::wcdma_band},
    {key::kWcdmaChannel, &S::wcdma_channel},
    {key::kGmmPsState, &S::gmm_ps_state},
    {key::kMmCsState, &S::mm_cs_state},
    {key::kWcdmaL1State, &S::wcdma_l1_state},
    {key::kRxLevel, &S::rx_level},
    {key::kRxLevelC0, &S::rx_level_c0},
    {key::kRxLevelC1, &S::rx_level_c1},
    {key::kLocationAreaCode, &S::location_area_code},
    {key::kServingCell, &S::serving_cell},
};

constexpr PublishedText k881KeysBehindRoaming[] = {
    {key::kSimStatus, &S::sim_status},
    {key::kTemperature, &S::temperature},
    {key::kMode, &S::mode},
    {key::kPsState, &S::ps_state},
    {key::kGsmChannel, &S::gsm_channel},
    {key::kRrcState, &S::rrc_state},
    {key::kCreg, &S::creg},
    {key::kCregAbr, &S::creg_abr},
    {key::kGprsState, &S::gprs_state},
};

void AddText(cTextFileWriter& file, const char* key, const std::string& text) {
    file.AddLine(std::string(key) + "=" + text);
}

void AddNumber(cTextFileWriter& file, const char* key, int number) {
    AddText(file, key, Format("%d", number));
}

template <std::size_t N>
void AddKeys(cTextFileWriter& file, const PublishedText (&keys)[N]) {
    for (const PublishedText& row : keys) AddText(file, row.key, g_S_Globalstats.*row.field);
}

struct SignalValues {
    int current_rssi, high_rssi, low_rssi;  // dBm
    int current_csq, high_csq, low_csq;     // 0 to 31, 99 unknown
};

int RssiFromCsq() {
    return ToInt(CsqToRssi(g_S_Globalstats.csq, g_S_Globalstats.previous_csq));
}

// dBm to the nearest CSQ below; 31 at most, 99 for less than 1.
int CsqOfLevel(int level) {
    const int csq = static_cast<int>((113 - std::fabs(static_cast<double>(level))) / 1.22);
    return csq < 1 ? 99 : std::min(csq, 31);
}

void MakeNegative(int& rssi) {
    if (rssi >= 0) rssi = -rssi;
}

// Changes rssi and rx_level of the record while it reads them: deliberate, the keys further down
// and the next pass print what is filled in here.
// Oddity publishing-fills-in: an RSSI that was not told is made from the CSQ.
SignalValues DeriveSignalValues() {
    S& stats = g_S_Globalstats;
    if (stats.rssi.empty()) stats.rssi = CsqToRssi(stats.csq, stats.previous_csq);
    const int csq = ToInt(stats.csq);
    const int rssi = ToInt(stats.rssi);
    SignalValues signal = {rssi, 125, rssi, csq, 99, csq};

    if (stats.system_mode == "LTE" || stats.service_type == "LTE") {
        signal.low_rssi = RssiFromCsq();
        if (IsInteger(stats.rssi)) stats.rx_level = stats.rssi;
    }
    if (IsInteger(stats.rx_level)) {
        signal.high_rssi = ToInt(stats.rx_level);
        signal.high_csq = CsqOfLevel(signal.high_rssi);
        signal.current_rssi = signal.high_rssi;
        signal.current_csq = signal.high_csq;
    }
    MakeNegative(signal.low_rssi);
    MakeNegative(signal.high_rssi);
    MakeNegative(signal.current_rssi);
    return signal;
}

void AddSignal(cTextFileWriter& file) {
    const SignalValues signal = DeriveSignalValues();
    AddNumber(file, key::kCurrentRssi, signal.current_rssi);
    AddNumber(file, key::kHighSpeedRssi, signal.high_rssi);
    AddNumber(file, key::kLowSpeedRssi, signal.low_rssi);
    AddNumber(file, key::kCurrentCsq, signal.current_csq);
    AddNumber(file, key::kHighSpeedCsq, signal.high_csq);
    AddNumber(file, key::kLowSpeedCsq, signal.low_csq);
    AddText(file, key::kCurrentEcio, g_S_Globalstats.ecio);
}

// Empty pieces count, so a list whose first line is empty starts with the key ending in 1.
void AddContexts(cTextFileWriter& file) {
    const cStringTokenizer contexts(g_S_Globalstats.sim_context_apns, '\n');
    LogAbove(1, "DEBUG: APN token count is %d", static_cast<int>(contexts.GetTokenCount()));
    for (unsigned i = 0; i < contexts.GetTokenCount(); ++i) {
        if (contexts[i].empty()) continue;
        AddText(file, Format("%s%u", key::kSimContextApn, i).c_str(), contexts[i]);
    }
}

void WriteSingleLine(const char* path, const std::string& line) {
    cTextFileWriter file(path);
    file.AddLine(line);
    file.WriteFile();
}

void Add881Keys(cTextFileWriter& file) {
    const S& stats = g_S_Globalstats;
    AddKeys(file, k881KeysBeforeRoaming);
    AddNumber(file, key::kRoaming, stats.roaming);
    AddKeys(file, k881KeysBehindRoaming);
    const std::string& channel = stats.gprs_state.empty() ? stats.wcdma_channel : stats.gsm_channel;
    AddText(file, key::kCurrentChannel, channel);
    WriteSingleLine(published::kLightbarChannelFile, channel);
}

}  // namespace

std::string CsqToRssi(const std::string& csq, const std::string& previous_csq) {
    const int value = ToInt(csq);
    if (value == 99 && ToInt(previous_csq) == 99) return "125";
    if (value >= 33) return csq;
    const auto product = static_cast<float>(value * 1.09375);
    return std::to_string(110 - static_cast<long long>(product));
}

void DumpAllCardInfo() {
    LogAbove(1, "running %s", __func__);
    cTextFileWriter statistics(published::kCardStatisticsFile);
    statistics.AddLine("#File generated " + LocalTime("%F %H:%M:%S ", 23));
    QueryIccid();
    LogAbove(1, "writing Device Properties to %s", published::kCardStatisticsFile);

    statistics.AddLine("#Device Properties :");
    AddKeys(statistics, kDeviceKeys);
    if (g_i_CardType == kCardSierra881) {
        AddText(statistics, key::kSkuPriid, g_S_Globalstats.sku_priid);
    }
    statistics.AddLine("#Network Service Info :");
    AddKeys(statistics, kNetworkKeys);
    AddSignal(statistics);
    if (IsLteCard()) {
        CleanWhiteSpace(g_S_Globalstats.qmi_state);
        AddKeys(statistics, kLteCardKeys);
    }
    AddContexts(statistics);
    if (g_i_CardType == kCardSierra881) Add881Keys(statistics);

    WriteSingleLine(published::kSerialNumberFile, g_S_Globalstats.serial_number);
    WriteSingleLine(published::kDirectoryNumberFile, g_S_Globalstats.mdn);
    statistics.WriteFile();
}
