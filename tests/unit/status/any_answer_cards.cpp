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

std::vector<CardAnswer> AnswersOfMc75i() {
    return {
        SubscriberNumber(),
        Serial(),
        Contexts(),
        {"AT^SCID", {"^SCID: 8900101000000000017"}, {"CELLMODEM_SIM_ID=Unknown"}},
    };
}

}  // namespace

const std::vector<AnsweringCard>& AnsweringCards() {
    static const std::vector<AnsweringCard> cards = {
        {"881", kCardSierra881, AnswersOf881()},
        {"USB305", kCardSierraUsb305, AnswersOfUsb305()},
        {"mc75i", kCardMc75i, AnswersOfMc75i()},
        {"E362", kCardNovatelE362, AnswersOfE362()},
        {"E371", kCardNovatelE371, AnswersOfE371()},
    };
    return cards;
}
