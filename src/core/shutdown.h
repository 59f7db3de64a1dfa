// The ways out: signals and the clean-up.
#pragma once

// SIGINT, SIGHUP, SIGTERM. Each handler only sets its flag.
void InstallSignalHandlers();

// Acts on a flag that is set, and then does not return. SIGINT and SIGTERM win over SIGHUP, which
// also resets the modem.
void CheckSignals();

// Removes the status files, takes the LTE link down, and exits with status 0.
[[noreturn]] void CleanupAndExit();
