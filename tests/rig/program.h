// Which program the scenarios run, and what is loaded before it.
#pragma once

#include <string>

namespace rig {

// The daemon: environment MODEMD, else the one of this build.
std::string DaemonProgram();
// The value of LD_PRELOAD for it: the rig's library, behind the sanitizer's if it needs one.
std::string PreloadList(const std::string& program);
// The running test program's own path.
std::string TestProgram();

}  // namespace rig
