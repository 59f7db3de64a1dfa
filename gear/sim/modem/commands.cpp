#include "sim/modem/commands.h"

#include <unordered_map>

#include "sim/modem/message_commands.h"
#include "sim/modem/network_commands.h"

namespace sim {

namespace {

using Form = Command::Form;

// 0 plain ERROR, 1 numbers, 2 texts.
std::optional<Reply> HandleErrorReports(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    const auto mode = command.Number(0, 0);
    if (!mode || *mode < 0 || *mode > 2) return CmeError(50);
    state.modes.cmee = *mode;
    return Ok();
}

std::optional<Reply> HandlePin(State& state, const Command& command) {
    if (command.form != Form::kRead) return std::nullopt;
    if (state.radio.sim == Sim::kAbsent) return CmeError(10);
    return Info(state.radio.sim == Sim::kReady ? "+CPIN: READY" : "+CPIN: SIM PIN");
}

// 0 and 4 turn the radio off.
std::optional<Reply> HandleFunctionality(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    const auto level = command.Number(0, 1);
    if (!level || (*level != 0 && *level != 1 && *level != 4)) return CmeError(50);
    state.radio.Register(*level == 1 ? Registration::kHome : Registration::kNotSearching);
    return Ok();
}

// "ATE0" and "ATE1".
std::optional<Reply> HandleEcho(State& state, const std::string& text) {
    if (text != "E0" && text != "E1") return std::nullopt;
    state.modes.echo = text == "E1";
    return Ok();
}

struct Row {
    Handler handler;
    const char* feature;  // the profile must name it in "features"; nullptr: every modem
};

const std::unordered_map<std::string, Row>& Table() {
    static const std::unordered_map<std::string, Row> table = {
        {"+CMEE", {HandleErrorReports, nullptr}},
        {"+CFUN", {HandleFunctionality, nullptr}},
        {"+CPIN", {HandlePin, nullptr}},
        {"+CREG", {HandleRegistrationMode, nullptr}},
        {"+CGREG", {HandleRegistrationMode, nullptr}},
        {"+CEREG", {HandleRegistrationMode, "lte"}},
        {"+COPS", {HandleOperator, nullptr}},
        {"+CGDCONT", {HandleContexts, nullptr}},
        {"+NWAPNE", {HandleProfileApn, "qmi"}},
        {"$NWQMICONNECT", {HandleCallConnect, "qmi"}},
        {"$NWQMIDISCONNECT", {HandleCallDisconnect, "qmi"}},
        {"+COPN", {HandleOperatorNames, nullptr}},
        {"+CMGF", {HandleMessageFormat, nullptr}},
        {"+CMGL", {HandleMessageList, nullptr}},
        {"+CMGR", {HandleMessageRead, nullptr}},
        {"+CMGD", {HandleMessageDelete, nullptr}},
        {"+CPMS", {HandleMessageMemory, nullptr}},
        {"+CMGS", {HandleMessageSend, nullptr}},
    };
    return table;
}

bool HasFeature(const State& state, const std::string& feature) {
    const std::string features = " " + state.Setting("features") + " ";
    return features.find(" " + feature + " ") != features.npos;
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
    if (const auto reply = HandleEcho(state, text)) return reply;
    const Command parsed = ParseCommand(command);
    const auto row = Table().find(parsed.head);
    if (row == Table().end()) return std::nullopt;
    if (row->second.feature != nullptr && !HasFeature(state, row->second.feature)) {
        return std::nullopt;
    }
    return row->second.handler(state, parsed);
}

}  // namespace sim
