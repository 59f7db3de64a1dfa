// What the profile says to a command.
#pragma once

#include <optional>
#include <string>

#include "sim/modem/dialogue.h"
#include "sim/modem/profile.h"

namespace sim {

// Nothing when the profile has no answer whose condition holds.
std::optional<Reply> AnswerExactly(const Profile& profile, const State& state,
                                   const std::string& command);
// The answers to whatever begins with some text.
std::optional<Reply> AnswerByPattern(const Profile& profile, const State& state,
                                     const std::string& command);

}  // namespace sim
