// The commands that act on the modem's state. What merely tells the state is profile data.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/modem/dialogue.h"
#include "sim/modem/state.h"

namespace sim {

// One command, taken apart: "AT+CREG=2" has the head "+CREG", the form kSet and one parameter.
struct Command {
    enum class Form { kExecute, kRead, kTest, kSet };
    std::string head;
    Form form;
    std::vector<std::string> parameters;  // without their quotes

    // Parameter `index` (from 0) as a number; `missing` when it is empty or not given, nothing
    // when it is no number.
    std::optional<int> Number(std::size_t index, int missing) const;
    std::string Text(std::size_t index) const;  // empty when not given
};

// `command` as NormaliseCommand leaves it, with its "AT".
Command ParseCommand(const std::string& command);

// Nothing when the modem does not know the command in this form.
std::optional<Reply> RunBuiltIn(State& state, const std::string& command);

// A row of the table in commands.cpp; nothing when the command is not known in this form.
using Handler = std::optional<Reply> (*)(State&, const Command&);

}  // namespace sim
