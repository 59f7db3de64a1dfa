// What holds in every story, whatever it is about: the daemon's manners. The world asks at its end.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "rig/protocol.h"

namespace rig {

// Pauses that no step of the daemon's schedule asks for: of a length, or behind a deed, that is
// none of it. "0.100 s behind the shell, 3 times".
std::vector<std::string> NeedlessPauses(const Shared& memory);

// Descriptors of a process that stands in a sleep, beyond those that the daemon keeps: its standard
// ones, the lock on the pid file, its log and the port, once each.
std::vector<std::string> LeakedDescriptors(pid_t process);

// Files of the daemon that others could not read, or could write: all have the mode 0644.
std::vector<std::string> WrongModes();

}  // namespace rig
