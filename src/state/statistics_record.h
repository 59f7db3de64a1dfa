// All that the daemon learns from the modem, in one record for the whole run. The status queries
// and the data connection fill it; the card statistics file prints it. Everyone reads and writes
// the fields directly.
//
// Texts read "Unknown" until a query fills them; those marked (empty) start empty and the reset
// leaves them alone. What an answer does not have becomes empty, or "Unknown" again, or stays, as
// its query decides. Numbers from the modem are kept as the text it printed, unchecked: the ranges
// below are those of an honest modem.
#pragma once

#include <string>

struct GlobalStats {
    std::string serial_number;          // IMEI or ESN, decimal digits, whichever the card reports
    std::string mdn;                    // mobile directory number, decimal digits
    std::string service_type;           // radio technology in the modem's words: "LTE", "HSPA"
    std::string previous_service_type;  // at the previous check, for change detection
    std::string band;                   // as the 881 words it
    std::string rssi;                   // dBm: negative as told, a magnitude when made from csq
    std::string lte_rsrq;               // dB (empty)
    std::string lte_rsrp;               // dBm (empty)
    std::string csq;                    // <rssi> of +CSQ (3GPP 27.007): 0 to 31, 99 unknown
    std::string previous_csq;           // empty once a signal has been read, see signal_quality.cpp
    std::string ecio;                   // dB
    std::string manufacturer;
    std::string carrier;       // name of the network
    std::string carrier_plmn;  // the network's MCC and MNC, 5 or 6 digits
    std::string firmware_version;
    std::string hardware_version;
    std::string model;
    std::string service_status;    // srv_status of ^SYSINFO as a text
    std::string service_domain;    // circuit or packet switched: ^SYSINFO or $NWRAT as a text
    int roaming = 0;               // 0, see system_info.cpp; registration_status knows better
    std::string system_mode;       // ^SYSINFO or $NWRAT as a text, or as the status page has it
    std::string sim_status;        // sim_state of ^SYSINFO as a text
    std::string sim_id;            // ICCID
    bool sim_ready = false;        // the SIM said "COMPLETED"; the Novatel ICCID query waits for it
    std::string sku_priid;         // part number, a blank, revision
    std::string creg;              // <stat> of +CREG or +CEREG (3GPP 27.007) as a text (empty)
    std::string creg_abr;          // the same, short (empty)
    int registration_status = 0;   // that <stat>: 1 home, 5 roaming; not touched by the reset
    std::string sim_context_apns;  // PDP contexts, one "cid:APN" per line (empty)
    std::string poweron_time;      // seconds since power-on
    std::string bootup_time;
    std::string wcdma_band;
    std::string wcdma_channel;
    std::string gmm_ps_state;
    std::string mm_cs_state;
    std::string wcdma_l1_state;
    std::string serving_cell;        // cell identity, "hexadecimal (decimal)"
    std::string rx_level_c0;         // dBm, receive chain 0 of an MC7700
    std::string rx_level_c1;         // dBm, receive chain 1
    std::string location_area_code;  // hexadecimal
    std::string rx_level;            // dBm; on LTE filled from rssi when it is published
    std::string gprs_state;
    std::string lte_band;                // (empty)
    std::string lte_bandwidth;           // (empty)
    std::string lte_rx_channel;          // (empty)
    std::string lte_tx_channel;          // (empty)
    std::string lte_tracking_area_code;  // (empty)
    std::string temperature;             // degrees Celsius
    std::string mode;                    // "ONLINE" when the radio is on
    std::string ps_state;
    std::string gsm_band;
    std::string gsm_channel;
    std::string rrc_state;
    std::string qmi_state;          // as the modem prints it; published without white space
    std::string qmi_result;         // text part of the last QMI status
    std::string qmi_result_raw;     // its number part; the same text when it has no number
    std::string qmi_result_number;  // the qmi_result_raw of the check before, translated
    std::string qmi_end_reason_raw;
    std::string qmi_end_reason;          // the qmi_end_reason_raw of the check before, translated
    std::string qmi_call_time;           // duration of the call, as the modem prints it
    std::string previous_qmi_call_time;  // the qmi_call_time of the check before
    int lte_connect_failures = 0;        // consecutive checks that did not find the call connected
    int tx_bytes_current = 0;            // the kernel's counter of wwan0, cut to 32 bits
    int tx_bytes_previous = 0;           // at the last good check
};

// One text of the record, for the tables of queries and keys.
using StatsText = std::string GlobalStats::*;

extern GlobalStats g_S_Globalstats;

// Before the first query of the run.
void ResetGlobalStats();
// The fields of the LTE connection, the carrier and the serial number, once more, later in
// start-up.
void ResetLteStats();
