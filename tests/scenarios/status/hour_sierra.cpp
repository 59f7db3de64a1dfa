#include "hour_cards.h"

namespace {

constexpr char kFileOf881[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017088100014\n"
    "CELLMODEM_IMEI=001017088100014\n"
    "CELLMODEM_SIM_ID=8900101000000000017\n"
    "CELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=Example Modems, Inc.\n"
    "CELLMODEM_MODEL=MC8801\n"
    "CELLMODEM_FIRMWARE_V=K2_0_1_2TEST2026/03/02\n"
    "CELLMODEM_HARDWARE_V=HW 1.0\n"
    "CELLMODEM_SKU_PRIID=9900123 01.02\n"
    "#Network Service Info :\n"
    "CELLMODEM_CARRIER=Example Net\n"
    "CELLMODEM_CARRIER_PLMN=001010\n"
    "CELLMODEM_BAND=WCDMA1900\n"
    "CELLMODEM_CURRENT_RSSI=-80\n"
    "CELLMODEM_HIGHSPEED_RSSI=-80\n"
    "CELLMODEM_LOWSPEED_RSSI=-92\n"
    "CELLMODEM_CURRENT_CSQ=27\n"
    "CELLMODEM_HIGHSPEED_CSQ=27\n"
    "CELLMODEM_LOWSPEED_CSQ=17\n"
    "CELLMODEM_CURRENT_ECIO=-5.5\n"
    "CELLMODEM_SIM_CONT_APN0=1:internet\n"
    "CELLMODEM_SIM_CONT_APN1=3:my.apn\n"
    "CELLMODEM_POWERON_TIME=1234\n"
    "CELLMODEM_SYSTEM_MODE=WCDMA\n"
    "CELLMODEM_SERVICE_TYPE=HSPA\n"
    "CELLMODEM_LTE_BAND=\n"
    "CELLMODEM_LTE_RX_CHAN=\n"
    "CELLMODEM_LTE_TX_CHAN=\n"
    "CELLMODEM_LTE_BW=\n"
    "CELLMODEM_LTE_RSRP=\n"
    "CELLMODEM_LTE_RSRQ=\n"
    "CELLMODEM_LTE_TRAC_AREA_CODE=\n"
    "CELLMODEM_WCDMA_BAND=WCDMA1900\n"
    "CELLMODEM_WCDMA_CHANNEL=9662\n"
    "CELLMODEM_GMM_PS_STATE=REGISTERED:NORMAL SERVICE\r\n"
    "CELLMODEM_MM_CS_STATE=IDLE:NORMAL SERVICE\r\n"
    "CELLMODEM_WCDMA_L1_STATE=L1M_FACH\n"
    "CELLMODEM_RX_LEVEL=-80\n"
    "CELLMODEM_RX_LEVEL_C0=\n"
    "CELLMODEM_RX_LEVEL_C1=\n"
    "CELLMODEM_LOCATION_AREA_CODE=1A2B\n"
    "CELLMODEM_SERVING_CELL=1C3D401 (29611009)\n"
    "CELLMODEM_ROAMING=0\n"
    "CELLMODEM_SIM_STATUS=Available\n"
    "CELLMODEM_TEMPERATURE=38\n"
    "CELLMODEM_MODE=ONLINE\n"
    "CELLMODEM_PS_STATE=Attached\n"
    "CELLMODEM_GSM_CHANNEL=512\n"
    "CELLMODEM_RRC_STATE=CELL_FACH\n"
    "CELLMODEM_CREG=Registered, Home Network\n"
    "CELLMODEM_CREG_ABR=Reg Home\n"
    "CELLMODEM_GPRS_STATE=READY\n"
    "CELLMODEM_CURRENT_CHAN=512\n";

// Before the first pass only the identity is known.
const Changes kStartOf881 = {
    "CELLMODEM_BAND=Unknown",
    "CELLMODEM_CURRENT_RSSI=0",
    "CELLMODEM_HIGHSPEED_RSSI=-125",
    "CELLMODEM_LOWSPEED_RSSI=0",
    "CELLMODEM_CURRENT_CSQ=0",
    "CELLMODEM_HIGHSPEED_CSQ=99",
    "CELLMODEM_LOWSPEED_CSQ=0",
    "CELLMODEM_CURRENT_ECIO=Unknown",
    "CELLMODEM_POWERON_TIME=Unknown",
    "CELLMODEM_SYSTEM_MODE=Unknown",
    "CELLMODEM_SERVICE_TYPE=Unknown",
    "CELLMODEM_WCDMA_BAND=Unknown",
    "CELLMODEM_WCDMA_CHANNEL=Unknown",
    "CELLMODEM_GMM_PS_STATE=Unknown",
    "CELLMODEM_MM_CS_STATE=Unknown",
    "CELLMODEM_WCDMA_L1_STATE=Unknown",
    "CELLMODEM_RX_LEVEL=Unknown",
    "CELLMODEM_RX_LEVEL_C0=Unknown",
    "CELLMODEM_RX_LEVEL_C1=Unknown",
    "CELLMODEM_LOCATION_AREA_CODE=Unknown",
    "CELLMODEM_SERVING_CELL=Unknown",
    "CELLMODEM_SIM_STATUS=Unknown",
    "CELLMODEM_TEMPERATURE=Unknown",
    "CELLMODEM_MODE=Unknown",
    "CELLMODEM_PS_STATE=Unknown",
    "CELLMODEM_GSM_CHANNEL=Unknown",
    "CELLMODEM_RRC_STATE=Unknown",
    "CELLMODEM_CREG=",
    "CELLMODEM_CREG_ABR=",
    "CELLMODEM_GPRS_STATE=Unknown",
    "CELLMODEM_CURRENT_CHAN=Unknown",
};

std::vector<Reply> SierraIdentity() {
    return {
        {"at+cnum", {R"(+CNUM: "Line 1","2015550188",129)"}},
        {"at+gsn", {"001017088100014"}},
        {"AT!PRIID?", {"PRI Part Number:    9900123", "Revision:           01.02"}},
        {"at+gmi", {"Example Modems, Inc."}},
        {"at+gmm", {"MC8801"}},
        {"at!gver?", {"!GVER: K2_0_1_2 TEST 2026/03/02"}},
        {"at^hver", {R"(^HVER:"HW 1.0")"}},
        {"AT+COPN",
         {R"(+COPN: "001001","Test Net")", R"(+COPN: "001010","Example Net")",
          R"(+COPN: "001020","Harbor Cellular")"}},
    };
}

std::vector<Reply> NetworkAtHome() {
    return {
        {"at!GSMINFO?", {"PLMN: 001 010", "LAC: 0x1A2B (6699)"}},
        {"at^sysinfo", {"^SYSINFO:2,3,0,5,1"}},
        {"at!getband?", {"!GETBAND: WCDMA 1900"}},
        {"AT*CNTI=0", {"*CNTI: 0,HSDPA/HSUPA"}},
        {"at+ecio?", {"Tot Ec/Io: -5.5 dB"}},
        {"AT+CREG?", {R"(+CREG: 2,1,"1A2B","01C3D401")"}},
        {"AT!ICCID?", {"!ICCID: 8900101000000000017"}},
    };
}

Reply WcdmaPage() {
    return {
        "at!gstatus?",
        {"!GSTATUS:", "Current Time:  1234\t\tTemperature: 38",
         "Bootup Time:   6\t\tMode:        ONLINE", "System mode:   WCDMA\t\tPS state:    Attached",
         "WCDMA band:    WCDMA1900\tGSM band:    GSM1900",
         "WCDMA channel: 9662\t\tGSM channel: 512", "GMM (PS) state:REGISTERED\tNORMAL SERVICE",
         "MM (CS) state: IDLE\tNORMAL SERVICE", "",
         "WCDMA L1 State:L1M_FACH\tRRC State:   CELL_FACH", "RX level (dBm):-80",
         "GPRS State:    READY"}};
}

Reply LtePage() {
    return {
        "at!gstatus?",
        {"!GSTATUS:", "Current Time:  2600\t\tTemperature: 41",
         "Bootup Time:   6\t\tMode:        ONLINE", "System mode:   LTE\t\tPS state:    Attached",
         "LTE band:      B17\t\tLTE bw:      10 MHz", "LTE Rx chan:   5790\t\tLTE Tx chan: 23790",
         "GMM (PS) state:REGISTERED\tNORMAL SERVICE", "MM (CS) state: IDLE\tNORMAL SERVICE", "",
         "RSSI (dBm):    -65", "RSRP (dBm):    -95\t\tTAC:         2F01 (12033)",
         "RSRQ (dB):     -12\t\tCell ID:     00C0DE1 (789985)"}};
}

Reply NoServicePage() {
    return {"at!gstatus?",
            {"!GSTATUS:", "Current Time:  3800\t\tTemperature: 40",
             "Bootup Time:   6\t\tMode:        ONLINE",
             "System mode:   NO SERVICE\tPS state:    Not attached",
             "GMM (PS) state:DEREGISTERED\tNO CELL", "MM (CS) state: IDLE\tNO CELL AVAILABLE"}};
}

// On LTE the level is the RSSI, and the slow value is made of the signal: 110 - 21 = 89.
Place TownOf881() {
    return {
        {
            {"at!GSMINFO?", {"PLMN: 001 020"}},
            {"at^sysinfo", {"^SYSINFO:2,3,49,17,1"}},
            {"at!getband?", {"!GETBAND: LTE B17"}},
            {"AT*CNTI=0", {"*CNTI: 0,LTE"}},
            {"at+ecio?", {"Tot Ec/Io: -9.0 dB"}},
            {"AT+CREG?", {"+CREG: 0,5"}},
            {"AT+CSQ", {"+CSQ: 20,2"}},
            LtePage(),
        },
        {"CELLMODEM_CARRIER=Harbor Cellular",
         "CELLMODEM_CARRIER_PLMN=001020",
         "CELLMODEM_BAND=LTEB17",
         "CELLMODEM_CURRENT_RSSI=-65",
         "CELLMODEM_HIGHSPEED_RSSI=-65",
         "CELLMODEM_LOWSPEED_RSSI=-89",
         "CELLMODEM_CURRENT_CSQ=31",
         "CELLMODEM_HIGHSPEED_CSQ=31",
         "CELLMODEM_LOWSPEED_CSQ=20",
         "CELLMODEM_CURRENT_ECIO=-9.0",
         "CELLMODEM_POWERON_TIME=2600",
         "CELLMODEM_SYSTEM_MODE=LTE",
         "CELLMODEM_SERVICE_TYPE=LTE",
         "CELLMODEM_LTE_BAND=B17",
         "CELLMODEM_LTE_RX_CHAN=5790",
         "CELLMODEM_LTE_TX_CHAN=23790",
         "CELLMODEM_LTE_BW=10MHz",
         "CELLMODEM_LTE_RSRP=-95",
         "CELLMODEM_LTE_RSRQ=-12",
         "CELLMODEM_LTE_TRAC_AREA_CODE=2F01 (12033)",
         "CELLMODEM_WCDMA_BAND=",
         "CELLMODEM_WCDMA_CHANNEL=",
         "CELLMODEM_WCDMA_L1_STATE=",
         "CELLMODEM_RX_LEVEL=-65",
         "CELLMODEM_SERVING_CELL=00C0DE1 (789985)",
         "CELLMODEM_ROAMING=1",
         "CELLMODEM_TEMPERATURE=41",
         "CELLMODEM_GSM_CHANNEL=",
         "CELLMODEM_RRC_STATE=",
         "CELLMODEM_CREG=Registered, Roaming",
         "CELLMODEM_CREG_ABR=Reg Roam",
         "CELLMODEM_GPRS_STATE=",
         "CELLMODEM_CURRENT_CHAN="},
        {"wireless.serialno: 001017088100014", "wireless.mdn: 2015550188", "lightbar: +CSQ: 20,2",
         "lightbar_ecio_in: -9.0", "lightbar_chan_in: ", "wirelessactivation_status: Reg Roam"},
    };
}

// An empty level counts as 0 dBm; RSRP and RSRQ stay, and so does the carrier.
Place TunnelOf881() {
    return {
        {
            {"at+cnum", {"ERROR"}},
            {"at!GSMINFO?", {"No service"}},
            {"at^sysinfo", {"^SYSINFO:0,0,0,0,0"}},
            {"at!getband?", {"!GETBAND: No band"}},
            {"AT*CNTI=0", {"*CNTI: 0,No Service"}},
            {"at+ecio?", {"ERROR"}},
            {"AT+CREG?", {"+CREG: 2,2"}},
            {"AT+CSQ", {"+CSQ: 99,99"}},
            {"AT!ICCID?", {"ERROR"}},
            NoServicePage(),
        },
        {"CELLMODEM_SIM_ID=Unknown",
         "CELLMODEM_MDN=Unknown",
         "CELLMODEM_CARRIER=Harbor Cellular",
         "CELLMODEM_CARRIER_PLMN=001020",
         "CELLMODEM_BAND=Noband",
         "CELLMODEM_CURRENT_RSSI=0",
         "CELLMODEM_HIGHSPEED_RSSI=0",
         "CELLMODEM_LOWSPEED_RSSI=-99",
         "CELLMODEM_CURRENT_CSQ=31",
         "CELLMODEM_HIGHSPEED_CSQ=31",
         "CELLMODEM_LOWSPEED_CSQ=99",
         "CELLMODEM_CURRENT_ECIO=",
         "CELLMODEM_POWERON_TIME=3800",
         "CELLMODEM_SYSTEM_MODE=NOSERVICE",
         "CELLMODEM_SERVICE_TYPE=No Service",
         "CELLMODEM_LTE_RSRP=-95",
         "CELLMODEM_LTE_RSRQ=-12",
         "CELLMODEM_WCDMA_BAND=",
         "CELLMODEM_WCDMA_CHANNEL=",
         "CELLMODEM_GMM_PS_STATE=DEREGISTERED:NO CELL\r",
         "CELLMODEM_MM_CS_STATE=IDLE:NO CELL AVAILABLE\r",
         "CELLMODEM_WCDMA_L1_STATE=",
         "CELLMODEM_RX_LEVEL=",
         "CELLMODEM_LOCATION_AREA_CODE=0",
         "CELLMODEM_SERVING_CELL=0 (0)",
         "CELLMODEM_SIM_STATUS=Not Available",
         "CELLMODEM_TEMPERATURE=40",
         "CELLMODEM_PS_STATE=Notattached",
         "CELLMODEM_GSM_CHANNEL=",
         "CELLMODEM_RRC_STATE=",
         "CELLMODEM_CREG=Not registered, Searching",
         "CELLMODEM_CREG_ABR=Searching",
         "CELLMODEM_GPRS_STATE=",
         "CELLMODEM_CURRENT_CHAN="},
        {"wireless.serialno: 001017088100014", "wireless.mdn: Unknown", "lightbar: +CSQ: 99,99",
         "lightbar_ecio_in: ", "lightbar_chan_in: ", "wirelessactivation_status: Searching"},
    };
}

constexpr char kFileOfUsb305[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017088100014\n"
    "CELLMODEM_IMEI=001017088100014\n"
    "CELLMODEM_SIM_ID=Unknown\n"
    "CELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=Example Modems, Inc.\n"
    "CELLMODEM_MODEL=MC8801\n"
    "CELLMODEM_FIRMWARE_V=K2_0_1_2TEST2026/03/02\n"
    "CELLMODEM_HARDWARE_V=Unknown\n"
    "#Network Service Info :\n"
    "CELLMODEM_CARRIER=Unknown\n"
    "CELLMODEM_CARRIER_PLMN=Unknown\n"
    "CELLMODEM_BAND=Unknown\n"
    "CELLMODEM_CURRENT_RSSI=-92\n"
    "CELLMODEM_HIGHSPEED_RSSI=-125\n"
    "CELLMODEM_LOWSPEED_RSSI=-92\n"
    "CELLMODEM_CURRENT_CSQ=17\n"
    "CELLMODEM_HIGHSPEED_CSQ=99\n"
    "CELLMODEM_LOWSPEED_CSQ=17\n"
    "CELLMODEM_CURRENT_ECIO=Unknown\n"
    "CELLMODEM_SIM_CONT_APN0=1:internet\n"
    "CELLMODEM_SIM_CONT_APN1=3:my.apn\n";

Lines SmallFilesOfUsb305(const std::string& signal, const std::string& registration) {
    return {"wireless.serialno: 001017088100014",
            "wireless.mdn: 2015550188",
            "lightbar: " + signal,
            "lightbar_ecio_in: Unknown",
            "lightbar_chan_in",
            "wirelessactivation_status: " + registration};
}

}  // namespace

std::vector<Reply> Together(std::vector<std::vector<Reply>> parts) {
    std::vector<Reply> all;
    for (const std::vector<Reply>& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::vector<Reply> AtHome() {
    return {
        {"AT+CGDCONT?",
         {R"(+CGDCONT: 1,"IP","internet","0.0.0.0",0,0)",
          R"(+CGDCONT: 3,"IP","my.apn","0.0.0.0",0,0)"}},
        {"AT+CSQ", {"+CSQ: 17,99"}},
    };
}

HourCard HourOf881() {
    const Place home = {
        Together({AtHome(), SierraIdentity(), NetworkAtHome(), {WcdmaPage()}}),
        {},
        {"wireless.serialno: 001017088100014", "wireless.mdn: 2015550188", "lightbar: +CSQ: 17,99",
         "lightbar_ecio_in: -5.5", "lightbar_chan_in: 512", "wirelessactivation_status: Reg Home"}};
    Place back = home;
    back.changes = {"CELLMODEM_LTE_RSRP=-95", "CELLMODEM_LTE_RSRQ=-12"};
    return {"Sierra 881", "-881", kFileOf881, kStartOf881, home, TownOf881(), TunnelOf881(), back};
}

// This card's level is never emptied: what the drive through LTE has left stays to the end.
HourCard HourOfUsb305() {
    const Place home = {Together({AtHome(),
                                  SierraIdentity(),
                                  {{"AT*CNTI=0", {"ERROR"}},
                                   {"AT!GETRAT?", {"!GETRAT: UMTS"}},
                                   {"at^sysinfo", {"^SYSINFO:2,3,0,5,1"}},
                                   {"AT+CREG?", {"+CREG: 0,1"}}}}),
                        {},
                        SmallFilesOfUsb305("+CSQ: 17,99", "Reg Home")};
    const Place town = {{{"AT!GETRAT?", {"!GETRAT: LTE"}},
                         {"AT+CREG?", {"+CREG: 0,5"}},
                         {"AT+CSQ", {"+CSQ: 20,2"}}},
                        {"CELLMODEM_CURRENT_RSSI=-89", "CELLMODEM_HIGHSPEED_RSSI=-89",
                         "CELLMODEM_LOWSPEED_RSSI=-89", "CELLMODEM_CURRENT_CSQ=19",
                         "CELLMODEM_HIGHSPEED_CSQ=19", "CELLMODEM_LOWSPEED_CSQ=20"},
                        SmallFilesOfUsb305("+CSQ: 20,2", "Reg Roam")};
    const Place tunnel = {
        {{"AT!GETRAT?", {"ERROR"}}, {"AT+CREG?", {"+CREG: 0,3"}}, {"AT+CSQ", {"+CSQ: 99,99"}}},
        {"CELLMODEM_CURRENT_RSSI=-89", "CELLMODEM_HIGHSPEED_RSSI=-89",
         "CELLMODEM_LOWSPEED_RSSI=-99", "CELLMODEM_CURRENT_CSQ=19", "CELLMODEM_HIGHSPEED_CSQ=19",
         "CELLMODEM_LOWSPEED_CSQ=99"},
        SmallFilesOfUsb305("+CSQ: 99,99", "Reg Denied")};
    Place back = home;
    back.changes = {"CELLMODEM_CURRENT_RSSI=-89", "CELLMODEM_HIGHSPEED_RSSI=-89",
                    "CELLMODEM_CURRENT_CSQ=19", "CELLMODEM_HIGHSPEED_CSQ=19"};
    const Changes at_start_up = {"CELLMODEM_CURRENT_RSSI=0", "CELLMODEM_LOWSPEED_RSSI=0",
                                 "CELLMODEM_CURRENT_CSQ=0", "CELLMODEM_LOWSPEED_CSQ=0"};
    return {"USB 305", "-USB305", kFileOfUsb305, at_start_up, home, town, tunnel, back};
}
