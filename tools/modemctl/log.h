// modemctl log: what the daemon said, as a timeline in plain words.
#pragma once

#include "modemctl/command_line.h"

namespace modemctl {

extern const Subcommand kLogCommand;

// A whole log line, or what the daemon said of it, cut to the latter.
std::string DaemonText(const std::string& line, std::time_t now);

}  // namespace modemctl
