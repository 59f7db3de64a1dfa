// modemctl watch: the modem live, on a terminal or as a stream of changes.
#pragma once

#include "modemctl/command_line.h"

namespace modemctl {

extern const Subcommand kWatchCommand;

}  // namespace modemctl
