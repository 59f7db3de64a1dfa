#include "scenarios/worlds/daemon_words.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <regex>

namespace worlds {

namespace {

constexpr unsigned Only(Card card) {
    return 1U << static_cast<unsigned>(card);
}

constexpr unsigned kAll = ~0U;
constexpr unsigned k881 = Only(Card::k881);
constexpr unsigned kSierra = k881 | Only(Card::kUsb305);
constexpr unsigned kE362 = Only(Card::kE362);
constexpr unsigned kE371 = Only(Card::kE371);
constexpr unsigned kNovatel = kE362 | kE371;
constexpr unsigned kMc75i = Only(Card::kMc75i);

struct Row {
    const char* text;
    unsigned cards;
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
    {"AT+CREG?", kSierra},
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
    {"AT+CMGF=1", k881},
    {"AT+CMGL=\"REC UNREAD\"", k881},
    {"AT+CMGD=0,2", k881},
    {"AT^SCID", kMc75i},
    {"ATE0", kNovatel},
    {"at$qcsimstat?", kNovatel},
    {"AT$NWRSSI=15", kNovatel},
    {"AT+TEMP", kNovatel},
    {"AT+CEREG?", kNovatel},
    {"ATI3", kNovatel},
    {"AT+ICCID?", kNovatel},
    {"AT$NWQMISTATUS", kNovatel},
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
    {"AT$NWQMICONNECT=,,", kNovatel},
    {"AT$NWQMIDISCONNECT", kNovatel},
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
    {"ifconfig wwan0 0.0.0.0 up &> /dev/null", kNovatel},
    {"ifconfig wwan0 0.0.0.0 down &> /dev/null", kNovatel},
    {"udhcpc -T 3 -S -b -i wwan0 &> /dev/null", kNovatel},
    {"udhcpc -T 3 -S -b -i wwan0 -G  &> /dev/null", kNovatel},
    {"kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null", kNovatel},
    {"kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null", kNovatel},
    {"ping -c 1 -I wwan0 8.8.8.8 &> /dev/null", kNovatel},
    {"touch /var/log/wirelessdial_dialing", kNovatel},
    {"touch /var/log/wirelessdial_notdialing", kNovatel},
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
bool IsIn(const Row (&rows)[N], const std::string& text, Card card) {
    return std::any_of(std::begin(rows), std::end(rows), [&](const Row& row) {
        return text == row.text && (row.cards & Only(card)) != 0;
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
    return IsLte(given.card) &&
           std::any_of(given.apns.begin(), given.apns.end(), [&](const std::string& apn) {
               return bytes == "AT+CGDCONT=3,\"ipv4v6\",\"" + apn + "\"" ||
                      bytes == "AT+NWAPNE=3,\"" + apn +
                                   "\",True,1439,V4,0.0.0.0,0.0.0.0,0:0:0:0:0:0:0:0,"
                                   "0:0:0:0:0:0:0:0,HRPD_EHRPD";
           });
}

bool IsKnownSending(const Given& given, const std::string& bytes) {
    if (given.card != Card::k881 || bytes.empty()) return false;
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
    if (given.card != Card::k881) return false;
    const std::vector<std::string> words = PlainShellWords(line);
    if (words.size() != 4 || words[0] != "mv" || words[1] != "-f") return false;
    if (!StartsWith(words[2], kSpool[0]) || !StartsWith(words[3], kSpool[2])) return false;
    const std::string name = words[2].substr(std::string(kSpool[0]).size());
    return given.names.count(name) != 0 &&
           IsFailureName(words[3].substr(std::string(kSpool[2]).size()), name);
}

bool IsKnownClockSetting(Card card, const std::string& line) {
    static const std::regex kForm(
        "/bin/date ( -u )?  -s \"[0-9]+:[0-9]+:[0-9]+ [0-9]+/[0-9]+/[0-9]+\" &> /dev/null; "
        "/bin/hwclock --systohc &> /dev/null");
    return (card == Card::k881 || IsLte(card)) && std::regex_match(line, kForm);
}

}  // namespace

const char* OptionOf(Card card) {
    switch (card) {
        case Card::kGeneric:
            return "";
        case Card::k881:
            return "-881";
        case Card::kUsb305:
            return "-USB305";
        case Card::kMc75i:
            return "-mc75i";
        case Card::kE362:
            return "-E362";
        case Card::kE371:
            return "-E371";
    }
    return "";
}

bool IsLte(Card card) {
    return card == Card::kE362 || card == Card::kE371;
}

std::vector<std::string> CommandsOf(Card card) {
    std::vector<std::string> commands;
    for (const Row& row : kCommands) {
        if ((row.cards & Only(card)) != 0) commands.emplace_back(row.text);
    }
    for (const Row& row : kCannedCommands) {
        if ((row.cards & Only(card)) != 0) commands.emplace_back(row.text);
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
