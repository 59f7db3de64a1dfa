// System log, shell, sockets and the end of the program.

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <syslog.h>

#include "rig/preload/agent.h"

using namespace rig;

namespace {

char g_line[2U << 20];  // the dump of the largest read in hex has 400,000 characters

// As a datagram socket does when nobody reads: a line that finds no room waits, and a signal only
// makes the C library try again.
void WaitForRoom() {
    constexpr Micros kForNow = 86400 * 1000000LL;
    agent::shared->log_waits = 1;
    while (agent::shared->log_stuck != 0 && agent::shared->log_room == 0) agent::Wait(kForNow);
    agent::shared->log_waits = 0;
    if (agent::shared->log_stuck != 0) --agent::shared->log_room;
}

void LogLine(int priority, const char* format, va_list arguments) {
    const int error = errno;
    WaitForRoom();
    if (!agent::IsKept(Kind::kLog)) return;
    const int size = vsnprintf(g_line, sizeof(g_line), format, arguments);
    const auto most = static_cast<int>(sizeof(g_line)) - 1;
    if (size >= 0) {
        agent::Journal(Kind::kLog, priority, g_line,
                       static_cast<std::size_t>(size < most ? size : most));
    }
    errno = error;
}

}  // namespace

extern "C" {

void openlog(const char* name, int options, int facility) {
    if (!agent::EnterBeside()) RIG_REAL(openlog)(name, options, facility);
}

void closelog() {
    if (!agent::EnterBeside()) RIG_REAL(closelog)();
}

void vsyslog(int priority, const char* format, va_list arguments) {
    if (!agent::EnterBeside()) return;
    LogLine(priority, format, arguments);
}

void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsyslog(priority, format, arguments);
    va_end(arguments);
}

void __vsyslog_chk(int priority, int, const char* format, va_list arguments) {
    vsyslog(priority, format, arguments);
}

void __syslog_chk(int priority, int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsyslog(priority, format, arguments);
    va_end(arguments);
}

int system(const char* command) {
    if (!agent::Enter()) return RIG_REAL(system)(command);
    if (command == nullptr) return 1;
    agent::Ask(Request::kSystem, command);
    agent::NoteDeed(Deed::kShell);
    if (agent::shared->error != 0) errno = agent::shared->error;
    return agent::shared->result;
}

int socket(int domain, int type, int protocol) noexcept {
    if (!agent::Enter()) return RIG_REAL(socket)(domain, type, protocol);
    if ((type & SOCK_CLOEXEC) == 0) agent::NoteInheritable("a socket");
    if (const int error = agent::TakeFault(agent::shared->socket_fault)) {
        errno = error;
        return -1;
    }
    return RIG_REAL(socket)(domain, type, protocol);
}

void exit(int status) noexcept {
    if (agent::Enter()) agent::NoteExit(status);
    RIG_REAL(exit)(status);
    __builtin_unreachable();
}

}  // extern "C"
