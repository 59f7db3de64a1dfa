#include "modemctl/handler.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "modemctl/time_text.h"
#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr useconds_t kLookPause = 20000;  // microseconds
constexpr long long kGrace = 5;           // seconds between SIGTERM and SIGKILL

// The text in a file that has no name any more: it can be of any size, and a program that does not
// read it blocks nobody.
int TextInput(const std::string& directory, const std::string& text) {
    std::string path = directory + "/input-XXXXXX";
    const int fd = mkstemp(&path[0]);
    if (fd < 0) return -1;
    unlink(path.c_str());
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    const ssize_t count = write(fd, text.data(), text.size());
    if (count == static_cast<ssize_t>(text.size()) && lseek(fd, 0, SEEK_SET) == 0) return fd;
    close(fd);
    return -1;
}

// Foreign bytes are escaped: a variable holds one line of printable characters, whoever wrote it.
void SetVariable(const char* name, const std::string& value) {
    setenv(name, Escaped(value, true).c_str(), 1);
}

[[noreturn]] void Become(const std::string& command, const SpoolEntry& entry,
                         const SpoolMessage& message, int tries, int input) {
    setpgid(0, 0);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(signal, SIG_DFL);
    SetVariable("MODEMCTL_FROM", message.number);
    SetVariable("MODEMCTL_TIME", message.time);
    SetVariable("MODEMCTL_RECEIVED", IsoTime(entry.changed));
    SetVariable("MODEMCTL_NAME", entry.name);
    SetVariable("MODEMCTL_TRY", Format("%d", tries));
    dup2(input, STDIN_FILENO);
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
}

long long Seconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

// True when the program ended by itself, in time, with status 0. Whatever it has left running in
// its process group is ended with it when its time is over.
bool EndsWell(pid_t program, long long time_limit) {
    const long long start = Seconds();
    bool told = false;
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(program, &status, WNOHANG);
        if (ended == program) return !told && WIFEXITED(status) && WEXITSTATUS(status) == 0;
        if (ended < 0 && errno != EINTR) return false;
        const long long spent = Seconds() - start;
        if (!told && spent >= time_limit) {
            told = true;
            kill(-program, SIGTERM);
        } else if (spent >= time_limit + kGrace) {
            kill(-program, SIGKILL);
        }
        usleep(kLookPause);
    }
}

// The process that looks after the run. What ends modemctl does not end it; it holds the lock on
// the state until the end is noted.
[[noreturn]] void LookAfter(const HandlerOrder& order, const SpoolEntry& entry,
                            const SpoolMessage& message, FollowState& state, int input) {
    setsid();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(signal, SIG_IGN);
    const std::string key = MessageKey(entry);
    const int tries = state.Get(key).tries;
    const pid_t program = fork();
    if (program == 0) Become(order.command, entry, message, tries, input);
    if (program > 0) setpgid(program, program);
    const bool well = program > 0 && EndsWell(program, order.time_limit);
    state.Note(key, well ? Handling::kDone : Handling::kFailed);
    _exit(0);
}

}  // namespace

void RunHandler(const HandlerOrder& order, const SpoolEntry& entry, const SpoolMessage& message,
                FollowState& state) {
    const std::string key = MessageKey(entry);
    const int input = TextInput(state.Directory(), message.text);
    if (input < 0 || !state.Note(key, Handling::kBegun)) {
        if (input >= 0) close(input);
        return;  // no room to note it: nothing is run that could be run again
    }
    const pid_t keeper = fork();
    if (keeper == 0) LookAfter(order, entry, message, state, input);
    close(input);
    if (keeper < 0) {
        state.Note(key, Handling::kFailed);
        return;
    }
    while (waitpid(keeper, nullptr, 0) < 0 && errno == EINTR) continue;
    state.Reload();
}

}  // namespace modemctl
