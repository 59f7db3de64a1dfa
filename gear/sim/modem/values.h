// The names that a profile's answers can hold in braces, as in "+CSQ: {csq},{ber}": live values of
// the modem's state, or settings of the profile.
#pragma once

#include <string>
#include <string_view>

#include "sim/modem/state.h"

namespace sim {

bool IsLiveValue(const std::string& name);

// The live value or setting `name`; empty when there is none.
std::string Value(const State& state, const std::string& name);

// `text` with every {name} replaced. A line that names an empty value is not sent at all: the
// result is then false and `line` is left empty.
bool Expand(const State& state, std::string_view text, std::string* line);

}  // namespace sim
