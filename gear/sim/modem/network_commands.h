// Commands of registration, PDP contexts, the data call and the operator list.
#pragma once

#include "sim/modem/commands.h"

namespace sim {

std::optional<Reply> HandleRegistrationMode(State& state, const Command& command);
std::optional<Reply> HandleOperator(State& state, const Command& command);
std::optional<Reply> HandleContexts(State& state, const Command& command);
std::optional<Reply> HandleProfileApn(State& state, const Command& command);
std::optional<Reply> HandleCallConnect(State& state, const Command& command);
std::optional<Reply> HandleCallDisconnect(State& state, const Command& command);
std::optional<Reply> HandleOperatorNames(State& state, const Command& command);

}  // namespace sim
