// What the daemon's shell command lines do when a scenario does not say otherwise.
#pragma once

#include <string>

#include "rig/files.h"

namespace rig {

// Returns the exit status.
//
// Commands that would reach for the network, for processes, for the clock or for the modem's power
// (ifconfig, udhcpc, kill, ping, date, hwclock, ResetPCMCIA) do nothing and succeed. Plain touch,
// mkdir -p, mv -f, rm -f and echo -n lines are done here, without a shell. Any other line, one
// with quotes for instance, is run by a real shell in the private root.
int RunShellLine(const std::string& line, Files& files);

}  // namespace rig
