#include "sim/modem/network_commands.h"

#include <algorithm>

#include "sim/modem/values.h"

namespace sim {

namespace {

using Form = Command::Form;

constexpr int kIncorrectParameters = 50;

int* ModeOf(State& state, const std::string& head) {
    if (head == "+CREG") return &state.modes.creg;
    return head == "+CGREG" ? &state.modes.cgreg : &state.modes.cereg;
}

// Behind "+CREG"; the forms are those that modems were seen to use.
std::string RegistrationFields(int mode, const Radio& radio, bool with_cell,
                               const std::string& form) {
    const int stat = static_cast<int>(radio.registration);
    if (form == "short") return Print(": %d", stat);
    const char* const format = form == "blanks" ? ": %d, %d" : ": %d,%d";
    const std::string fields = Print(format, mode, stat);
    if (!with_cell) return fields;
    if (form == "unquoted") return fields + Print(",%04X,%08X", radio.lac, radio.cell);
    if (form == "blanks") return fields + Print(", \"%04X\", \"%08X\" ", radio.lac, radio.cell);
    return fields + Print(",\"%04X\",\"%08X\"", radio.lac, radio.cell);
}

bool IsContextNumber(const std::optional<int>& number) {
    return number && *number >= 1 && *number <= 16;
}

std::string ListContexts(const State& state) {
    std::string list;
    for (const auto& [number, context] : state.contexts) {
        if (!list.empty()) list += "\r\n";
        list += "+CGDCONT: " + std::to_string(number) + ",\"" + context.type + "\",\"" +
                context.apn + "\",\"" + context.address + "\",0,0";
    }
    return list;
}

// Names that sound like carriers, two words each, so that a list of any length can be made.
std::string InventedOperator(int number) {
    constexpr const char* kFirst[] = {"Amber", "Birch", "Canyon", "Delta",  "Ember",
                                      "Fjord", "Grove", "Harbor", "Island", "Juniper"};
    constexpr const char* kSecond[] = {"Mobile", "Cellular", "Wireless", "Net", "Telecom"};
    const std::string name = std::string(kFirst[number % 10]) + " " + kSecond[number / 10 % 5];
    return number < 50 ? name : name + " " + std::to_string(number / 50);
}

std::string OperatorLine(const std::string& plmn, const std::string& name) {
    return "+COPN: \"" + plmn + "\",\"" + name + "\"";
}

}  // namespace

std::optional<Reply> HandleRegistrationMode(State& state, const Command& command) {
    int* mode = ModeOf(state, command.head);
    const Radio& radio = state.radio;
    switch (command.form) {
        case Form::kRead: {
            const bool with_cell = *mode == 2 && radio.IsRegistered();
            return Info(command.head +
                        RegistrationFields(*mode, radio, with_cell, state.Setting("form.creg")));
        }
        case Form::kTest:
            return Info(command.head + ": (0-2)");
        case Form::kSet: {
            const auto number = command.Number(0, 0);
            if (!number || *number < 0 || *number > 2) return CmeError(kIncorrectParameters);
            *mode = *number;
            return Ok();
        }
        case Form::kExecute:
            break;
    }
    return std::nullopt;
}

std::optional<Reply> HandleOperator(State& state, const Command& command) {
    if (command.form == Form::kRead) {
        const std::string name = Value(state, state.modes.cops == 2 ? "plmn-now" : "operator-now");
        Reply reply =
            Info(name.empty() ? "+COPS: 0"
                              : Print("+COPS: 0,%d,\"%s\"", state.modes.cops, name.c_str()));
        reply.delay = 20 * kMillisecond;
        return reply;
    }
    // Only the form of the answer can be chosen, not the operator.
    constexpr int kFormatOnly = 3;
    const auto format = command.Number(1, 0);
    if (command.form != Form::kSet || command.Number(0, 0) != kFormatOnly) return std::nullopt;
    if (!format || *format < 0 || *format > 2) return CmeError(kIncorrectParameters);
    state.modes.cops = *format;
    return Ok();
}

std::optional<Reply> HandleContexts(State& state, const Command& command) {
    if (command.form == Form::kRead) return Info(ListContexts(state));
    if (command.form == Form::kTest) return Info("+CGDCONT: (1-16),\"IP\",,,(0),(0)");
    if (command.form != Form::kSet) return std::nullopt;
    const auto number = command.Number(0, 0);
    if (!IsContextNumber(number)) return CmeError(kIncorrectParameters);
    if (command.parameters.size() == 1) {
        state.contexts.erase(*number);
        return Ok();
    }
    std::string type = NormaliseCommand(command.Text(1));
    if (type != "IP" && type != "IPV6" && type != "IPV4V6" && type != "PPP") {
        return CmeError(kIncorrectParameters);
    }
    const std::string address = command.Text(3);
    state.contexts[*number] = {type, command.Text(2), address.empty() ? "0.0.0.0" : address};
    return Ok();
}

std::optional<Reply> HandleProfileApn(State& state, const Command& command) {
    if (command.form == Form::kRead) {
        std::string list;
        for (const auto& [number, context] : state.contexts) {
            if (!list.empty()) list += "\r\n";
            list += "+NWAPNE: " + std::to_string(number) + ",\"" + context.apn + "\"";
        }
        return Info(list);
    }
    if (command.form != Form::kSet) return std::nullopt;
    const auto number = command.Number(0, 0);
    if (!IsContextNumber(number) || command.parameters.size() < 2) {
        return CmeError(kIncorrectParameters);
    }
    const auto [context, is_new] = state.contexts.emplace(*number, PdpContext{"IP", "", "0.0.0.0"});
    context->second.apn = command.Text(1);
    return Ok();
}

// OK means that the request was taken; how the call fares is for the status query to tell.
std::optional<Reply> HandleCallConnect(State& state, const Command& command) {
    if (command.form != Form::kSet && command.form != Form::kExecute) return std::nullopt;
    state.call.Connect(state.now, state.radio.HasService());
    return Ok();
}

std::optional<Reply> HandleCallDisconnect(State& state, const Command& command) {
    if (command.form != Form::kExecute) return std::nullopt;
    state.call.Disconnect(state.now);
    return Ok();
}

std::optional<Reply> HandleOperatorNames(State& state, const Command& command) {
    if (command.form != Form::kExecute) return std::nullopt;
    constexpr int kMost = 20000;
    const int count = std::clamp(ParseInt(state.Setting("operators")).value_or(200), 2, kMost);
    std::string list =
        OperatorLine(state.Setting("plmn"), state.Setting("operator")) + "\r\n" +
        OperatorLine(state.Setting("roaming.plmn"), state.Setting("roaming.operator"));
    for (int i = 0; i < count - 2; ++i) {
        list += "\r\n" + OperatorLine(Print("999%03d", i), InventedOperator(i));
    }
    Reply reply = Info(list);
    reply.is_list = true;
    reply.delay = ParseDuration(state.Setting("operators-delay")).value_or(600 * kMillisecond);
    return reply;
}

}  // namespace sim
