#include "state/statistics_record.h"

#include <gtest/gtest.h>

namespace {

using S = GlobalStats;

struct NamedText {
    const char* name;
    StatsText field;
};

#define NAMED(field) \
    { #field, &S::field }

constexpr NamedText kConnectionTexts[] = {
    NAMED(qmi_state),      NAMED(qmi_result),
    NAMED(qmi_result_raw), NAMED(qmi_result_number),
    NAMED(qmi_end_reason), NAMED(qmi_end_reason_raw),
    NAMED(qmi_call_time),  NAMED(previous_qmi_call_time),
    NAMED(carrier),        NAMED(serial_number),
};

constexpr NamedText kOtherUnknownTexts[] = {
    NAMED(mdn),
    NAMED(service_type),
    NAMED(previous_service_type),
    NAMED(band),
    NAMED(rssi),
    NAMED(csq),
    NAMED(previous_csq),
    NAMED(ecio),
    NAMED(manufacturer),
    NAMED(carrier_plmn),
    NAMED(firmware_version),
    NAMED(hardware_version),
    NAMED(model),
    NAMED(service_status),
    NAMED(service_domain),
    NAMED(system_mode),
    NAMED(sim_status),
    NAMED(sim_id),
    NAMED(sku_priid),
    NAMED(poweron_time),
    NAMED(bootup_time),
    NAMED(wcdma_band),
    NAMED(wcdma_channel),
    NAMED(gmm_ps_state),
    NAMED(mm_cs_state),
    NAMED(wcdma_l1_state),
    NAMED(serving_cell),
    NAMED(rx_level_c0),
    NAMED(rx_level_c1),
    NAMED(location_area_code),
    NAMED(rx_level),
    NAMED(gprs_state),
    NAMED(temperature),
    NAMED(mode),
    NAMED(ps_state),
    NAMED(gsm_band),
    NAMED(gsm_channel),
    NAMED(rrc_state),
};

constexpr NamedText kUntouchedTexts[] = {
    NAMED(lte_rsrq),       NAMED(lte_rsrp),       NAMED(creg),
    NAMED(creg_abr),       NAMED(lte_band),       NAMED(lte_bandwidth),
    NAMED(lte_rx_channel), NAMED(lte_tx_channel), NAMED(lte_tracking_area_code),
};

template <std::size_t N>
void ExpectAll(const char* text, const NamedText (&fields)[N]) {
    for (const NamedText& row : fields) EXPECT_EQ(text, g_S_Globalstats.*row.field) << row.name;
}

template <std::size_t N>
void SetAll(const char* text, const NamedText (&fields)[N]) {
    for (const NamedText& row : fields) g_S_Globalstats.*row.field = text;
}

// Every field holds something that a reset would have to change.
void FillTheRecord() {
    g_S_Globalstats = GlobalStats();
    SetAll("filled", kConnectionTexts);
    SetAll("filled", kOtherUnknownTexts);
    SetAll("filled", kUntouchedTexts);
    g_S_Globalstats.sim_context_apns = "1:internet\n";
    g_S_Globalstats.sim_ready = true;
    g_S_Globalstats.roaming = g_S_Globalstats.registration_status = 1;
    g_S_Globalstats.lte_connect_failures = 7;
    g_S_Globalstats.tx_bytes_current = g_S_Globalstats.tx_bytes_previous = 4096;
}

}  // namespace

TEST(StatisticsRecord, StartsWithEmptyTextsAndZeros) {
    const GlobalStats fresh;
    for (const NamedText& row : kUntouchedTexts) EXPECT_EQ("", fresh.*row.field) << row.name;
    EXPECT_EQ(0, fresh.registration_status);
    EXPECT_EQ(0, fresh.roaming);
    EXPECT_FALSE(fresh.sim_ready);
}

TEST(StatisticsRecord, ResetMakesTheTextsUnknown) {
    FillTheRecord();
    ResetGlobalStats();
    ExpectAll("Unknown", kConnectionTexts);
    ExpectAll("Unknown", kOtherUnknownTexts);
}

TEST(StatisticsRecord, ResetEmptiesTheCountersAndTheContexts) {
    FillTheRecord();
    ResetGlobalStats();
    EXPECT_EQ("", g_S_Globalstats.sim_context_apns);
    EXPECT_EQ(0, g_S_Globalstats.roaming);
    EXPECT_FALSE(g_S_Globalstats.sim_ready);
    EXPECT_EQ(0, g_S_Globalstats.lte_connect_failures);
    EXPECT_EQ(0, g_S_Globalstats.tx_bytes_current);
    EXPECT_EQ(0, g_S_Globalstats.tx_bytes_previous);
}

TEST(StatisticsRecord, ResetLeavesTheEmptyTextsAndTheRegistrationNumber) {
    FillTheRecord();
    ResetGlobalStats();
    ExpectAll("filled", kUntouchedTexts);
    EXPECT_EQ(1, g_S_Globalstats.registration_status);
}

TEST(StatisticsRecord, TheLaterResetIsForTheConnectionTheCarrierAndTheSerialNumber) {
    FillTheRecord();
    ResetLteStats();
    ExpectAll("Unknown", kConnectionTexts);
    EXPECT_EQ(0, g_S_Globalstats.lte_connect_failures);
    ExpectAll("filled", kOtherUnknownTexts);
    ExpectAll("filled", kUntouchedTexts);
    EXPECT_EQ("1:internet\n", g_S_Globalstats.sim_context_apns);
    EXPECT_TRUE(g_S_Globalstats.sim_ready);
}

#undef NAMED
