#include "status_test.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdarg>
#include <iterator>

#include "fakes/libc.h"

namespace {

constexpr char kVarLog[] = "/var/log/";

std::string g_var_log;  // where the files of /var/log really are; empty outside the tests
Lines g_file_steps;

std::string RealPath(const char* path) {
    const std::string text = path;
    if (g_var_log.empty() || text.compare(0, sizeof(kVarLog) - 1, kVarLog) != 0) return text;
    return g_var_log + text.substr(sizeof(kVarLog) - 2);
}

void NoteStep(const char* step, const char* path, const std::string& real_path) {
    if (real_path == path) return;
    g_file_steps.push_back(step + std::string(path).substr(sizeof(kVarLog) - 1));
}

int OpenRealPath(const char* path, int flags, mode_t mode) {
    const std::string real_path = RealPath(path);
    if ((flags & O_ACCMODE) != O_RDONLY) NoteStep("write ", path, real_path);
    return openat(AT_FDCWD, real_path.c_str(), flags, mode);
}

}  // namespace

// The daemon's file calls, caught by standing in front of libc at link time.
extern "C" {

int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    return OpenRealPath(path, flags, mode);
}

int rename(const char* from, const char* to) LIBC_NOEXCEPT {
    const std::string real_to = RealPath(to);
    NoteStep("rename ", to, real_to);
    return renameat(AT_FDCWD, RealPath(from).c_str(), AT_FDCWD, real_to.c_str());
}

}  // extern "C"

std::string Answered(const Lines& lines) {
    std::string answer = "\r\n";
    for (const std::string& line : lines) answer += line + "\r\n";
    return answer + "\r\nOK\r\n";
}

StatusTest::StatusTest() {
    g_var_log = Folder() + "/var_log";
    g_file_steps.clear();
    mkdir(g_var_log.c_str(), 0755);
}

StatusTest::~StatusTest() {
    g_var_log.clear();
}

std::string StatusTest::Published(const std::string& name) const {
    const std::string path = g_var_log + "/" + name;
    if (access(path.c_str(), F_OK) != 0) return "(missing)";
    return ReadAll(path);
}

const Lines& StatusTest::FileSteps() {
    return g_file_steps;
}

Lines StatusTest::LogLinesWith(const std::string& text) const {
    Lines lines;
    std::copy_if(world.log.begin(), world.log.end(), std::back_inserter(lines),
                 [&](const std::string& line) { return line.find(text) != std::string::npos; });
    return lines;
}

Lines StatusTest::LogAtLevel(int level, const std::function<void()>& action) {
    const int before = g_i_DebugLevel;
    g_i_DebugLevel = level;
    world.log.clear();
    action();
    g_i_DebugLevel = before;
    Lines lines;
    lines.swap(world.log);
    return lines;
}

Levels StatusTest::LevelsThatLog(const std::string& line, const std::function<void()>& action) {
    Levels levels;
    for (int level = -1; level <= 4; ++level) {
        const Lines log = LogAtLevel(level, action);
        if (std::find(log.begin(), log.end(), line) != log.end()) levels.push_back(level);
    }
    return levels;
}

Cards StatusTest::CardsAsked(const std::function<void()>& query) {
    Cards asked;
    for (const int card : kEveryCard) {
        g_i_CardType = card;
        world.heard.clear();
        query();
        if (!world.Commands().empty()) asked.push_back(card);
    }
    return asked;
}
