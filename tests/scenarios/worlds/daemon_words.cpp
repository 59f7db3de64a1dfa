#include "scenarios/worlds/daemon_words.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <regex>

namespace worlds {

namespace {

using cards::kAll;
using cards::kLte;
using cards::kMessaging;
using cards::Only;

constexpr cards::Set kRegistersOutsideLte = cards::kRegistering & ~kLte;
constexpr cards::Set k881 = Only(kCardSierra881);
constexpr cards::Set kSierra = k881 | Only(kCardSierraUsb305);
constexpr cards::Set kE362 = Only(kCardNovatelE362);
constexpr cards::Set kE371 = Only(kCardNovatelE371);
constexpr cards::Set kNovatel = kE362 | kE371;
constexpr cards::Set kMc75i = Only(kCardMc75i);

struct Row {
    const char* text;
    cards::Set cards;
};

constexpr Row kCommands[] = {
    {"AT+CREG=2", kAll},
    {"at+gsn", kAll},
    {"AT+CGDCONT?", kAll},
    {"AT+CMGD=0,1", kAll},
    {"at+gmi", kSierra | kNovatel},
    {"at+gmm", kSierra | kNovatel},
    {"at+cnum", kSierra | kMc75i | kE371},
    {"at^sysinfo", kSierra},
    {"AT*CNTI=0", kSierra},
    {"AT!GETRAT?", kSierra},
    {"AT+CREG?", kRegistersOutsideLte},
    {"AT!PRIID?", kSierra},
    {"at!gver?", kSierra},
    {"at!getband?", k881},
    {"at+ecio?", k881},
    {"at!gstatus?", k881},
    {"at^hver", k881},
    {"AT!ICCID?", k881},
    {"at!GSMINFO?", k881},
    {"AT+COPN", k881},
    {"AT+CCLK?", k881},
    {"at!time?", k881},
    {"AT+CMGF=1", kMessaging},
    {"AT+CMGL=\"REC UNREAD\"", kMessaging},
    {"AT+CMGD=0,2", kMessaging},
    {"AT^SCID", kMc75i},
    {"ATE0", kLte},
    {"at$qcsimstat?", kLte},
    {"AT$NWRSSI=15", kLte},
    {"AT+TEMP", kLte},
    {"AT+CEREG?", kLte},
    {"ATI3", kNovatel},
    {"AT+ICCID?", kNovatel},
    {"AT$NWQMISTATUS", kLte},
    {"AT$NWSYSMODE", kE362},
    {"AT$NWNN", kE362},
    {"AT$NWMDN", kE362},
    {"AT$NWLTIME", kE362},
    {"AT$NWRAT?", kE371},
    {"AT$CCLK?", kE371},
};

constexpr char kIndicatorQuery[] = "AT+CIND?";

constexpr Row kCannedCommands[] = {
    {"AT", kAll},
    {"AT+CSQ", kAll},
    {"AT+CSQ?", kAll},
    {kIndicatorQuery, kAll},
    {"AT$NWQMICONNECT=,,", kLte},
    {"AT$NWQMIDISCONNECT", kLte},
};
constexpr std::size_t kCannedSize = 80;

constexpr Row kShellLines[] = {
    {"mkdir -p /tmp/sms/send/ /tmp/sms/send_fail/", kAll},
    {"mkdir -p /tmp/sms/send/", kAll},
    {"mkdir -p /tmp/sms/send_fail/", kAll},
    {"mkdir -p /tmp/sms/recv/", kAll},
    {"ResetPCMCIA now &> /dev/null &", kAll},
    {"/bin/echo -n  > /var/log/lightbar", kAll},
    {"/bin/rm -f /var/log/wireless.*", kAll},
    {"ifconfig wwan0 0.0.0.0 up &> /dev/null", kLte},
    {"ifconfig wwan0 0.0.0.0 down &> /dev/null", kLte},
    {"udhcpc -T 3 -S -b -i wwan0 &> /dev/null", kLte},
    {"udhcpc -T 3 -S -b -i wwan0 -G  &> /dev/null", kLte},
    {"kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null", kLte},
    {"kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null", kLte},
    {"ping -c 1 -I wwan0 8.8.8.8 &> /dev/null", kLte},
    {"touch /var/log/wirelessdial_dialing", kLte},
    {"touch /var/log/wirelessdial_notdialing", kLte},
};

constexpr const char* kFiles[] = {"/var/run/modemd.pid",
                                  "/var/run/BackendResetControl",
                                  "/var/log/csq",
                                  "/var/log/csq.1",
                                  "/var/log/wireless.cardstats",
                                  "/var/log/wireless.serialno",
                                  "/var/log/wireless.mdn",
                                  "/var/log/lightbar",
                                  "/var/log/lightbar_ecio_in",
                                  "/var/log/lightbar_chan_in",
                                  "/var/log/wirelessactivation_status",
                                  "/var/log/wirelessdial_dialing",
                                  "/var/log/wirelessdial_notdialing",
                                  "/tmp/udhcpc.wwan0.lfc",
                                  "/tmp/kvtswi.resetting"};

constexpr const char* kSpool[] = {"/tmp/sms/send/", "/tmp/sms/recv/", "/tmp/sms/send_fail/"};

constexpr char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789./_-";
constexpr std::size_t kLongestName = 255;

template <std::size_t N>
bool IsIn(const Row (&rows)[N], const std::string& text, CardType card) {
    return std::any_of(std::begin(rows), std::end(rows), [&](const Row& row) {
        return text == row.text && cards::Has(row.cards, card);
    });
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool IsKnownCanned(const Given& given, const std::string& bytes) {
    const std::string command = bytes.c_str();
    if (bytes.find_first_not_of('\0', command.size()) != std::string::npos) return false;
    const bool polls = command == kIndicatorQuery || StartsWith(command, "AT+CSQ");
    if (polls && given.polls_indicators != (command == kIndicatorQuery)) return false;
    return IsIn(kCannedCommands, command, given.card);
}

bool IsKnownProvisioning(const Given& given, const std::string& bytes) {
    return cards::Has(kLte, given.card) &&
           std::any_of(given.apns.begin(), given.apns.end(), [&](const std::string& apn) {
               return bytes == "AT+CGDCONT=3,\"ipv4v6\",\"" + apn + "\"" ||
                      bytes == "AT+NWAPNE=3,\"" + apn +
                                   "\",True,1439,V4,0.0.0.0,0.0.0.0,0:0:0:0:0:0:0:0,"
                                   "0:0:0:0:0:0:0:0,HRPD_EHRPD";
           });
}

bool IsKnownSending(const Given& given, const std::string& bytes) {
    if (!cards::Has(kMessaging, given.card) || bytes.empty()) return false;
    if (bytes.back() == '\x1a') {
        return given.messages.count(bytes.substr(0, bytes.size() - 1)) != 0;
    }
    constexpr char kStart[] = "AT+CMGS=\"";
    constexpr std::size_t kStartSize = sizeof(kStart) - 1;
    return StartsWith(bytes, kStart) && bytes.size() > kStartSize && bytes.back() == '"' &&
           given.numbers.count(bytes.substr(kStartSize, bytes.size() - kStartSize - 1)) != 0;
}

// "name.20260314-091502", a long name without its end.
bool IsFailureName(const std::string& failure_name, const std::string& name) {
    static const std::regex kStamp("\\.[0-9]{8}-[0-9]{6}");
    constexpr std::size_t kStampSize = 16;
    if (failure_name.size() < kStampSize || failure_name.size() > kLongestName) return false;
    const std::size_t kept = failure_name.size() - kStampSize;
    return std::regex_match(failure_name.substr(kept), kStamp) &&
           failure_name.substr(0, kept) == name.substr(0, kLongestName - kStampSize);
}

bool IsKnownMove(const Given& given, const std::string& line) {
    if (!cards::Has(kMessaging, given.card)) return false;
    const std::vector<std::string> words = PlainShellWords(line);
    if (words.size() != 4 || words[0] != "mv" || words[1] != "-f") return false;
    if (!StartsWith(words[2], kSpool[0]) || !StartsWith(words[3], kSpool[2])) return false;
    const std::string name = words[2].substr(std::string(kSpool[0]).size());
    return given.names.count(name) != 0 &&
           IsFailureName(words[3].substr(std::string(kSpool[2]).size()), name);
}

bool IsKnownClockSetting(CardType card, const std::string& line) {
    static const std::regex kForm(
        "/bin/date ( -u )?  -s \"[0-9]+:[0-9]+:[0-9]+ [0-9]+/[0-9]+/[0-9]+\" &> /dev/null; "
        "/bin/hwclock --systohc &> /dev/null");
    return (card == kCardSierra881 || cards::Has(kLte, card)) && std::regex_match(line, kForm);
}

}  // namespace

std::vector<std::string> CommandsOf(CardType card) {
    std::vector<std::string> commands;
    for (const Row& row : kCommands) {
        if (cards::Has(row.cards, card)) commands.emplace_back(row.text);
    }
    for (const Row& row : kCannedCommands) {
        if (cards::Has(row.cards, card)) commands.emplace_back(row.text);
    }
    return commands;
}

bool IsKnownWrite(const Given& given, const std::string& bytes) {
    if (bytes == "\r" || bytes == "\n") return true;
    if (bytes.size() == kCannedSize && bytes.back() == '\0') return IsKnownCanned(given, bytes);
    return IsIn(kCommands, bytes, given.card) || IsKnownProvisioning(given, bytes) ||
           IsKnownSending(given, bytes);
}

bool IsKnownShellLine(const Given& given, const std::string& line) {
    return IsIn(kShellLines, line, given.card) || IsKnownMove(given, line) ||
           IsKnownClockSetting(given.card, line);
}

bool IsKnownPath(const std::string& path) {
    const bool spooled = std::any_of(std::begin(kSpool), std::end(kSpool), [&](const char* folder) {
        return StartsWith(path, folder) && path.rfind('/') == std::string(folder).size() - 1;
    });
    return spooled || std::find(std::begin(kFiles), std::end(kFiles), path) != std::end(kFiles);
}

std::vector<std::string> PlainShellWords(const std::string& line) {
    std::vector<std::string> words(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\'') {
            quoted = !quoted;
        } else if (quoted || std::string(kPlain).find(line[i]) != std::string::npos) {
            words.back() += line[i];
        } else if (line[i] == ' ') {
            words.emplace_back();
        } else if (line.compare(i, 2, "\\'") == 0) {
            words.back() += line[++i];
        } else {
            return {};
        }
    }
    return quoted ? std::vector<std::string>() : words;
}

}  // namespace worlds
