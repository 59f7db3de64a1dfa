#include "status/card_statistics.h"

#include <algorithm>
#include <cmath>

#include "core/settings.h"
#include "status/identity.h"
#include "status/statistics_record.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"
#include "support/text_file_writer.h"

namespace {

using S = GlobalStats;

constexpr char kStatisticsFile[] = "/var/log/wireless.cardstats";
constexpr char kSerialNumberFile[] = "/var/log/wireless.serialno";
constexpr char kDirectoryNumberFile[] = "/var/log/wireless.mdn";
constexpr char kChannelFile[] = "/var/log/lightbar_chan_in";

struct PublishedText {
    const char* key;
    StatsText field;
};

// ESN and IMEI carry the same field: deliberate, the web page shows whichever it looks for.
constexpr PublishedText kDeviceKeys[] = {
    {"CELLMODEM_ESN", &S::serial_number},
    {"CELLMODEM_IMEI", &S::serial_number},
    {"CELLMODEM_SIM_ID", &S::sim_id},
    {"CELLMODEM_MDN", &S::mdn},
    {"CELLMODEM_MANU", &S::manufacturer},
    {"CELLMODEM_MODEL", &S::model},
    {"CELLMODEM_FIRMWARE_V", &S::firmware_version},
    {"CELLMODEM_HARDWARE_V", &S::hardware_version},
};

constexpr PublishedText kNetworkKeys[] = {
    {"CELLMODEM_CARRIER", &S::carrier},
    {"CELLMODEM_CARRIER_PLMN", &S::carrier_plmn},
    {"CELLMODEM_BAND", &S::band},
};

// Ec/Io stands in the file a second time for the LTE cards: deliberate, readers count lines.
constexpr PublishedText kLteCardKeys[] = {
    {"CELLMODEM_CURRENT_ECIO", &S::ecio},
    {"CELLMODEM_LTE_RSRP", &S::lte_rsrp},
    {"CELLMODEM_LTE_RSRQ", &S::lte_rsrq},
    {"CELLMODEM_QMI_RESULT", &S::qmi_result},
    {"CELLMODEM_QMI_RESULT_NUMBER", &S::qmi_result_number},
    {"CELLMODEM_QMI_STATE", &S::qmi_state},
    {"CELLMODEM_QMI_END_REASON", &S::qmi_end_reason},
    {"CELLMODEM_QMI_CALL_TIME", &S::qmi_call_time},
    {"CELLMODEM_SERVICE_TYPE", &S::service_type},
    {"CELLMODEM_SYSTEM_MODE", &S::system_mode},
    {"CELLMODEM_SERVICE_DOMAIN", &S::service_domain},
    {"CELLMODEM_CREG", &S::creg},
    {"CELLMODEM_CREG_ABR", &S::creg_abr},
    {"CELLMODEM_TEMPERATURE", &S::temperature},
};

constexpr PublishedText k881KeysBeforeRoaming[] = {
    {"CELLMODEM_POWERON_TIME", &S::poweron_time},
    {"CELLMODEM_SYSTEM_MODE", &S::system_mode},
    {"CELLMODEM_SERVICE_TYPE", &S::service_type},
    {"CELLMODEM_LTE_BAND", &S::lte_band},
    {"CELLMODEM_LTE_RX_CHAN", &S::lte_rx_channel},
    {"CELLMODEM_LTE_TX_CHAN", &S::lte_tx_channel},
    {"CELLMODEM_LTE_BW", &S::lte_bandwidth},
    {"CELLMODEM_LTE_RSRP", &S::lte_rsrp},
    {"CELLMODEM_LTE_RSRQ", &S::lte_rsrq},
    {"CELLMODEM_LTE_TRAC_AREA_CODE", &S::lte_tracking_area_code},
    {"CELLMODEM_WCDMA_BAND", &S::wcdma_band},
    {"CELLMODEM_WCDMA_CHANNEL", &S::wcdma_channel},
    {"CELLMODEM_GMM_PS_STATE", &S::gmm_ps_state},
    {"CELLMODEM_MM_CS_STATE", &S::mm_cs_state},
    {"CELLMODEM_WCDMA_L1_STATE", &S::wcdma_l1_state},
    {"CELLMODEM_RX_LEVEL", &S::rx_level},
    {"CELLMODEM_RX_LEVEL_C0", &S::rx_level_c0},
    {"CELLMODEM_RX_LEVEL_C1", &S::rx_level_c1},
    {"CELLMODEM_LOCATION_AREA_CODE", &S::location_area_code},
    {"CELLMODEM_SERVING_CELL", &S::serving_cell},
};

constexpr PublishedText k881KeysBehindRoaming[] = {
    {"CELLMODEM_SIM_STATUS", &S::sim_status},
    {"CELLMODEM_TEMPERATURE", &S::temperature},
    {"CELLMODEM_MODE", &S::mode},
    {"CELLMODEM_PS_STATE", &S::ps_state},
    {"CELLMODEM_GSM_CHANNEL", &S::gsm_channel},
    {"CELLMODEM_RRC_STATE", &S::rrc_state},
    {"CELLMODEM_CREG", &S::creg},
    {"CELLMODEM_CREG_ABR", &S::creg_abr},
    {"CELLMODEM_GPRS_STATE", &S::gprs_state},
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
    AddNumber(file, "CELLMODEM_CURRENT_RSSI", signal.current_rssi);
    AddNumber(file, "CELLMODEM_HIGHSPEED_RSSI", signal.high_rssi);
    AddNumber(file, "CELLMODEM_LOWSPEED_RSSI", signal.low_rssi);
    AddNumber(file, "CELLMODEM_CURRENT_CSQ", signal.current_csq);
    AddNumber(file, "CELLMODEM_HIGHSPEED_CSQ", signal.high_csq);
    AddNumber(file, "CELLMODEM_LOWSPEED_CSQ", signal.low_csq);
    AddText(file, "CELLMODEM_CURRENT_ECIO", g_S_Globalstats.ecio);
}

// Empty pieces count, so a list whose first line is empty starts with the key ending in 1.
void AddContexts(cTextFileWriter& file) {
    const cStringTokenizer contexts(g_S_Globalstats.sim_context_apns, '\n');
    LogAbove(1, "DEBUG: APN token count is %d", static_cast<int>(contexts.GetTokenCount()));
    for (unsigned i = 0; i < contexts.GetTokenCount(); ++i) {
        if (contexts[i].empty()) continue;
        AddText(file, Format("CELLMODEM_SIM_CONT_APN%u", i).c_str(), contexts[i]);
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
    AddNumber(file, "CELLMODEM_ROAMING", stats.roaming);
    AddKeys(file, k881KeysBehindRoaming);
    const std::string& channel = stats.gprs_state.empty() ? stats.wcdma_channel : stats.gsm_channel;
    AddText(file, "CELLMODEM_CURRENT_CHAN", channel);
    WriteSingleLine(kChannelFile, channel);
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
    cTextFileWriter statistics(kStatisticsFile);
    statistics.AddLine("#File generated " + LocalTime("%F %H:%M:%S ", 23));
    QueryIccid();
    LogAbove(1, "writing Device Properties to %s", kStatisticsFile);

    statistics.AddLine("#Device Properties :");
    AddKeys(statistics, kDeviceKeys);
    if (g_i_CardType == kCardSierra881) {
        AddText(statistics, "CELLMODEM_SKU_PRIID", g_S_Globalstats.sku_priid);
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

    WriteSingleLine(kSerialNumberFile, g_S_Globalstats.serial_number);
    WriteSingleLine(kDirectoryNumberFile, g_S_Globalstats.mdn);
    statistics.WriteFile();
}
