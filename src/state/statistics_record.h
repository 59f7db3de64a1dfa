// All that the daemon learns from the modem, in one record for the whole run. The status queries
// and the data connection fill it; the card statistics file prints it. Everyone reads and writes
// the fields directly.
//
// Texts read "Unknown" until a query fills them; those marked (empty) start empty and the reset
// leaves them alone. Numbers from the modem are kept as the text it printed.
#pragma once

#include <string>

struct GlobalStats {
    std::string serial_number;  // ESN or IMEI, whichever the card reports
    std::string mdn;            // mobile directory number
    std::string service_type;
    std::string previous_service_type;  // at the previous check, for change detection
    std::string band;
    std::string rssi;      // dBm
    std::string lte_rsrq;  // dB (empty)
    std::string lte_rsrp;  // dBm (empty)
    std::string csq;       // 0 to 31, 99 unknown
    std::string previous_csq;
    std::string ecio;  // dB
    std::string manufacturer;
    std::string carrier;
    std::string carrier_plmn;
    std::string firmware_version;
    std::string hardware_version;
    std::string model;
    std::string service_status;
    std::string service_domain;
    int roaming = 0;
    std::string system_mode;
    std::string sim_status;
    std::string sim_id;      // ICCID
    bool sim_ready = false;  // the SIM said "COMPLETED"; the Novatel ICCID query waits for it
    std::string sku_priid;
    std::string creg;              // registration status (empty)
    std::string creg_abr;          // the same, short (empty)
    int registration_status = 0;   // not touched by the reset
    std::string sim_context_apns;  // one "id:APN" per line (empty)
    std::string poweron_time;
    std::string bootup_time;
    std::string wcdma_band;
    std::string wcdma_channel;
    std::string gmm_ps_state;
    std::string mm_cs_state;
    std::string wcdma_l1_state;
    std::string serving_cell;
    std::string rx_level_c0;
    std::string rx_level_c1;
    std::string location_area_code;
    std::string rx_level;  // dBm
    std::string gprs_state;
    std::string lte_band;                // (empty)
    std::string lte_bandwidth;           // (empty)
    std::string lte_rx_channel;          // (empty)
    std::string lte_tx_channel;          // (empty)
    std::string lte_tracking_area_code;  // (empty)
    std::string temperature;
    std::string mode;
    std::string ps_state;
    std::string gsm_band;
    std::string gsm_channel;
    std::string rrc_state;
    std::string qmi_state;
    std::string qmi_result;         // text part of the last QMI status
    std::string qmi_result_raw;     // its number part
    std::string qmi_result_number;  // the qmi_result_raw of the check before, translated
    std::string qmi_end_reason_raw;
    std::string qmi_end_reason;  // the qmi_end_reason_raw of the check before, translated
    std::string qmi_call_time;
    std::string previous_qmi_call_time;
    int lte_connect_failures = 0;  // consecutive checks that did not find the call connected
    int tx_bytes_current = 0;
    int tx_bytes_previous = 0;  // at the last good check
};

using StatsText = std::string GlobalStats::*;

extern GlobalStats g_S_Globalstats;

// Before the first query of the run.
void ResetGlobalStats();
// The fields of the LTE connection, the carrier and the serial number, once more, later in
// start-up.
void ResetLteStats();
