// The command line: one subcommand, its options, its arguments. A subcommand describes itself in a
// table row; parsing, --help and complaints are made of it.
#pragma once

#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "modemctl/terminal.h"
#include "modemctl/tree.h"

namespace modemctl {

struct Option {
    const char* name;      // "--since"
    const char* argument;  // "TIME"; null for a switch
    const char* help;
};

struct Example {
    const char* line;
    const char* what;
};

// All that a subcommand's room needs to know of how it was called.
struct Session {
    std::map<std::string, std::string> options;  // "--since" to its value, "" for a switch
    std::vector<std::string> arguments;
    Tree tree;            // the router's files, or a copy of them
    std::time_t now = 0;  // ages are counted to here
    bool json = false;
    long long max_age = 0;  // seconds, above which data are too old
    Terminal terminal;

    bool Has(const char* option) const { return options.count(option) > 0; }
    std::string Value(const char* option, const std::string& otherwise = "") const;
};

struct Subcommand {
    const char* name;
    const char* synopsis;     // what stands behind the name: "[--page PAGE]"
    const char* summary;      // one line
    const char* description;  // for --help, in lines
    std::vector<Option> options;
    std::vector<Example> examples;
    int most_arguments;
    int (*run)(Session& session);
};

// Reads the arguments, which may mix the subcommand's options with the common ones, and runs the
// subcommand. Returns the exit code; complaints go to standard error.
int RunCommandLine(const std::vector<std::string>& arguments,
                   const std::vector<const Subcommand*>& subcommands);

// The exit code of a command line that was not understood, said on standard error.
int UsageError(const char* subcommand, const std::string& complaint);

// To standard output in one piece. A reader that has gone away ends the program quietly.
void Print(const std::string& text);

}  // namespace modemctl
