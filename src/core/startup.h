// One long sequence, from the command line to the first status files.
#pragma once

// Everything before the main loop. Ends the process when no device path is given (status 1) or a
// copy is already running (status -1). A port that cannot be opened is left to the main loop.
void StartUp(int argc, const char* const* argv);
