#include "rig/shell_effects.h"

#include <fcntl.h>
#include <glob.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "rig/private_root.h"

namespace rig {

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

const char* const kOnlyRecorded[] = {"ifconfig", "udhcpc",  "kill",       "ping",
                                     "date",     "hwclock", "ResetPCMCIA"};
constexpr char kPlainCharacters[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-+=:@%,/ >";

Words SplitAtBlanks(const std::string& line) {
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

bool IsOption(const std::string& word) {
    return word[0] == '-';
}

bool HasOption(const Words& words, std::size_t first) {
    return std::any_of(words.begin() + static_cast<long>(first), words.end(), IsOption);
}

bool IsFolder(const std::string& path) {
    struct stat file = {};
    return stat(path.c_str(), &file) == 0 && S_ISDIR(file.st_mode);
}

int TouchAll(const Words& words, Files& files) {
    int status = 0;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (!files.TryTouch(words[i])) status = 1;
    }
    return status;
}

int MakeFolders(const Words& words) {
    int status = 0;
    for (std::size_t i = 2; i < words.size(); ++i) {
        std::error_code error;
        fs::create_directories(words[i], error);
        if (error || !IsFolder(words[i])) status = 1;
    }
    return status;
}

int RunRealShell(const std::string& line, Files& files) {
    if (!InPrivateRoot()) throw std::logic_error("no private root, not running " + line);
    // The daemon's lines use &>, which busybox and bash read as "both to file".
    const bool busybox = access("/bin/busybox", X_OK) == 0;
    const char* shell = busybox ? "/bin/busybox" : "/bin/bash";
    const char* name = busybox ? "sh" : "bash";
    char* const arguments[] = {const_cast<char*>(name), const_cast<char*>("-c"),
                               const_cast<char*>(line.c_str()), nullptr};
    char* const environment[] = {const_cast<char*>("PATH=/usr/sbin:/usr/bin:/sbin:/bin"), nullptr};

    files.BeginForeignWork();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int fd : {0, 1, 2}) {
        posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_RDWR, 0);
    }
    pid_t child = -1;
    const int error = posix_spawn(&child, shell, &actions, nullptr, arguments, environment);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error(std::string("cannot run ") + shell);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    files.EndForeignWork();
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// As rm -f with a pattern in the last part of the path.
int RemovePattern(const std::string& pattern) {
    glob_t found = {};
    int status = 0;
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
        for (std::size_t i = 0; i < found.gl_pathc; ++i) {
            if (unlink(found.gl_pathv[i]) != 0) status = 1;
        }
    }
    globfree(&found);
    return status;
}

}  // namespace

int RunShellLine(const std::string& line, Files& files) {
    const Words words = SplitAtBlanks(line);
    if (words.empty()) return 0;
    const std::string command = fs::path(words[0]).filename();
    const bool recorded = std::any_of(std::begin(kOnlyRecorded), std::end(kOnlyRecorded),
                                      [&](const char* name) { return command == name; });
    if (recorded) return 0;
    if (!InPrivateRoot()) throw std::logic_error("no private root, not running " + line);
    if (line == "/bin/rm -f /var/log/wireless.*") return RemovePattern("/var/log/wireless.*");
    if (line.find_first_not_of(kPlainCharacters) != std::string::npos) {
        return RunRealShell(line, files);
    }
    const bool redirects = line.find('>') != std::string::npos;
    if (command == "touch" && !redirects && !HasOption(words, 1)) return TouchAll(words, files);
    if (command == "mkdir" && !redirects && words.size() > 2 && words[1] == "-p" &&
        !HasOption(words, 2)) {
        return MakeFolders(words);
    }
    if (line == "/bin/echo -n  > /var/log/lightbar") {
        files.Write("/var/log/lightbar", "");
        return 0;
    }
    return RunRealShell(line, files);
}

}  // namespace rig
