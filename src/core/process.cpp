// The process boundary on the way in. On the way out, every descriptor that the daemon opens is
// close-on-exec: a udhcpc that outlives it must hold neither the port nor the log.

#include "core/process.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

constexpr mode_t kOthersWrite = 022;

// In ascending order, so that each open takes the very number that is missing. A router whose
// /dev/null is not there yet gets the root directory instead: it, too, swallows nothing but keeps
// the number.
void FillStandardDescriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
        if (open("/dev/null", O_RDWR) < 0) static_cast<void>(open("/", O_RDONLY | O_DIRECTORY));
    }
}

void RestoreSignals() {
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) != 0 || action.sa_handler != SIG_IGN) continue;
        action.sa_handler = SIG_DFL;
        sigaction(number, &action, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace

void PrepareProcess() {
    FillStandardDescriptors();
    RestoreSignals();
    umask(umask(kOthersWrite) | kOthersWrite);
}
