// Commands of the message store and the sender.
#pragma once

#include "sim/modem/commands.h"

namespace sim {

std::optional<Reply> HandleMessageFormat(State& state, const Command& command);
std::optional<Reply> HandleMessageList(State& state, const Command& command);
std::optional<Reply> HandleMessageRead(State& state, const Command& command);
std::optional<Reply> HandleMessageDelete(State& state, const Command& command);
std::optional<Reply> HandleMessageMemory(State& state, const Command& command);
std::optional<Reply> HandleMessageSend(State& state, const Command& command);

// The host has given the body that a prompt asked for.
Reply FinishMessage(State& state, const std::string& body);

}  // namespace sim
