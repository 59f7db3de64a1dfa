// system(), and the quotes around a foreign word.

#include "support/shell.h"

#include <cstdlib>

int RunShell(const std::string& command_line) {
    return std::system(command_line.c_str());
}

std::string ShellWord(const std::string& word) {
    constexpr char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789./_-";
    if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) return word;

    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";  // Leave the quotes, one escaped quote, back into quotes.
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}
