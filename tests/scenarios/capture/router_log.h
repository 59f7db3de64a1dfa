// The system log of a router on which a daemon of the rig has lived, as a file.
#pragma once

#include <string>

#include "rig/world.h"

enum class LogForm { kRsyslog, kClassic, kLogread };

// Every line of the daemon, among those of other programs.
std::string RouterLog(const rig::World& world, LogForm form);
