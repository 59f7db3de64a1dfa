// The daemon's arguments as a story writes them, and what they say about the modem.
#pragma once

#include <string>
#include <vector>

namespace rig {

// Divided by blanks; the usual device is added when no word is one. Throws when a word is an option
// that the daemon does not know.
std::vector<std::string> ArgumentsOf(const std::string& line);

// The path on which the daemon looks for its port; the usual one when it is given none.
std::string DeviceOf(const std::vector<std::string>& arguments);
// The profile of the modem that the last card option names, as the daemon chooses.
std::string ProfileOf(const std::vector<std::string>& arguments);

}  // namespace rig
