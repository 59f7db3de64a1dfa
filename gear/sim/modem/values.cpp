#include "sim/modem/values.h"

#include <string>
#include <unordered_map>

namespace sim {

namespace {

using Reader = std::string (*)(const State&);

std::string AccessWord(const State& s) {
    return AccessName(s.radio.access);
}

bool IsRoaming(const State& s) {
    return s.radio.registration == Registration::kRoaming;
}

// The name of the service as this model spells it: a text given by hand, or the profile's
// "service.lte" and its like.
std::string ServiceText(const State& s) {
    if (!s.radio.service_text.empty()) return s.radio.service_text;
    const std::string& text = s.Setting("service." + AccessWord(s));
    return text.empty() ? "No Service" : text;
}

std::string Operator(const State& s) {
    if (!s.radio.HasService()) return "";
    return s.Setting(IsRoaming(s) ? "roaming.operator" : "operator");
}

std::string Plmn(const State& s) {
    if (!s.radio.HasService()) return "";
    return s.Setting(IsRoaming(s) ? "roaming.plmn" : "plmn");
}

std::string SpacedPlmn(const State& s) {
    const std::string plmn = Plmn(s);
    return plmn.size() > 3 ? plmn.substr(0, 3) + " " + plmn.substr(3) : plmn;
}

// Warms up and cools down by four degrees in eight minutes, each modem at its own moment.
std::string Temperature(const State& s) {
    const auto minute = (s.now - s.powered_at) / (60 * kSecond) + static_cast<Micros>(s.seed % 8);
    const auto step = static_cast<int>(minute % 8);
    const int base = ParseInt(s.Setting("temperature-base")).value_or(38);
    return std::to_string(base + (step < 4 ? step : 8 - step));
}

std::string Number(int value) {
    return std::to_string(value);
}

int SysinfoSim(const State& s) {
    return s.radio.sim == Sim::kReady ? 1 : 255;
}

std::string Date(const CivilTime& t, const char* format) {
    return Print(format, t.year, t.month, t.day);
}

std::string TimeOfDay(const CivilTime& t) {
    return Print("%02d:%02d:%02d", t.hour, t.minute, t.second);
}

struct Row {
    const char* name;
    Reader read;
};

constexpr Row kRows[] = {
    // signal
    {"csq", [](const State& s) { return Number(s.radio.csq); }},
    {"ber", [](const State& s) { return Number(s.radio.HasSignal() ? s.radio.ber : 99); }},
    {"rssi", [](const State& s) { return Number(s.radio.Rssi()); }},
    {"rssi-plain", [](const State& s) { return Number(-s.radio.Rssi()); }},
    {"rsrp", [](const State& s) { return Number(s.radio.Rsrp()); }},
    {"rsrq", [](const State& s) { return Number(s.radio.Rsrq()); }},
    {"ecio", [](const State& s) { return Print("%.1f", s.radio.Ecio()); }},
    {"indicator", [](const State& s) { return Number(s.radio.SignalIndicator()); }},
    // registration and service
    {"access", AccessWord},
    {"service", ServiceText},
    {"registration", [](const State& s) { return Number(static_cast<int>(s.radio.registration)); }},
    {"registered", [](const State& s) { return Number(s.radio.IsRegistered()); }},
    {"in-service", [](const State& s) { return Number(s.radio.HasService()); }},
    {"roaming", [](const State& s) { return Number(IsRoaming(s)); }},
    {"lac", [](const State& s) { return Print("%04X", s.radio.lac); }},
    {"lac-decimal", [](const State& s) { return Print("%u", s.radio.lac); }},
    {"cell", [](const State& s) { return Print("%08X", s.radio.cell); }},
    {"cell-decimal", [](const State& s) { return Print("%u", s.radio.cell); }},
    {"operator-now", Operator},
    {"plmn-now", Plmn},
    {"plmn-spaced", SpacedPlmn},
    {"sysinfo-status", [](const State& s) { return Number(s.radio.ServiceStatusOfSysinfo()); }},
    {"sysinfo-domain", [](const State& s) { return Number(s.radio.HasService() ? 3 : 0); }},
    {"sysinfo-mode", [](const State& s) { return Number(s.radio.SystemModeOfSysinfo()); }},
    {"sysinfo-sim", [](const State& s) { return Number(SysinfoSim(s)); }},
    {"nwrat-state", [](const State& s) { return Number(s.radio.StateOfNwrat()); }},
    {"sim", [](const State& s) { return std::string(SimName(s.radio.sim)); }},
    // health
    {"temperature", Temperature},
    {"uptime", [](const State& s) { return std::to_string((s.now - s.powered_at) / kSecond); }},
    // data call
    {"call-state", [](const State& s) { return std::string(s.call.StateText()); }},
    {"call-result", [](const State& s) { return Number(s.call.Result()); }},
    {"call-result-word",
     [](const State& s) {
         return std::string(s.call.Result() == kQmiSuccess ? "Success" : "Failure");
     }},
    {"call-result-name",
     [](const State& s) {
         return std::string(s.call.Result() == kQmiSuccess
                                ? "QMI_RESULT_SUCCESS:QMI_ERR_NONE"
                                : "QMI_RESULT_FAILURE:QMI_ERR_CALL_FAILED");
     }},
    {"call-end-reason",
     [](const State& s) {
         return s.call.EndReason() == 0 ? std::string() : Number(s.call.EndReason());
     }},
    {"call-duration", [](const State& s) { return s.call.Duration(s.now); }},
    {"call-seconds", [](const State& s) { return std::to_string(s.call.Length(s.now) / kSecond); }},
    // clock
    {"stamp", [](const State& s) { return s.clock.Stamp(s.now); }},
    {"date-dots", [](const State& s) { return Date(s.clock.Local(s.now), "%d.%02d.%02d"); }},
    {"time-dots",
     [](const State& s) {
         const CivilTime t = s.clock.Local(s.now);
         return Print("%02d.%02d.%02d", t.hour, t.minute, t.second);
     }},
    {"date", [](const State& s) { return Date(s.clock.Local(s.now), "%d/%02d/%02d"); }},
    {"time", [](const State& s) { return TimeOfDay(s.clock.Local(s.now)); }},
    // messages
    {"sms-used", [](const State& s) { return Number(s.sms.Used()); }},
    {"sms-capacity", [](const State& s) { return Number(s.sms.Capacity()); }},
    {"sms-full", [](const State& s) { return Number(s.sms.Full()); }},
    {"sms-unread", [](const State& s) { return Number(!s.sms.Matching("REC UNREAD")->empty()); }},
};

const std::unordered_map<std::string, Reader>& Readers() {
    static const auto readers = [] {
        std::unordered_map<std::string, Reader> index;
        for (const Row& row : kRows) index.emplace(row.name, row.read);
        return index;
    }();
    return readers;
}

}  // namespace

const std::string& State::Setting(const std::string& name) const {
    static const std::string kNothing;
    const auto found = settings.find(name);
    return found == settings.end() ? kNothing : found->second;
}

bool IsLiveValue(const std::string& name) {
    return Readers().count(name) != 0;
}

std::string Value(const State& state, const std::string& name) {
    const auto reader = Readers().find(name);
    return reader != Readers().end() ? reader->second(state) : state.Setting(name);
}

bool Expand(const State& state, std::string_view text, std::string* line) {
    line->clear();
    std::size_t at = 0;
    for (;;) {
        const std::size_t open = text.find('{', at);
        const std::size_t close = open == text.npos ? text.npos : text.find('}', open);
        if (close == text.npos) break;
        line->append(text.substr(at, open - at));
        const std::string value =
            Value(state, std::string(text.substr(open + 1, close - open - 1)));
        if (value.empty()) {
            line->clear();
            return false;
        }
        line->append(value);
        at = close + 1;
    }
    line->append(text.substr(at));
    return true;
}

}  // namespace sim
