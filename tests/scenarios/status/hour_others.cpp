#include "hour_cards.h"

namespace {

// (113 - 70) / 1.22 = 35.2, which is cut at 31.
constexpr char kFileOfE362[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017036200015\n"
    "CELLMODEM_IMEI=001017036200015\n"
    "CELLMODEM_SIM_ID=8900101000000000017\n"
    "CELLMODEM_MDN=2015550136\n"
    "CELLMODEM_MANU=Example Modems, Inc.\n"
    "CELLMODEM_MODEL=E362\n"
    "CELLMODEM_FIRMWARE_V=T1.0 Apr 2 2026\r\n"
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
    "CELLMODEM_QMI_RESULT=Success\n"
    "CELLMODEM_QMI_RESULT_NUMBER=0\n"
    "CELLMODEM_QMI_STATE=CONNECTED\n"
    "CELLMODEM_QMI_END_REASON=Reason unspecified (1)\n"
    "CELLMODEM_QMI_CALL_TIME=0 Days, 00:10:00\n"
    "CELLMODEM_SERVICE_TYPE=LTE\n"
    "CELLMODEM_SYSTEM_MODE=\n"
    "CELLMODEM_SERVICE_DOMAIN=Unknown\n"
    "CELLMODEM_CREG=Registered, Home Network\n"
    "CELLMODEM_CREG_ABR=Reg Home\n"
    "CELLMODEM_TEMPERATURE=41\n"
    "CELLMODEM_SIM_CONT_APN0=1:internet\n"
    "CELLMODEM_SIM_CONT_APN1=3:my.apn\n";

// The SIM is asked for its number once it has said that it is ready.
const Changes kStartOfNovatel = {
    "CELLMODEM_SIM_ID=Unknown",
    "CELLMODEM_CURRENT_RSSI=0",
    "CELLMODEM_HIGHSPEED_RSSI=-125",
    "CELLMODEM_LOWSPEED_RSSI=0",
    "CELLMODEM_CURRENT_CSQ=0",
    "CELLMODEM_HIGHSPEED_CSQ=99",
    "CELLMODEM_LOWSPEED_CSQ=0",
    "CELLMODEM_CURRENT_ECIO=Unknown",
    "CELLMODEM_LTE_RSRP=",
    "CELLMODEM_LTE_RSRQ=",
    "CELLMODEM_QMI_RESULT=Unknown",
    "CELLMODEM_QMI_RESULT_NUMBER=Unknown",
    "CELLMODEM_QMI_STATE=Unknown",
    "CELLMODEM_QMI_END_REASON=Unknown",
    "CELLMODEM_QMI_CALL_TIME=Unknown",
    "CELLMODEM_SERVICE_TYPE=Unknown",
    "CELLMODEM_SYSTEM_MODE=Unknown",
    "CELLMODEM_SERVICE_DOMAIN=Unknown",
    "CELLMODEM_CREG=",
    "CELLMODEM_CREG_ABR=",
    "CELLMODEM_TEMPERATURE=Unknown",
};

std::vector<Reply> NovatelAtHome(const std::string& serial_number, const std::string& model) {
    return {
        {"at+gsn", {serial_number}},
        {"at+gmi", {"Example Modems, Inc."}},
        {"at+gmm", {model}},
        {"ATI3", {"Manufacturer: Example Modems, Inc.", "Revision: T1.0 Apr 2 2026"}},
        {"AT$NWRSSI=15", {"RSSI=70", "ECIO=-6.5", "RSRP=-99", "RSRQ=-11"}},
        {"AT+TEMP", {"+TEMP: 41"}},
        {"AT+CEREG?", {"+CEREG: 0,1"}},
        {"at$qcsimstat?", {"$QCSIMSTAT: 0, SIM INIT COMPLETED"}},
        {"AT+ICCID?", {"$NWICCID: 8900101000000000017"}},
        {"AT$NWQMISTATUS",
         {"$NWQMISTATUS: Success: 0", "QMI State: CONNECTED", "Call End Reason: 1",
          "Call Duration: 0 Days, 00:10:00"}},
    };
}

Lines SmallFilesOfNovatel(const std::string& serial_number, const std::string& mdn,
                          const std::string& signal, const std::string& ecio,
                          const std::string& registration) {
    return {"wireless.serialno: " + serial_number,
            "wireless.mdn: " + mdn,
            "lightbar: " + signal,
            "lightbar_ecio_in: " + ecio,
            "lightbar_chan_in",
            "wirelessactivation_status: " + registration};
}

Changes SignalOf(int current_rssi, int high_rssi, int low_rssi, int current_csq, int high_csq,
                 int low_csq) {
    return {"CELLMODEM_CURRENT_RSSI=" + std::to_string(current_rssi),
            "CELLMODEM_HIGHSPEED_RSSI=" + std::to_string(high_rssi),
            "CELLMODEM_LOWSPEED_RSSI=" + std::to_string(low_rssi),
            "CELLMODEM_CURRENT_CSQ=" + std::to_string(current_csq),
            "CELLMODEM_HIGHSPEED_CSQ=" + std::to_string(high_csq),
            "CELLMODEM_LOWSPEED_CSQ=" + std::to_string(low_csq)};
}

Changes Plus(Changes changes, const Changes& more) {
    changes.insert(changes.end(), more.begin(), more.end());
    return changes;
}

constexpr char kFileOfMc75i[] =
    "#Device Properties :\n"
    "CELLMODEM_ESN=001017007500013\n"
    "CELLMODEM_IMEI=001017007500013\n"
    "CELLMODEM_SIM_ID=8900101000000000017\n"
    "CELLMODEM_MDN=2015550175\n"
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

Lines SmallFilesOfOthers(const std::string& serial_number, const std::string& mdn,
                         const std::string& signal) {
    return {
        "wireless.serialno: " + serial_number, "wireless.mdn: " + mdn, "lightbar: " + signal,
        "lightbar_ecio_in: Unknown",           "lightbar_chan_in",     "wirelessactivation_status"};
}

}  // namespace

// The tunnel costs the data call its 30 seconds; the call's figures stay as they were last seen.
HourCard HourOfE362() {
    const std::string serial_number = "001017036200015";
    const std::string mdn = "2015550136";
    const Place home = {
        Together({AtHome(),
                  NovatelAtHome(serial_number, "E362"),
                  {{"AT$NWNN", {"Example Net"}}, {"AT$NWMDN", {mdn}}, {"AT$NWSYSMODE", {"LTE"}}}}),
        {},
        SmallFilesOfNovatel(serial_number, mdn, "+CSQ: 17,99", "-6.5", "Reg Home")};
    const Place town = {
        {{"AT$NWNN", {"Harbor Cellular"}},
         {"AT$NWSYSMODE", {" WCDMA "}},
         {"AT$NWRSSI=15", {"RSSI=-81", "ECIO=-7"}},
         {"AT+CEREG?", {"+CEREG: 0,5"}},
         {"AT+CSQ", {"+CSQ: 14,2"}}},
        Plus(SignalOf(0, 0, -81, 31, 31, 14),
             {"CELLMODEM_CARRIER=Harbor Cellular", "CELLMODEM_CURRENT_ECIO=-7",
              "CELLMODEM_LTE_RSRP=", "CELLMODEM_LTE_RSRQ=", "CELLMODEM_SERVICE_TYPE=WCDMA",
              "CELLMODEM_CREG=Registered, Roaming", "CELLMODEM_CREG_ABR=Reg Roam"}),
        SmallFilesOfNovatel(serial_number, mdn, "+CSQ: 14,2", "-7", "Reg Roam")};
    const Place tunnel = {
        {{"AT$NWNN", {}},
         {"AT$NWSYSMODE", {"No Service"}},
         {"AT$NWRSSI=15", {"ERROR"}},
         {"AT+CEREG?", {"+CEREG: 0,2"}},
         {"AT+TEMP", {"+TEMP: 44"}},
         {"AT+CSQ", {"+CSQ: 99,99"}}},
        Plus(SignalOf(0, 0, -99, 31, 31, 99),
             {"CELLMODEM_CARRIER=Harbor Cellular", "CELLMODEM_CURRENT_ECIO=", "CELLMODEM_LTE_RSRP=",
              "CELLMODEM_LTE_RSRQ=", "CELLMODEM_SERVICE_TYPE=No Service",
              "CELLMODEM_CREG=Not registered, Searching", "CELLMODEM_CREG_ABR=Searching",
              "CELLMODEM_TEMPERATURE=44"}),
        SmallFilesOfNovatel(serial_number, mdn, "+CSQ: 99,99", "", "Searching")};
    return {"E362", "-E362", kFileOfE362, kStartOfNovatel, home, town, tunnel, home};
}

// No service of this card reads just "LTE": the level stays empty, and so 0 dBm. Its mode is
// emptied by the health report before it is published.
HourCard HourOfE371() {
    const std::string serial_number = "001017037100016";
    const std::string mdn = "2015550137";
    const std::string file =
        With(kFileOfE362,
             Plus(SignalOf(0, 0, -70, 31, 31, 17),
                  {"CELLMODEM_ESN=" + serial_number, "CELLMODEM_IMEI=" + serial_number,
                   "CELLMODEM_MDN=" + mdn, "CELLMODEM_MODEL=E371", "CELLMODEM_CARRIER=Unknown",
                   "CELLMODEM_SERVICE_TYPE=LTE PS", "CELLMODEM_SERVICE_DOMAIN=CS and PS"}));
    const Place home = {Together({AtHome(),
                                  NovatelAtHome(serial_number, "E371"),
                                  {{"at+cnum", {"+CNUM: ,\"" + mdn + "\",129"}},
                                   {"AT$NWRAT?", {"$NWRAT: 3,2,8"}}}}),
                        {},
                        SmallFilesOfNovatel(serial_number, mdn, "+CSQ: 17,99", "-6.5", "Reg Home")};
    const Place town = {
        {{"AT$NWRAT?", {"$NWRAT: 2,1,2"}},
         {"AT$NWRSSI=15", {"RSSI=0", "ECIO=-7"}},
         {"AT+CEREG?", {"+CEREG: 0,5"}},
         {"AT+CSQ", {"+CSQ: 14,2"}}},
        Plus(SignalOf(0, 0, 0, 31, 31, 14),
             {"CELLMODEM_CURRENT_ECIO=-7", "CELLMODEM_LTE_RSRP=", "CELLMODEM_LTE_RSRQ=",
              "CELLMODEM_SERVICE_TYPE=WCDMA PS", "CELLMODEM_SERVICE_DOMAIN=Packet-switched only ",
              "CELLMODEM_CREG=Registered, Roaming", "CELLMODEM_CREG_ABR=Reg Roam"}),
        SmallFilesOfNovatel(serial_number, mdn, "+CSQ: 14,2", "-7", "Reg Roam")};
    const Place tunnel = {
        {{"at+cnum", {"+CNUM: ,\"+1" + mdn + "\",145"}},
         {"AT$NWRAT?", {"$NWRAT: 0,0,0"}},
         {"AT$NWRSSI=15", {"RSSI=none"}},
         {"AT+CEREG?", {"+CEREG: 0,4"}},
         {"AT+CSQ", {"+CSQ: 99,99"}}},
        Plus(SignalOf(0, 0, -99, 31, 31, 99),
             {"CELLMODEM_MDN=Unknown", "CELLMODEM_CURRENT_ECIO=", "CELLMODEM_LTE_RSRP=",
              "CELLMODEM_LTE_RSRQ=", "CELLMODEM_SERVICE_TYPE=Searching",
              "CELLMODEM_SERVICE_DOMAIN=Circuit-switched only ", "CELLMODEM_CREG=Status Unknown",
              "CELLMODEM_CREG_ABR=Unkn Stat"}),
        SmallFilesOfNovatel(serial_number, "Unknown", "+CSQ: 99,99", "", "Unkn Stat")};
    return {"E371", "-E371", file, kStartOfNovatel, home, town, tunnel, home};
}

HourCard HourOfMc75i() {
    const std::string serial_number = "001017007500013";
    const Place home = {Together({AtHome(),
                                  {{"at+gsn", {serial_number}},
                                   {"at+cnum", {R"(+CNUM: "","2015550175",129)"}},
                                   {"AT^SCID", {"^SCID: 8900101000000000017"}}}}),
                        {},
                        SmallFilesOfOthers(serial_number, "2015550175", "+CSQ: 17,99")};
    const Place town = {{{"AT+CGDCONT?", {R"(+CGDCONT: 2,"IP","harbor","0.0.0.0",0,0)"}},
                         {"AT+CSQ", {"+CSQ: 31,0"}}},
                        Plus(SignalOf(-77, -125, -77, 31, 99, 31),
                             {"CELLMODEM_SIM_CONT_APN0=2:harbor", "CELLMODEM_SIM_CONT_APN1"}),
                        SmallFilesOfOthers(serial_number, "2015550175", "+CSQ: 31,0")};
    const Place tunnel = {{{"AT+CGDCONT?", {"ERROR"}},
                           {"at+cnum", {"+CME ERROR: 10"}},
                           {"AT^SCID", {"ERROR"}},
                           {"AT+CSQ", {"+CSQ: 99,99"}}},
                          Plus(SignalOf(-99, -125, -99, 99, 99, 99),
                               {"CELLMODEM_SIM_ID=Unknown", "CELLMODEM_MDN=Unknown",
                                "CELLMODEM_SIM_CONT_APN0", "CELLMODEM_SIM_CONT_APN1"}),
                          SmallFilesOfOthers(serial_number, "Unknown", "+CSQ: 99,99")};
    return {"MC75i", "-mc75i", kFileOfMc75i, SignalOf(0, -125, 0, 0, 99, 0),
            home,    town,     tunnel,       home};
}

// Polled with AT+CIND?, whose indicator 0 counts as unknown.
HourCard HourOfGeneric() {
    const std::string serial_number = "001017000000008";
    const std::string file = With(
        kFileOfMc75i, Plus(SignalOf(-86, -125, -86, 22, 99, 22),
                           {"CELLMODEM_ESN=" + serial_number, "CELLMODEM_IMEI=" + serial_number,
                            "CELLMODEM_SIM_ID=Unknown", "CELLMODEM_MDN=Unknown"}));
    const Place home = {
        Together(
            {AtHome(), {{"at+gsn", {serial_number}}, {"AT+CIND?", {"+CIND: 5,3,1,0,0,0,0,0"}}}}),
        {},
        SmallFilesOfOthers(serial_number, "Unknown", "+CSQ: 22, 99")};
    const Place town = {{{"AT+CIND?", {"+CIND: 5,1,1,0,0,0,0,0"}}},
                        SignalOf(-105, -125, -105, 5, 99, 5),
                        SmallFilesOfOthers(serial_number, "Unknown", "+CSQ: 5, 99")};
    const Place tunnel = {{{"AT+CIND?", {"+CIND: 5,0,0,0,0,0,0,0"}}},
                          SignalOf(-99, -125, -99, 99, 99, 99),
                          SmallFilesOfOthers(serial_number, "Unknown", "+CSQ: 99, 99")};
    return {"generic modem", "-cind1", file, SignalOf(0, -125, 0, 0, 99, 0), home, town,
            tunnel,          home};
}
