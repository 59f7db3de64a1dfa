#include "any_answer_cards.h"

namespace {

// Answers that several cards share.
CardAnswer Serial() {
    return {"at+gsn", {"001017088100014"}, {"CELLMODEM_ESN=Unknown", "CELLMODEM_IMEI=Unknown"}};
}

CardAnswer Contexts() {
    return {"AT+CGDCONT?",
            {R"(+CGDCONT: 1,"IP","internet","0.0.0.0",0,0)", R"(+CGDCONT: 3,"IP","my.apn","",0,0)"},
            {"CELLMODEM_SIM_CONT_APN0", "CELLMODEM_SIM_CONT_APN1"}};
}

CardAnswer SubscriberNumber() {
    return {"at+cnum", {R"(+CNUM: "Line 1","2015550188",129)"}, {"CELLMODEM_MDN=Unknown"}};
}

CardAnswer Maker() {
    return {"at+gmi", {"Example Modems"}, {"CELLMODEM_MANU=Unknown"}, {"CELLMODEM_MANU=ERROR"}};
}

CardAnswer Model(const char* model) {
    return {"at+gmm", {model}, {"CELLMODEM_MODEL=Unknown"}, {"CELLMODEM_MODEL=ERROR"}};
}

CardAnswer NovatelFirmware() {
    return {"ATI3", {"Manufacturer: x", "Revision: 2.04"}, {"CELLMODEM_FIRMWARE_V=Unknown"}};
}

CardAnswer SierraFirmware() {
    return {"at!gver?", {"!GVER: K2_0_1_2 TEST"}, {"CELLMODEM_FIRMWARE_V=Unknown"}};
}

CardAnswer Pri(std::vector<const char*> when_silent) {
    return {"AT!PRIID?",
            {"PRI Part Number:    9900123", "Revision:           01.02"},
            std::move(when_silent)};
}

CardAnswer Temperature() {
    return {"AT+TEMP", {"+TEMP: 41"}, {"CELLMODEM_TEMPERATURE="}};
}

CardAnswer NovatelRegistration() {
    return {"AT+CEREG?",
            {"+CEREG: 2,5"},
            {"CELLMODEM_CREG=Not Registered, Not Searching", "CELLMODEM_CREG_ABR=Not Reg"}};
}

CardAnswer SimState() {
    return {"at$qcsimstat?", {"$QCSIMSTAT: 0, SIM INIT COMPLETED"}, {"CELLMODEM_SIM_ID=Unknown"}};
}

CardAnswer NovatelIccid() {
    return {"AT+ICCID?", {"$NWICCID: 8900101000000000017"}, {"CELLMODEM_SIM_ID=Unknown"}};
}

// --- The Sierra 881 ------------------------------------------------------------------------------

CardAnswer StatusPage() {
    return {
        "at!gstatus?",
        {"!GSTATUS:", "Current Time:  1234\t\tTemperature: 38",
         "Bootup Time:   6\t\tMode:        ONLINE", "System mode:   WCDMA\t\tPS state:    Attached",
         "WCDMA band:    WCDMA1900\tGSM band:    GSM1900",
         "WCDMA channel: 9662\t\tGSM channel: 512", "GMM (PS) state:REGISTERED\tNORMAL SERVICE",
         "MM (CS) state: IDLE\tNORMAL SERVICE", "",
         "WCDMA L1 State:L1M_FACH\tRRC State:   CELL_FACH", "RX level (dBm):-80",
         "Serving Cell:  01C3D401 (29611009)", "GPRS State:    READY"},
        {"CELLMODEM_CURRENT_RSSI=0", "CELLMODEM_HIGHSPEED_RSSI=0", "CELLMODEM_CURRENT_CSQ=31",
         "CELLMODEM_HIGHSPEED_CSQ=31",
         "CELLMODEM_POWERON_TIME=", "CELLMODEM_SYSTEM_MODE=", "CELLMODEM_WCDMA_BAND=",
         "CELLMODEM_WCDMA_CHANNEL=", "CELLMODEM_GMM_PS_STATE=", "CELLMODEM_MM_CS_STATE=",
         "CELLMODEM_WCDMA_L1_STATE=", "CELLMODEM_RX_LEVEL=", "CELLMODEM_TEMPERATURE=",
         "CELLMODEM_MODE=", "CELLMODEM_PS_STATE=", "CELLMODEM_GSM_CHANNEL=", "CELLMODEM_RRC_STATE=",
         "CELLMODEM_GPRS_STATE=", "CELLMODEM_CURRENT_CHAN="}};
}

std::vector<CardAnswer> AnswersOf881() {
    return {
        SubscriberNumber(),
        Serial(),
        Pri({"CELLMODEM_SKU_PRIID=Unknown"}),
        Contexts(),
        Maker(),
        Model("MC8801"),
        SierraFirmware(),
        {"at^hver", {R"(^HVER:"HW 1.0")"}, {"CELLMODEM_HARDWARE_V=Unknown"}},
        {"at!GSMINFO?",
         {"PLMN: 001 010", "LAC: 0x1A2B"},
         {"CELLMODEM_CARRIER=Unknown", "CELLMODEM_CARRIER_PLMN=Unknown"}},
        {"AT+COPN",
         {R"(+COPN: "001001","Test Net")", R"(+COPN: "001010","Example Net")"},
         {"CELLMODEM_CARRIER=Unknown"}},
        {"at^sysinfo",
         {"^SYSINFO:2,3,1,5,1"},
         {"CELLMODEM_SIM_STATUS=Unknown"},
         {},
         {},
         {"CELLMODEM_ROAMING"}},
        {"at!getband?", {"!GETBAND: WCDMA 1900"}, {"CELLMODEM_BAND=Unknown"}},
        {"AT*CNTI=0", {"*CNTI: 0,HSDPA/HSUPA"}, {"CELLMODEM_SERVICE_TYPE=Unknown"}},
        {"at+ecio?", {"Tot Ec/Io: -5.5 dB"}, {"CELLMODEM_CURRENT_ECIO="}},
        StatusPage(),
        {"AT+CREG?",
         {R"(+CREG: 2,1,"1A2B","01C3D401")"},
         {"CELLMODEM_CREG=Not Registered, Not Searching", "CELLMODEM_CREG_ABR=Not Reg",
          "CELLMODEM_LOCATION_AREA_CODE=Unknown", "CELLMODEM_SERVING_CELL=01C3D401(29611009)"}},
        {"AT!ICCID?", {"!ICCID: 8900101000000000017"}, {"CELLMODEM_SIM_ID=Unknown"}},
    };
}

constexpr char kFileOf881[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017088100014\n"
    "CELLMODEM_IMEI=001017088100014\n"
    "CELLMODEM_SIM_ID=8900101000000000017\n"
    "CELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=Example Modems\n"
    "CELLMODEM_MODEL=MC8801\n"
    "CELLMODEM_FIRMWARE_V=K2_0_1_2TEST\n"
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

// --- The Novatel cards ---------------------------------------------------------------------------

std::vector<CardAnswer> AnswersOfE362() {
    return {
        {"AT$NWNN", {"Example Net"}, {"CELLMODEM_CARRIER=Unknown"}, {"CELLMODEM_CARRIER=ERROR"}},
        {"AT$NWMDN", {"2015550188"}, {"CELLMODEM_MDN=Unknown"}},
        Serial(),
        Contexts(),
        Maker(),
        Model("E362"),
        NovatelFirmware(),
        // Without a service of "LTE" the low-speed value is the RSSI, and the level stays empty.
        {"AT$NWSYSMODE",
         {"LTE"},
         {"CELLMODEM_SERVICE_TYPE=Unknown", "CELLMODEM_CURRENT_RSSI=0",
          "CELLMODEM_HIGHSPEED_RSSI=0", "CELLMODEM_LOWSPEED_RSSI=-70", "CELLMODEM_CURRENT_CSQ=31",
          "CELLMODEM_HIGHSPEED_CSQ=31"},
         {"CELLMODEM_SERVICE_TYPE=ERROR", "CELLMODEM_CURRENT_RSSI=0", "CELLMODEM_HIGHSPEED_RSSI=0",
          "CELLMODEM_LOWSPEED_RSSI=-70", "CELLMODEM_CURRENT_CSQ=31", "CELLMODEM_HIGHSPEED_CSQ=31"}},
        // An RSSI made of the signal, 92, is the level on LTE: (113 - 92) / 1.22 = 17.2. The echo
        // of the command holds "RSSI=15".
        {"AT$NWRSSI=15",
         {"RSSI=70", "ECIO=-6.5", "RSRP=-99", "RSRQ=-11"},
         {"CELLMODEM_CURRENT_RSSI=-92", "CELLMODEM_HIGHSPEED_RSSI=-92", "CELLMODEM_CURRENT_CSQ=17",
          "CELLMODEM_HIGHSPEED_CSQ=17",
          "CELLMODEM_CURRENT_ECIO=", "CELLMODEM_LTE_RSRP=", "CELLMODEM_LTE_RSRQ="},
         {},
         {"CELLMODEM_CURRENT_RSSI=-15", "CELLMODEM_HIGHSPEED_RSSI=-15",
          "CELLMODEM_CURRENT_ECIO=", "CELLMODEM_LTE_RSRP=", "CELLMODEM_LTE_RSRQ="}},
        Temperature(),
        NovatelRegistration(),
        SimState(),
        NovatelIccid(),
    };
}

// (113 - 70) / 1.22 = 35.2, which is cut at 31.
constexpr char kFileOfE362[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017088100014\n"
    "CELLMODEM_IMEI=001017088100014\n"
    "CELLMODEM_SIM_ID=8900101000000000017\n"
    "CELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=Example Modems\n"
    "CELLMODEM_MODEL=E362\n"
    "CELLMODEM_FIRMWARE_V=2.04\r\n"
    "CELLMODEM_HARDWARE_V=Unknown\n"
    "#Network Service Info :\n"
    "CELLMODEM_CARRIER=Example Net\n"
    "CELLMODEM_CARRIER_PLMN=Unknown\n"
    "CELLMODEM_BAND=Unknown\n"
    "CELLMODEM_CURRENT_RSSI=-70\n"
    "CELLMODEM_HIGHSPEED_RSSI=-70\n"
    "CELLMODEM_LOWSPEED_RSSI=-92\n"
    "CELLMODEM_CURRENT_CSQ=31\n"
    "CELLMODEM_HIGHSPEED_CSQ=31\n"
    "CELLMODEM_LOWSPEED_CSQ=17\n"
    "CELLMODEM_CURRENT_ECIO=-6.5\n"
    "CELLMODEM_CURRENT_ECIO=-6.5\n"
    "CELLMODEM_LTE_RSRP=-99\n"
    "CELLMODEM_LTE_RSRQ=-11\n"
    "CELLMODEM_QMI_RESULT=Unknown\n"
    "CELLMODEM_QMI_RESULT_NUMBER=Unknown\n"
    "CELLMODEM_QMI_STATE=Unknown\n"
    "CELLMODEM_QMI_END_REASON=Unknown\n"
    "CELLMODEM_QMI_CALL_TIME=Unknown\n"
    "CELLMODEM_SERVICE_TYPE=LTE\n"
    "CELLMODEM_SYSTEM_MODE=\n"
    "CELLMODEM_SERVICE_DOMAIN=Unknown\n"
    "CELLMODEM_CREG=Registered, Roaming\n"
    "CELLMODEM_CREG_ABR=Reg Roam\n"
    "CELLMODEM_TEMPERATURE=41\n"
    "CELLMODEM_SIM_CONT_APN0=1:internet\n"
    "CELLMODEM_SIM_CONT_APN1=3:my.apn\n";

std::vector<CardAnswer> AnswersOfE371() {
    return {
        SubscriberNumber(),
        Serial(),
        Contexts(),
        Maker(),
        Model("E371"),
        NovatelFirmware(),
        {"AT$NWRAT?",
         {"$NWRAT: 0,1,8"},
         {"CELLMODEM_SERVICE_TYPE=Unknown", "CELLMODEM_SERVICE_DOMAIN=Unknown"}},
        // No service of exactly "LTE": the level stays empty, and current and fast values with it.
        {"AT$NWRSSI=15",
         {"RSSI=70", "ECIO=-6.5", "RSRP=-99", "RSRQ=-11"},
         {"CELLMODEM_LOWSPEED_RSSI=-92",
          "CELLMODEM_CURRENT_ECIO=", "CELLMODEM_LTE_RSRP=", "CELLMODEM_LTE_RSRQ="},
         {},
         {"CELLMODEM_LOWSPEED_RSSI=-15",
          "CELLMODEM_CURRENT_ECIO=", "CELLMODEM_LTE_RSRP=", "CELLMODEM_LTE_RSRQ="}},
        Temperature(),
        NovatelRegistration(),
        SimState(),
        NovatelIccid(),
    };
}

constexpr char kFileOfE371[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017088100014\n"
    "CELLMODEM_IMEI=001017088100014\n"
    "CELLMODEM_SIM_ID=8900101000000000017\n"
    "CELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=Example Modems\n"
    "CELLMODEM_MODEL=E371\n"
    "CELLMODEM_FIRMWARE_V=2.04\r\n"
    "CELLMODEM_HARDWARE_V=Unknown\n"
    "#Network Service Info :\n"
    "CELLMODEM_CARRIER=Unknown\n"
    "CELLMODEM_CARRIER_PLMN=Unknown\n"
    "CELLMODEM_BAND=Unknown\n"
    "CELLMODEM_CURRENT_RSSI=0\n"
    "CELLMODEM_HIGHSPEED_RSSI=0\n"
    "CELLMODEM_LOWSPEED_RSSI=-70\n"
    "CELLMODEM_CURRENT_CSQ=31\n"
    "CELLMODEM_HIGHSPEED_CSQ=31\n"
    "CELLMODEM_LOWSPEED_CSQ=17\n"
    "CELLMODEM_CURRENT_ECIO=-6.5\n"
    "CELLMODEM_CURRENT_ECIO=-6.5\n"
    "CELLMODEM_LTE_RSRP=-99\n"
    "CELLMODEM_LTE_RSRQ=-11\n"
    "CELLMODEM_QMI_RESULT=Unknown\n"
    "CELLMODEM_QMI_RESULT_NUMBER=Unknown\n"
    "CELLMODEM_QMI_STATE=Unknown\n"
    "CELLMODEM_QMI_END_REASON=Unknown\n"
    "CELLMODEM_QMI_CALL_TIME=Unknown\n"
    "CELLMODEM_SERVICE_TYPE=LTE PS\n"
    "CELLMODEM_SYSTEM_MODE=\n"
    "CELLMODEM_SERVICE_DOMAIN=Packet-switched only \n"
    "CELLMODEM_CREG=Registered, Roaming\n"
    "CELLMODEM_CREG_ABR=Reg Roam\n"
    "CELLMODEM_TEMPERATURE=41\n"
    "CELLMODEM_SIM_CONT_APN0=1:internet\n"
    "CELLMODEM_SIM_CONT_APN1=3:my.apn\n";

// --- The cards of which little is published ------------------------------------------------------

std::vector<CardAnswer> AnswersOfUsb305() {
    return {
        SubscriberNumber(),
        Serial(),
        Pri({}),
        Contexts(),
        Maker(),
        Model("USB305"),
        SierraFirmware(),
        {"at^sysinfo", {"^SYSINFO:2,3,0,5,1"}, {}},
        // A service of exactly "LTE" makes the RSSI the level.
        {"AT*CNTI=0",
         {"*CNTI: 0,LTE"},
         {"CELLMODEM_CURRENT_RSSI=-92", "CELLMODEM_HIGHSPEED_RSSI=-125", "CELLMODEM_CURRENT_CSQ=17",
          "CELLMODEM_HIGHSPEED_CSQ=99"}},
        {"AT+CREG?", {R"(+CREG: 2,1,"1A2B","01C3D401")"}, {}},
    };
}

// The signal of 17 is -92 dBm, and that is CSQ 17 again.
constexpr char kFileOfUsb305[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017088100014\n"
    "CELLMODEM_IMEI=001017088100014\n"
    "CELLMODEM_SIM_ID=Unknown\n"
    "CELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=Example Modems\n"
    "CELLMODEM_MODEL=USB305\n"
    "CELLMODEM_FIRMWARE_V=K2_0_1_2TEST\n"
    "CELLMODEM_HARDWARE_V=Unknown\n"
    "#Network Service Info :\n"
    "CELLMODEM_CARRIER=Unknown\n"
    "CELLMODEM_CARRIER_PLMN=Unknown\n"
    "CELLMODEM_BAND=Unknown\n"
    "CELLMODEM_CURRENT_RSSI=-92\n"
    "CELLMODEM_HIGHSPEED_RSSI=-92\n"
    "CELLMODEM_LOWSPEED_RSSI=-92\n"
    "CELLMODEM_CURRENT_CSQ=17\n"
    "CELLMODEM_HIGHSPEED_CSQ=17\n"
    "CELLMODEM_LOWSPEED_CSQ=17\n"
    "CELLMODEM_CURRENT_ECIO=Unknown\n"
    "CELLMODEM_SIM_CONT_APN0=1:internet\n"
    "CELLMODEM_SIM_CONT_APN1=3:my.apn\n";

std::vector<CardAnswer> AnswersOfMc75i() {
    return {
        SubscriberNumber(),
        Serial(),
        Contexts(),
        {"AT^SCID", {"^SCID: 8900101000000000017"}, {"CELLMODEM_SIM_ID=Unknown"}},
    };
}

constexpr char kFileOfMc75i[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017088100014\n"
    "CELLMODEM_IMEI=001017088100014\n"
    "CELLMODEM_SIM_ID=8900101000000000017\n"
    "CELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=Unknown\n"
    "CELLMODEM_MODEL=Unknown\n"
    "CELLMODEM_FIRMWARE_V=Unknown\n"
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

}  // namespace

const std::vector<AnsweringCard>& AnsweringCards() {
    static const std::vector<AnsweringCard> cards = {
        {"881", kCardSierra881, AnswersOf881(), kFileOf881},
        {"USB305", kCardSierraUsb305, AnswersOfUsb305(), kFileOfUsb305},
        {"mc75i", kCardMc75i, AnswersOfMc75i(), kFileOfMc75i},
        {"E362", kCardNovatelE362, AnswersOfE362(), kFileOfE362},
        {"E371", kCardNovatelE371, AnswersOfE371(), kFileOfE371},
    };
    return cards;
}
