// modemctl get: one value of the card statistics, for scripts.
#pragma once

#include "modemctl/command_line.h"

namespace modemctl {

extern const Subcommand kGetCommand;

}  // namespace modemctl
