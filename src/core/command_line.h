// The daemon's arguments: options and the device path, in any order.
#pragma once

#include <string>

// The text behind the last "/" of argv[0]; the whole of it when nothing stands behind the slash.
std::string ProgramNameOf(const std::string& argv0);

// Fills the card type, the query form, the debug level and g_c_PortPath. False when no device path
// is among the arguments.
bool ReadArguments(int argc, const char* const* argv);

// How to start the daemon, for a person: the only text that ever goes to standard error.
void PrintUsage(const std::string& program_name);
