// One copy of the daemon at a time, by way of the pid file.
#pragma once

#include <string>

// The process id in the file; 0 when there is no file or no number in it.
int ReadStoredPid(const std::string& pid_file);

// True when the process exists and the path it was started by holds the program's name.
bool IsRunningCopy(int pid, const std::string& program_name);

// Ends the process with status -1 when another copy runs or holds the lock on the pid file; else
// takes the lock for the rest of the run and writes the own id to the file, or goes on silently
// without one when it cannot be opened.
void EnforceSingleInstance(const std::string& pid_file, const std::string& program_name);
