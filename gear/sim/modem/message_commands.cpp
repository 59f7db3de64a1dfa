#include "sim/modem/message_commands.h"

#include <iterator>

#include "sim/modem/listing.h"
#include "sim/modem/pdu.h"

namespace sim {

namespace {

using Form = Command::Form;

// What stands in the way of any work with messages: the SIM.
std::optional<Reply> SimInTheWay(const State& state) {
    if (state.radio.sim == Sim::kAbsent) return CmsError(kCmsNoSim);
    if (state.radio.sim == Sim::kLocked) return CmsError(kCmsSimPin);
    return std::nullopt;
}

bool IsNumber(const std::string& text) {
    const std::size_t start = StartsWith(text, "+") ? 1 : 0;
    return text.size() > start && text.find_first_not_of("0123456789*#", start) == text.npos;
}

bool TakeFailure(State& state, bool at_prompt) {
    SmsFailure& failure = state.sms_failure;
    if (failure.times == 0 || failure.at_prompt != at_prompt) return false;
    if (failure.times > 0) --failure.times;
    return true;
}

// What the host calls the states in PDU mode is their place here.
constexpr const char* kStateNames[] = {"REC UNREAD", "REC READ", "STO UNSENT", "STO SENT", "ALL"};

// The state that a listing is asked for, by name or by number; empty when there is no such.
std::string WantedState(const State& state, const Command& command) {
    if (command.parameters.empty()) return kStateNames[0];
    if (state.modes.cmgf == 1) return command.Text(0);
    const auto number = command.Number(0, 0);
    const bool known = number && *number >= 0 && *number < static_cast<int>(std::size(kStateNames));
    return known ? kStateNames[*number] : "";
}

Reply Prompt(State& state, Draft draft) {
    state.draft = std::move(draft);
    Reply reply = Ok();
    reply.prompt = true;
    reply.delay = state.prompt_delay;
    return reply;
}

Reply Slowly(Reply reply, Micros delay) {
    reply.delay = delay;
    return reply;
}

}  // namespace

std::optional<Reply> HandleMessageFormat(State& state, const Command& command) {
    if (command.form == Form::kRead) return Info("+CMGF: " + std::to_string(state.modes.cmgf));
    if (command.form == Form::kTest) return Info("+CMGF: (0,1)");
    if (command.form != Form::kSet) return std::nullopt;
    const auto mode = command.Number(0, 0);
    if (!mode || *mode < 0 || *mode > 1) return CmsError(kCmsBadTextParameter);
    if (*mode == 1 && state.Setting("text-mode") == "off") return Error();
    state.modes.cmgf = *mode;
    return Ok();
}

std::optional<Reply> HandleMessageList(State& state, const Command& command) {
    if (command.form == Form::kTest) {
        return Info("+CMGL: (\"REC UNREAD\",\"REC READ\",\"STO UNSENT\",\"STO SENT\",\"ALL\")");
    }
    if (command.form == Form::kRead) return std::nullopt;
    if (const auto error = SimInTheWay(state)) return error;
    const auto indexes = state.sms.Matching(WantedState(state, command));
    if (!indexes) return CmsError(kCmsBadTextParameter);
    std::string list;
    for (const int index : *indexes) {
        if (!list.empty()) list += "\r\n";
        list += ListingEntry(state, index);
        state.sms.MarkRead(index);
    }
    Reply reply = Slowly(Info(list), 50 * kMillisecond);
    reply.is_list = true;
    reply.tight = state.Setting("form.listing") == "tight-end";
    return reply;
}

std::optional<Reply> HandleMessageRead(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    if (const auto error = SimInTheWay(state)) return error;
    const auto index = command.Number(0, 0);
    const StoredSms* message = index ? state.sms.Find(*index) : nullptr;
    if (message == nullptr) return CmsError(kCmsBadIndex);
    const std::string text = ReadingEntry(state, *message);
    state.sms.MarkRead(*index);
    return Info(text);
}

std::optional<Reply> HandleMessageDelete(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    if (const auto error = SimInTheWay(state)) return error;
    const auto index = command.Number(0, 0);
    const auto flag = command.Number(1, 0);
    if (!index || !flag || *flag < 0 || *flag > 4) return CmsError(kCmsBadTextParameter);
    const bool refuses_flags = state.Setting("form.delete") == "index-only";
    if (refuses_flags && command.parameters.size() > 1) return CmsError(kCmsUnknown);
    if (!state.sms.Delete(*index, *flag)) return CmsError(kCmsBadIndex);
    return Slowly(Ok(), 20 * kMillisecond);
}

std::optional<Reply> HandleMessageSend(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    if (const auto error = SimInTheWay(state)) return error;
    Draft draft;
    if (state.modes.cmgf == 1) {
        if (!IsNumber(command.Text(0))) return CmsError(kCmsBadTextParameter);
        draft.to = command.Text(0);
    } else {
        const auto length = command.Number(0, 0);
        if (!length || *length <= 0) return CmsError(kCmsBadPduParameter);
        draft.pdu_length = *length;
    }
    if (TakeFailure(state, true)) return CmsError(state.sms_failure.code);
    return Prompt(state, std::move(draft));
}

// There is one memory, that of the SIM.
std::optional<Reply> HandleMessageMemory(State& state, const Command& command) {
    const int used = state.sms.Used();
    const int capacity = state.sms.Capacity();
    switch (command.form) {
        case Form::kTest:
            return Info("+CPMS: (\"SM\"),(\"SM\"),(\"SM\")");
        case Form::kRead:
            return Info(Print("+CPMS: \"SM\",%d,%d,\"SM\",%d,%d,\"SM\",%d,%d", used, capacity, used,
                              capacity, used, capacity));
        case Form::kSet:
            for (const std::string& memory : command.parameters) {
                if (memory != "SM") return CmsError(kCmsNotAllowed);
            }
            return Info(
                Print("+CPMS: %d,%d,%d,%d,%d,%d", used, capacity, used, capacity, used, capacity));
        case Form::kExecute:
            break;
    }
    return std::nullopt;
}

Reply FinishMessage(State& state, const std::string& body) {
    Submitted message{state.draft.to, body};
    if (state.draft.pdu_length > 0) {
        const auto submitted = ReadSubmitPdu(Trim(body), state.draft.pdu_length);
        if (!submitted) return CmsError(kCmsBadPduParameter);
        message = *submitted;
    }
    if (TakeFailure(state, false)) {
        return Slowly(CmsError(state.sms_failure.code), state.send_delay);
    }
    if (!state.radio.HasService()) return Slowly(CmsError(kCmsNoNetwork), state.send_delay);
    state.sent.push_back({message.to, message.text, state.now});
    // The reference counts through one octet, as the network's does.
    state.next_reference = (state.next_reference + 1) % 256;
    return Slowly(Info("+CMGS: " + std::to_string(state.next_reference)), state.send_delay);
}

}  // namespace sim
