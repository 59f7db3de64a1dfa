#include "rig/program.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

namespace rig {

namespace {

// The file that the dynamic loader takes for the sanitizer's library, "" when none is needed.
std::string FindSanitizer(const std::string& program) {
    const std::string command = "LD_TRACE_LOADED_OBJECTS=1 '" + program + "' 2>/dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return "";
    std::string found;
    char line[1024];
    while (std::fgets(line, sizeof(line), pipe) != nullptr) {
        const std::string text = line;
        const auto start = text.find("=> ");
        const auto end = text.find(" (0x");
        if (text.find("libasan.so") == std::string::npos || start == std::string::npos ||
            end == std::string::npos) {
            continue;
        }
        found = text.substr(start + 3, end - start - 3);
    }
    pclose(pipe);
    return found;
}

}  // namespace

std::string DaemonProgram() {
    const char* program = std::getenv("MODEMD");
    return program != nullptr ? program : RIG_DAEMON;
}

std::string PreloadList(const std::string& program) {
    static std::map<std::string, std::string> sanitizers;
    if (sanitizers.count(program) == 0) sanitizers[program] = FindSanitizer(program);
    const std::string& sanitizer = sanitizers[program];
    return sanitizer.empty() ? RIG_PRELOAD : sanitizer + ":" + RIG_PRELOAD;
}

long DaemonMemory(const std::string& line) {
    namespace fs = std::filesystem;
    const fs::path program = fs::canonical(DaemonProgram());
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::error_code unreadable;
        if (fs::read_symlink(entry.path() / "exe", unreadable) != program) continue;
        std::ifstream status(entry.path() / "status");
        std::string word;
        while (status >> word) {
            if (word != line + ":") continue;
            long kilobytes = 0;
            status >> kilobytes;
            return kilobytes;
        }
    }
    return 0;
}

std::string TestProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

}  // namespace rig
