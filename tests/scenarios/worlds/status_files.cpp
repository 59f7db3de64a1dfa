#include "scenarios/worlds/status_files.h"

#include <algorithm>
#include <cctype>
#include <regex>

namespace worlds {

namespace {

using Test = bool (*)(const std::string&);

bool IsSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

// How values are cleaned, by the names that the table of the files gives it.
bool Line(const std::string&) {
    return true;
}
bool Text(const std::string& value) {
    return value.find_first_of(" \t\r") == std::string::npos;
}
bool Ends(const std::string& value) {
    return value.find('\r') == std::string::npos;
}
bool LeftTrimmed(const std::string& value) {
    return Ends(value) && (value.empty() || !IsSpace(value.front()));
}
bool Trimmed(const std::string& value) {
    return value.empty() || (!IsSpace(value.front()) && !IsSpace(value.back()));
}
// Trimmed texts with a blank before each but the first, any of which may be empty.
bool PartAndRevision(const std::string& text) {
    std::string value = text;
    value.erase(0, std::min(value.find_first_not_of(' '), value.size()));
    value.erase(value.find_last_not_of(' ') + 1);
    return Trimmed(value);
}
bool BetweenQuotes(const std::string& value) {
    return value.find('"') == std::string::npos;
}
bool Number(const std::string& value) {
    const std::size_t first = !value.empty() && value[0] == '-' ? 1 : 0;
    return value.size() > first && value.find_first_not_of("0123456789", first) == value.npos;
}
bool ZeroOrLess(const std::string& value) {
    return value == "0" || (Number(value) && value[0] == '-');
}
bool Csq(const std::string& value) {
    return value == "99" ||
           (Number(value) && value.size() <= 2 && std::stoi(value) >= 1 && std::stoi(value) <= 31);
}
// A number of nothing but its sign, or of nothing at all, is one for the daemon.
bool NumberOrNothing(const std::string& value) {
    return value.empty() || value == "-" || value == "Unknown" || Number(value);
}
bool OneOf(const std::vector<std::string>& texts, const std::string& value) {
    return std::find(texts.begin(), texts.end(), value) != texts.end();
}
bool Registration(const std::string& value) {
    return OneOf({"", "Unknown", "Not Registered, Not Searching", "Registered, Home Network",
                  "Not registered, Searching", "Registration Denied", "Status Unknown",
                  "Registered, Roaming"},
                 value);
}
bool ShortRegistration(const std::string& value) {
    return OneOf(
        {"", "Unknown", "Not Reg", "Reg Home", "Searching", "Reg Denied", "Unkn Stat", "Reg Roam"},
        value);
}
bool SimStatus(const std::string& value) {
    return OneOf({"Unknown", "Available", "Not Available", "Not Present / PIN Locked"}, value);
}
bool ServiceDomain(const std::string& value) {
    return OneOf({"Unknown", "Circuit-switched only ", "Packet-switched only ", "CS and PS"},
                 value);
}
bool UnknownOrNothing(const std::string& value) {
    return value.empty() || value == "Unknown";
}
bool ZeroOrOne(const std::string& value) {
    return value == "0" || value == "1";
}

struct Key {
    const char* name;
    Test test;
};
using Keys = std::vector<Key>;

const Keys kDeviceKeys = {
    {"ESN", NumberOrNothing}, {"IMEI", NumberOrNothing},
    {"SIM_ID", Text},         {"MDN", NumberOrNothing},
    {"MANU", Ends},           {"MODEL", Ends},
    {"FIRMWARE_V", Line},     {"HARDWARE_V", BetweenQuotes},
};
const Keys kNetworkKeys = {
    {"CARRIER", Trimmed},         {"CARRIER_PLMN", Text},         {"BAND", Text},
    {"CURRENT_RSSI", ZeroOrLess}, {"HIGHSPEED_RSSI", ZeroOrLess}, {"LOWSPEED_RSSI", ZeroOrLess},
    {"CURRENT_CSQ", Number},      {"HIGHSPEED_CSQ", Csq},         {"LOWSPEED_CSQ", Number},
    {"CURRENT_ECIO", Text}};
const Keys kLteCardKeys = {{"CURRENT_ECIO", Text},
                           {"LTE_RSRP", Text},
                           {"LTE_RSRQ", Text},
                           {"QMI_RESULT", Text},
                           {"QMI_RESULT_NUMBER", Ends},
                           {"QMI_STATE", Text},
                           {"QMI_END_REASON", Ends},
                           {"QMI_CALL_TIME", LeftTrimmed},
                           {"SERVICE_TYPE", Trimmed},
                           {"SYSTEM_MODE", UnknownOrNothing},
                           {"SERVICE_DOMAIN", ServiceDomain},
                           {"CREG", Registration},
                           {"CREG_ABR", ShortRegistration},
                           {"TEMPERATURE", Trimmed}};
const Keys k881Keys = {{"POWERON_TIME", Text},
                       {"SYSTEM_MODE", Text},
                       {"SERVICE_TYPE", Trimmed},
                       {"LTE_BAND", Text},
                       {"LTE_RX_CHAN", Text},
                       {"LTE_TX_CHAN", Text},
                       {"LTE_BW", Text},
                       {"LTE_RSRP", Text},
                       {"LTE_RSRQ", Text},
                       {"LTE_TRAC_AREA_CODE", Trimmed},
                       {"WCDMA_BAND", Text},
                       {"WCDMA_CHANNEL", Text},
                       {"GMM_PS_STATE", Line},
                       {"MM_CS_STATE", Line},
                       {"WCDMA_L1_STATE", Text},
                       {"RX_LEVEL", Text},
                       {"RX_LEVEL_C0", Text},
                       {"RX_LEVEL_C1", Text},
                       {"LOCATION_AREA_CODE", Trimmed},
                       {"SERVING_CELL", Trimmed},
                       {"ROAMING", ZeroOrOne},
                       {"SIM_STATUS", SimStatus},
                       {"TEMPERATURE", Text},
                       {"MODE", Text},
                       {"PS_STATE", Text},
                       {"GSM_CHANNEL", Text},
                       {"RRC_STATE", Text},
                       {"CREG", Registration},
                       {"CREG_ABR", ShortRegistration},
                       {"GPRS_STATE", Trimmed},
                       {"CURRENT_CHAN", Text}};

constexpr char kPrefix[] = "CELLMODEM_";
constexpr char kContextKey[] = "CELLMODEM_SIM_CONT_APN";

// Reads a statistics file line by line, in the order that the readers know.
class StatisticsReader {
  public:
    StatisticsReader(CardType card, const std::string& text) : card_(card), rest_(text) {}

    std::string Fault() {
        static const std::regex kFirst(
            "#File generated [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} ");
        if (!std::regex_match(Take(), kFirst)) Complain("the time");
        Comment("#Device Properties :");
        TakeKeys(kDeviceKeys);
        if (card_ == kCardSierra881) TakeKeys({{"SKU_PRIID", PartAndRevision}});
        Comment("#Network Service Info :");
        TakeKeys(kNetworkKeys);
        if (cards::Has(cards::kLte, card_)) TakeKeys(kLteCardKeys);
        TakeContexts();
        if (card_ == kCardSierra881) TakeKeys(k881Keys);
        if (!rest_.empty()) Complain("the end, not: " + Take());
        return fault_;
    }

  private:
    // The first complaint is the one that tells.
    void Complain(const std::string& wanted) {
        if (fault_.empty()) {
            fault_ = "line " + std::to_string(taken_) + " is not " + wanted;
        }
    }

    std::string Take() {
        const auto end = rest_.find('\n');
        if (end == std::string::npos) Complain("complete");
        const std::string line = rest_.substr(0, end);
        rest_.erase(0, end == std::string::npos ? end : end + 1);
        ++taken_;
        return line;
    }

    void Comment(const char* wanted) {
        if (Take() != wanted) Complain(wanted);
    }

    void TakeKeys(const Keys& keys) {
        for (const Key& key : keys) {
            const std::string start = std::string(kPrefix) + key.name + "=";
            const std::string line = Take();
            if (line.compare(0, start.size(), start) != 0) {
                Complain("that of " + start + " but: " + line);
            } else if (!key.test(line.substr(start.size()))) {
                Complain("clean: " + line);
            }
        }
    }

    void TakeContexts() {
        int last = -1;
        while (rest_.compare(0, sizeof(kContextKey) - 1, kContextKey) == 0) {
            const std::string line = Take().substr(sizeof(kContextKey) - 1);
            const auto equals = std::min(line.find('='), line.size());
            const std::string number = line.substr(0, equals);
            const std::string value = line.substr(std::min(equals + 1, line.size()));
            const bool right = Number(number) && number.size() < 7 && std::stoi(number) > last &&
                               Text(value) && value.find(':') != std::string::npos;
            if (!right) return Complain("a context: " + line);
            last = std::stoi(number);
        }
    }

    CardType card_;
    std::string rest_;
    std::string fault_;
    int taken_ = 0;
};

struct SingleLine {
    const char* path;
    Test test;
};

bool SignalLine(const std::string& value) {
    return value.compare(0, 5, "+CSQ:") == 0 && Ends(value);
}
bool LeaseCounter(const std::string& value) {
    return value == "LEASE_FAIL_COUNTER=0";
}

constexpr char kStatistics[] = "/var/log/wireless.cardstats";
const SingleLine kSingleLines[] = {
    {"/var/log/wireless.serialno", NumberOrNothing},
    {"/var/log/wireless.mdn", NumberOrNothing},
    {"/var/log/lightbar", SignalLine},
    {"/var/log/lightbar_ecio_in", Text},
    {"/var/log/lightbar_chan_in", Text},
    {"/var/log/wirelessactivation_status", ShortRegistration},
    {"/tmp/udhcpc.wwan0.lfc", LeaseCounter},
};

}  // namespace

const std::vector<std::string>& StatusFiles() {
    static const std::vector<std::string> kPaths = [] {
        std::vector<std::string> paths = {kStatistics};
        for (const SingleLine& file : kSingleLines) paths.emplace_back(file.path);
        return paths;
    }();
    return kPaths;
}

std::string FaultOfStatusFile(CardType card, const std::string& path, const std::string& text) {
    if (text.empty()) return "";
    if (text.find('\0') != std::string::npos) return "it holds a zero byte";
    if (path == kStatistics) return StatisticsReader(card, text).Fault();
    for (const SingleLine& file : kSingleLines) {
        if (path != file.path) continue;
        if (text.find('\n') != text.size() - 1) return "it is not one line: " + text;
        return file.test(text.substr(0, text.size() - 1)) ? "" : "it is not clean: " + text;
    }
    return "it is no status file";
}

}  // namespace worlds
