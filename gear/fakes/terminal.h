// A terminal in the place of a file: whoever opens it must not be given it.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>

namespace fake {

// Whether a process without a terminal of its own gets the one that `use` opens: a hang-up there
// would be its own, then.
inline bool GetsTheTerminal(const std::function<void(const std::string& path)>& use) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    grantpt(master);
    unlockpt(master);
    const std::string path = ptsname(master);
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        use(path);
        _exit(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC) >= 0 ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(master);
    return !WIFEXITED(status) || WEXITSTATUS(status) != 0;
}

}  // namespace fake
