#include "sim/modem/commands.h"

#include <cctype>
#include <unordered_map>

#include "sim/modem/values.h"

namespace sim {

namespace {

using Form = Command::Form;

// A setting of one number that is only kept: read, tested for its range, and set.
std::optional<Reply> KeepNumber(int* value, int highest, const Command& command) {
    switch (command.form) {
        case Form::kRead:
            return Info(command.head + ": " + std::to_string(*value));
        case Form::kTest:
            return Info(command.head + ": (0-" + std::to_string(highest) + ")");
        case Form::kSet: {
            const auto number = command.Number(0, 0);
            if (!number || *number < 0 || *number > highest) return CmeError(50);
            *value = *number;
            return Ok();
        }
        case Form::kExecute:
            break;
    }
    return std::nullopt;
}

std::optional<Reply> HandleErrorReports(State& state, const Command& command) {
    return KeepNumber(&state.modes.cmee, 2, command);
}

std::optional<Reply> HandleZoneReports(State& state, const Command& command) {
    return KeepNumber(&state.modes.ctzr, 1, command);
}

std::optional<Reply> HandleFunctionality(State& state, const Command& command) {
    if (command.form == Form::kRead) {
        return Info("+CFUN: " + std::to_string(state.radio.access == Access::kNone ? 0 : 1));
    }
    if (command.form != Form::kSet) return std::nullopt;
    const auto level = command.Number(0, 1);
    const auto restart = command.Number(1, 0);
    if (!level || !restart) return CmeError(50);
    if (*level == 0 || *level == 4) {
        state.radio.Register(Registration::kNotSearching);
    } else if (*level == 1) {
        state.radio.Register(Registration::kHome);
        state.restart_wanted = *restart == 1;
    } else {
        return CmeError(50);
    }
    return Ok();
}

std::optional<Reply> HandlePin(State& state, const Command& command) {
    if (state.radio.sim == Sim::kAbsent) return CmeError(10);
    if (command.form == Form::kRead) {
        return Info(state.radio.sim == Sim::kReady ? "+CPIN: READY" : "+CPIN: SIM PIN");
    }
    if (command.form != Form::kSet) return std::nullopt;
    if (state.radio.sim == Sim::kReady) return CmeError(3);
    if (command.Text(0) != state.Setting("pin")) return CmeError(16);
    state.radio.Insert(Sim::kReady);
    return Ok();
}

// The modem's own clock, where the host may set it. Its reading form is profile data, since the
// models differ in it.
std::optional<Reply> HandleClock(State& state, const Command& command) {
    if (command.form != Form::kSet || command.parameters.size() != 1) return std::nullopt;
    const std::string& text = command.parameters[0];  // "yy/MM/dd,hh:mm:ss" and perhaps the zone
    if (text.size() < 17) return CmeError(50);
    const std::string iso = "20" + text.substr(0, 2) + "-" + text.substr(3, 2) + "-" +
                            text.substr(6, 2) + "T" + text.substr(9, 8);
    const auto seconds = ParseIsoTime(iso);
    if (!seconds) return CmeError(50);
    state.clock.Set(*seconds - state.clock.Zone() * 900LL, state.now);
    return Ok();
}

struct Row {
    Handler handler;
    const char* feature;  // the profile must name it in "features"; nullptr: every modem
};

const std::unordered_map<std::string, Row>& Table() {
    static const std::unordered_map<std::string, Row> table = {
        {"+CMEE", {HandleErrorReports, nullptr}},
        {"+CTZR", {HandleZoneReports, nullptr}},
        {"+CFUN", {HandleFunctionality, nullptr}},
        {"+CPIN", {HandlePin, nullptr}},
        {"+CCLK", {HandleClock, "clock"}},
        {"+CREG", {HandleRegistrationMode, nullptr}},
        {"+CGREG", {HandleRegistrationMode, nullptr}},
        {"+CEREG", {HandleRegistrationMode, "lte"}},
        {"+CGDCONT", {HandleContexts, nullptr}},
        {"+NWAPNE", {HandleProfileApn, "qmi"}},
        {"$NWQMICONNECT", {HandleCallConnect, "qmi"}},
        {"$NWQMIDISCONNECT", {HandleCallDisconnect, "qmi"}},
        {"+COPN", {HandleOperatorNames, nullptr}},
        {"+CMGF", {HandleMessageFormat, nullptr}},
        {"+CMGL", {HandleMessageList, nullptr}},
        {"+CMGR", {HandleMessageRead, nullptr}},
        {"+CMGD", {HandleMessageDelete, nullptr}},
        {"+CMGS", {HandleMessageSend, nullptr}},
        {"+CMGW", {HandleMessageSave, nullptr}},
        {"+CNMI", {HandleMessageIndications, nullptr}},
    };
    return table;
}

bool HasFeature(const State& state, const std::string& feature) {
    const std::string features = " " + state.Setting("features") + " ";
    return features.find(" " + feature + " ") != features.npos;
}

bool RunBasicCommand(State& state, const std::string& name, int value) {
    Modes& modes = state.modes;
    if (name == "E" || name == "V" || name == "Q") {
        if (value > 1) return false;
        (name == "E" ? modes.echo : name == "V" ? modes.verbose : modes.quiet) = value == 1;
        return true;
    }
    if (name == "Z" || name == "&F") {
        modes = Modes();
        return true;
    }
    // Speaker, carrier and flow control: accepted, for what a terminal program may send.
    return name == "X" || name == "L" || name == "M" || name == "H" || name == "&C" ||
           name == "&D" || name == "&K" || name == "&W";
}

// V.250 lets basic commands follow each other: "ATE0V1&C1".
std::optional<Reply> RunBasicCommands(State& state, const std::string& text) {
    std::size_t at = 0;
    while (at < text.size()) {
        std::string name(1, text[at++]);
        if (name == "&" && at < text.size()) name += text[at++];
        const std::size_t digits = at;
        while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0) ++at;
        const int value = ParseInt(text.substr(digits, at - digits)).value_or(0);
        if (!RunBasicCommand(state, name, value)) return std::nullopt;
    }
    return Ok();
}

}  // namespace

std::optional<int> Command::Number(std::size_t index, int missing) const {
    const std::string text = Text(index);
    return text.empty() ? missing : ParseInt(text);
}

std::string Command::Text(std::size_t index) const {
    return index < parameters.size() ? parameters[index] : "";
}

Command ParseCommand(const std::string& command) {
    const std::string text = Trim(command.substr(2));
    const std::size_t mark = text.find_first_of("=?");
    Command parsed{text.substr(0, mark), Form::kExecute, {}};
    if (mark == text.npos) return parsed;
    const std::string rest = text.substr(mark);
    if (rest == "?") {
        parsed.form = Form::kRead;
    } else if (rest == "=?") {
        parsed.form = Form::kTest;
    } else {
        parsed.form = Form::kSet;
        parsed.parameters = SplitParameters(rest.substr(1));
    }
    return parsed;
}

std::optional<Reply> RunBuiltIn(State& state, const std::string& command) {
    const std::string text = Trim(command.substr(2));
    if (text.empty()) return Ok();
    if (text[0] == '&' || std::isalpha(static_cast<unsigned char>(text[0])) != 0) {
        return RunBasicCommands(state, text);
    }
    const Command parsed = ParseCommand(command);
    const auto row = Table().find(parsed.head);
    if (row == Table().end()) return std::nullopt;
    if (row->second.feature != nullptr && !HasFeature(state, row->second.feature)) {
        return std::nullopt;
    }
    return row->second.handler(state, parsed);
}

}  // namespace sim
