// The record, and what it says before the modem has said anything.

#include "state/statistics_record.h"

GlobalStats g_S_Globalstats;

namespace {

using S = GlobalStats;

constexpr StatsText kConnectionTexts[] = {
    &S::qmi_state,
    &S::qmi_result,
    &S::qmi_result_raw,
    &S::qmi_result_number,
    &S::qmi_end_reason_raw,
    &S::qmi_end_reason,
    &S::qmi_call_time,
    &S::previous_qmi_call_time,
    &S::carrier,
    &S::serial_number,
};

constexpr StatsText kOtherTexts[] = {
    &S::mdn,
    &S::service_type,
    &S::previous_service_type,
    &S::band,
    &S::rssi,
    &S::csq,
    &S::previous_csq,
    &S::ecio,
    &S::manufacturer,
    &S::carrier_plmn,
    &S::firmware_version,
    &S::hardware_version,
    &S::model,
    &S::service_status,
    &S::service_domain,
    &S::system_mode,
    &S::sim_status,
    &S::sim_id,
    &S::sku_priid,
    &S::poweron_time,
    &S::bootup_time,
    &S::wcdma_band,
    &S::wcdma_channel,
    &S::gmm_ps_state,
    &S::mm_cs_state,
    &S::wcdma_l1_state,
    &S::serving_cell,
    &S::rx_level_c0,
    &S::rx_level_c1,
    &S::location_area_code,
    &S::rx_level,
    &S::gprs_state,
    &S::temperature,
    &S::mode,
    &S::ps_state,
    &S::gsm_band,
    &S::gsm_channel,
    &S::rrc_state,
};

}  // namespace

void ResetGlobalStats() {
    for (const StatsText field : kOtherTexts) g_S_Globalstats.*field = "Unknown";
    g_S_Globalstats.sim_context_apns.clear();
    g_S_Globalstats.roaming = 0;
    g_S_Globalstats.sim_ready = false;
    g_S_Globalstats.tx_bytes_current = 0;
    g_S_Globalstats.tx_bytes_previous = 0;
    ResetLteStats();
}

void ResetLteStats() {
    for (const StatsText field : kConnectionTexts) g_S_Globalstats.*field = "Unknown";
    g_S_Globalstats.lte_connect_failures = 0;
}
