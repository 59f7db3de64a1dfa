#include "sim/modem/message_commands.h"

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

Reply Prompt(State& state, std::string number) {
    state.draft_to = std::move(number);
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
    if (state.modes.cmgf == 0) return CmsError(kCmsNotAllowed);
    const std::string which =
        command.parameters.empty() ? std::string("REC UNREAD") : command.Text(0);
    const auto indexes = state.sms.Matching(which);
    if (!indexes) return CmsError(kCmsBadTextParameter);
    std::string list;
    for (const int index : *indexes) {
        if (!list.empty()) list += "\r\n";
        list += state.sms.ListEntry(index);
        state.sms.MarkRead(index);
    }
    return Slowly(Info(list), 50 * kMillisecond);
}

std::optional<Reply> HandleMessageRead(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    if (const auto error = SimInTheWay(state)) return error;
    if (state.modes.cmgf == 0) return CmsError(kCmsNotAllowed);
    const auto index = command.Number(0, 0);
    const StoredSms* message = index ? state.sms.Find(*index) : nullptr;
    if (message == nullptr) return CmsError(kCmsBadIndex);
    std::string text = std::string("+CMGR: \"") + SmsStateName(message->state) + "\",\"" +
                       message->number + "\",,\"" + message->stamp + "\"\r\n" + message->text;
    state.sms.MarkRead(*index);
    return Info(text);
}

std::optional<Reply> HandleMessageDelete(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    if (const auto error = SimInTheWay(state)) return error;
    const auto index = command.Number(0, 0);
    const auto flag = command.Number(1, 0);
    if (!index || !flag || *flag < 0 || *flag > 4) return CmsError(kCmsBadTextParameter);
    if (!state.sms.Delete(*index, *flag)) return CmsError(kCmsBadIndex);
    return Slowly(Ok(), 20 * kMillisecond);
}

std::optional<Reply> HandleMessageSend(State& state, const Command& command) {
    if (command.form != Form::kSet) return std::nullopt;
    if (const auto error = SimInTheWay(state)) return error;
    if (state.modes.cmgf == 0) return CmsError(kCmsNotAllowed);
    if (!IsNumber(command.Text(0))) return CmsError(kCmsBadTextParameter);
    if (TakeFailure(state, true)) return CmsError(state.sms_failure.code);
    return Prompt(state, command.Text(0));
}

Reply FinishMessage(State& state, const std::string& body) {
    if (TakeFailure(state, false)) {
        return Slowly(CmsError(state.sms_failure.code), state.send_delay);
    }
    if (!state.radio.HasService()) return Slowly(CmsError(kCmsNoNetwork), state.send_delay);
    state.sent.push_back({state.draft_to, body, state.now});
    // The reference counts through one octet, as the network's does.
    state.next_reference = (state.next_reference + 1) % 256;
    return Slowly(Info("+CMGS: " + std::to_string(state.next_reference)), state.send_delay);
}

}  // namespace sim
