// Which program the scenarios run, and what is loaded before it.
#pragma once

#include <string>

namespace rig {

// Names a folder that gets the whole trace of every world, a file each; see scripts/compare-traces.
constexpr char kTracesVariable[] = "RIG_TRACES";

// The daemon: environment MODEMD, else the one of this build.
std::string DaemonProgram();
// The value of LD_PRELOAD for it: the rig's library, behind the sanitizer's if it needs one.
std::string PreloadList(const std::string& program);
// KiB, from a line of the running daemon's /proc/PID/status such as "VmPeak"; 0 when none runs.
long DaemonMemory(const std::string& line);
// The running test program's own path.
std::string TestProgram();

}  // namespace rig
