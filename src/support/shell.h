// The one way to run a command line, and the one way to put a foreign word into it.
#pragma once

#include <string>

// Runs the line with system() and returns its result: 0 for success, else the wait status, or -1
// when no shell could be started. Most callers ignore it, as the lines end in "&> /dev/null".
int RunShell(const std::string& command_line);

// The word as the shell must see it to read it as one word. A word of letters, digits and
// "./_-" comes back as it is; any other is put in single quotes.
std::string ShellWord(const std::string& word);
