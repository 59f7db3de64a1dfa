#include "modemctl/snapshot.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>

#include "modemctl/time_text.h"
#include "state/published.h"
#include "support/info_table.h"
#include "support/string_tokenizer.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kHead[] = "#File generated ";
constexpr char kUnknownText[] = "Unknown";
constexpr char kProgram[] = "modemd";
constexpr char kRxBytesFile[] = "/sys/class/net/wwan0/statistics/rx_bytes";
constexpr std::size_t kMostDigits = 18;  // of a number that surely fits

bool HasLineOf(const std::string& text, const char* key) {
    return Contains(text, std::string("\n") + key + "=");
}

SingleValue ReadSingle(const Tree& tree, const char* path) {
    SingleValue single;
    const TextFile file = tree.Read(path);
    single.presence = file.presence;
    single.written = file.modified;
    if (file.presence == Presence::kEmpty) single.value.told = Told::kEmpty;
    if (file.IsWhole()) single.value = ValueOf(file.text.substr(0, file.text.find('\n')));
    return single;
}

std::optional<long long> ReadNumber(const Tree& tree, const char* path) {
    const TextFile file = tree.Read(path, AnyText);
    if (!file.IsWhole()) return std::nullopt;
    std::string text = file.text;
    text.erase(std::min(text.find('.'), text.size()));
    Trim(text);
    return ValueOf(text).Integer();
}

Spool ReadSpool(const Tree& tree, const char* directory) {
    Spool spool;
    std::vector<Entry> entries;
    spool.exists = tree.List(directory, entries);
    for (const Entry& entry : entries) {
        if (spool.files++ == 0 || entry.changed < spool.oldest) spool.oldest = entry.changed;
    }
    return spool;
}

// As the daemon itself looks for another copy: the process exists and was started by this name.
DaemonState ReadDaemon(const Tree& tree, int& pid) {
    const TextFile file = tree.Read(Format(published::kPidFileFormat, kProgram), AnyText);
    if (file.IsWhole()) pid = ToInt(file.text);
    if (!tree.Exists(published::kUptimeFile)) return DaemonState::kUnknown;
    if (file.presence == Presence::kAbsent) return DaemonState::kNeverStarted;
    if (pid <= 0) return DaemonState::kDead;
    const TextFile command = tree.Read(Format("/proc/%d/cmdline", pid), AnyText);
    const std::string started_as = command.text.c_str();  // the first word
    return Contains(started_as, kProgram) ? DaemonState::kRunning : DaemonState::kDead;
}

std::string LowerValue(const cInfoTable& table, const char* key) {
    std::string value = table.GetValue(key);
    CleanWhiteSpace(value);
    ToLower(value);
    return value;
}

// The daemon's own table reader, so that a last line without its line feed shows as it acts.
void ReadSettings(const Tree& tree, Snapshot& snapshot) {
    PppSettings& ppp = snapshot.ppp;
    ppp.file_exists = tree.Exists(published::kPppConfigFile);
    if (ppp.file_exists) {
        const cInfoTable table(tree.Locate(published::kPppConfigFile), '=');
        ppp.apn = table.GetValue(published::config_key::kApn);
        CleanWhiteSpace(ppp.apn);
        ppp.interface_enabled = LowerValue(table, published::config_key::kEnableInterface) != "no";
    }
    ProvisioningSettings& provisioning = snapshot.provisioning;
    provisioning.file_exists = tree.Exists(published::kProvisioningFile);
    if (provisioning.file_exists) {
        const cInfoTable table(tree.Locate(published::kProvisioningFile), '=');
        provisioning.sync_time = LowerValue(table, published::config_key::kSyncTime) == "yes";
        provisioning.debug_mode = table.GetValue(published::config_key::kDebugMode);
        CleanWhiteSpace(provisioning.debug_mode);
    }
}

// The kernel's own answer for the interface of the data call; empty for none.
std::string AddressOfLink() {
    ifaddrs* all = nullptr;
    std::string address;
    if (getifaddrs(&all) != 0) return "";
    for (const ifaddrs* one = all; one != nullptr && address.empty(); one = one->ifa_next) {
        if (one->ifa_addr == nullptr || one->ifa_addr->sa_family != AF_INET) continue;
        if (std::strcmp(one->ifa_name, published::kWwanInterface) != 0) continue;
        sockaddr_in internet = {};
        std::memcpy(&internet, one->ifa_addr, sizeof(internet));
        char text[INET_ADDRSTRLEN] = "";
        if (internet.sin_addr.s_addr == 0) continue;
        address = inet_ntop(AF_INET, &internet.sin_addr, text, sizeof(text));
    }
    freeifaddrs(all);
    return address;
}

void ReadLink(const Tree& tree, Snapshot& snapshot) {
    snapshot.interface_exists =
        tree.Exists(std::string("/sys/class/net/") + published::kWwanInterface);
    snapshot.sent_bytes = ReadNumber(tree, published::kTxBytesFile);
    snapshot.received_bytes = ReadNumber(tree, kRxBytesFile);
    snapshot.uptime = ReadNumber(tree, published::kUptimeFile);
    if (tree.IsLive()) {
        snapshot.address_known = true;
        snapshot.address = AddressOfLink();
        return;
    }
    snapshot.address = tree.Fact("address");
    snapshot.address_known = !snapshot.address.empty();
    if (snapshot.address == "none") snapshot.address.clear();
}

Card CardOf(const Statistics& statistics) {
    const auto has = [&](const char* key) { return statistics.values.count(key) > 0; };
    if (statistics.presence != Presence::kWhole) return Card::kUnknown;
    if (has(published::key::kSkuPriid)) return Card::kSierra881;
    return has(published::key::kQmiState) ? Card::kLte : Card::kOther;
}

}  // namespace

Value ValueOf(const std::string& text) {
    if (text.empty()) return {Told::kEmpty, ""};
    return {text == kUnknownText ? Told::kUnknown : Told::kValue, text};
}

std::optional<long long> Value::Integer() const {
    const bool digits = IsTold() && text != "-" && IsInteger(text) && text.size() <= kMostDigits;
    if (!digits) return std::nullopt;
    return std::stoll(text);
}

Value Statistics::Get(const std::string& key) const {
    const auto found = values.find(key);
    return found != values.end() ? ValueOf(found->second) : Value();
}

// The daemon writes the keys of each card in one order. The key that only that card has comes
// first, the one that ends its list last; the contexts, whose number varies, end the others.
bool IsWholeStatistics(const std::string& text) {
    if (!HasWholeLines(text) || text.compare(0, sizeof(kHead) - 1, kHead) != 0) return false;
    if (!HasLineOf(text, published::key::kCurrentEcio)) return false;
    if (HasLineOf(text, published::key::kSkuPriid)) {
        return HasLineOf(text, published::key::kCurrentChannel);
    }
    return !HasLineOf(text, published::key::kQmiResult) ||
           HasLineOf(text, published::key::kTemperature);
}

// A key that is published twice says the same twice.
Statistics ParseStatistics(const std::string& text, std::time_t modified) {
    Statistics statistics;
    statistics.presence = Presence::kWhole;
    statistics.written = modified;
    for (const std::string& line : cStringTokenizer(text, '\n')) {
        if (line.compare(0, sizeof(kHead) - 1, kHead) == 0) {
            std::time_t written = 0;
            if (ScanIsoTime(line.substr(sizeof(kHead) - 1), written) > 0) {
                statistics.written = written;
            }
        }
        const std::size_t equals = line.find('=');
        if (line.empty() || line[0] == '#' || equals == std::string::npos) continue;
        std::string value = line.substr(equals + 1);
        Trim(value);  // Some values keep the carriage return of the modem's line.
        statistics.values[line.substr(0, equals)] = value;
    }
    return statistics;
}

Freshness Snapshot::StatisticsFreshness(long long max_age) const {
    if (statistics.presence != Presence::kWhole) return Freshness::kAbsent;
    return Age() > max_age ? Freshness::kTooOld : Freshness::kFresh;
}

Snapshot TakeSnapshot(const Tree& tree, std::time_t now) {
    Snapshot snapshot;
    snapshot.now = now;
    const TextFile file = tree.Read(published::kCardStatisticsFile, IsWholeStatistics);
    if (file.IsWhole()) snapshot.statistics = ParseStatistics(file.text, file.modified);
    snapshot.statistics.presence = file.presence;
    snapshot.card = CardOf(snapshot.statistics);
    snapshot.registration = ReadSingle(tree, published::kActivationStatusFile);
    snapshot.signal_line = ReadSingle(tree, published::kLightbarFile);
    snapshot.daemon = ReadDaemon(tree, snapshot.pid);
    snapshot.dialing = tree.Exists(published::kDialingMarker);
    snapshot.not_dialing = tree.Exists(published::kNotDialingMarker);
    snapshot.resetting = tree.Exists(published::kResettingMarker);
    snapshot.sending = ReadSpool(tree, published::kSmsSendDirectory);
    snapshot.received = ReadSpool(tree, published::kSmsReceiveDirectory);
    snapshot.failed = ReadSpool(tree, published::kSmsFailDirectory);
    ReadSettings(tree, snapshot);
    ReadLink(tree, snapshot);
    return snapshot;
}

}  // namespace modemctl
