#include "status/statistics_record.h"

#include <gtest/gtest.h>

namespace {

using S = GlobalStats;

// Texts that read "Unknown" after the reset.
const StatsText kUnknown[] = {
    &S::serial_number,
    &S::mdn,
    &S::service_type,
    &S::previous_service_type,
    &S::band,
    &S::rssi,
    &S::csq,
    &S::previous_csq,
    &S::ecio,
    &S::manufacturer,
    &S::carrier,
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
    &S::qmi_state,
    &S::qmi_result,
    &S::qmi_result_raw,
    &S::qmi_result_number,
    &S::qmi_end_reason_raw,
    &S::qmi_end_reason,
    &S::qmi_call_time,
    &S::previous_qmi_call_time,
};

// Texts that start empty and that the reset does not touch.
const StatsText kUntouched[] = {
    &S::lte_rsrq,       &S::lte_rsrp,       &S::creg,
    &S::creg_abr,       &S::lte_band,       &S::lte_bandwidth,
    &S::lte_rx_channel, &S::lte_tx_channel, &S::lte_tracking_area_code,
};

class StatisticsRecord : public ::testing::Test {
  protected:
    StatisticsRecord() { g_S_Globalstats = GlobalStats(); }
    ~StatisticsRecord() override { g_S_Globalstats = GlobalStats(); }
};

TEST_F(StatisticsRecord, ReadsUnknownOrEmptyAfterTheFirstReset) {
    ResetGlobalStats();
    for (const StatsText field : kUnknown) EXPECT_EQ(g_S_Globalstats.*field, "Unknown");
    for (const StatsText field : kUntouched) EXPECT_EQ(g_S_Globalstats.*field, "");
    EXPECT_EQ(g_S_Globalstats.sim_context_apns, "");
    EXPECT_EQ(g_S_Globalstats.roaming, 0);
    EXPECT_EQ(g_S_Globalstats.lte_connect_failures, 0);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_current, 0);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_previous, 0);
    EXPECT_FALSE(g_S_Globalstats.sim_ready);
}

TEST_F(StatisticsRecord, ForgetsWhatItHeld) {
    for (const StatsText field : kUnknown) g_S_Globalstats.*field = "old";
    g_S_Globalstats.sim_context_apns = "1:old\n";
    g_S_Globalstats.roaming = 1;
    g_S_Globalstats.sim_ready = true;
    g_S_Globalstats.lte_connect_failures = 4;
    g_S_Globalstats.tx_bytes_current = 5;
    g_S_Globalstats.tx_bytes_previous = 6;
    ResetGlobalStats();
    for (const StatsText field : kUnknown) EXPECT_EQ(g_S_Globalstats.*field, "Unknown");
    EXPECT_EQ(g_S_Globalstats.sim_context_apns, "");
    EXPECT_EQ(g_S_Globalstats.roaming, 0);
    EXPECT_FALSE(g_S_Globalstats.sim_ready);
    EXPECT_EQ(g_S_Globalstats.lte_connect_failures, 0);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_current, 0);
    EXPECT_EQ(g_S_Globalstats.tx_bytes_previous, 0);
}

TEST_F(StatisticsRecord, KeepsTheFieldsThatTheResetDoesNotTouch) {
    for (const StatsText field : kUntouched) g_S_Globalstats.*field = "kept";
    g_S_Globalstats.registration_status = 5;
    ResetGlobalStats();
    for (const StatsText field : kUntouched) EXPECT_EQ(g_S_Globalstats.*field, "kept");
    EXPECT_EQ(g_S_Globalstats.registration_status, 5);
}

}  // namespace
