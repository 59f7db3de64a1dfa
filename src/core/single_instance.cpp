// The pid file tells who runs; a lock on it, held until the process ends, decides between two that
// were started in the same instant.

#include "core/single_instance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "support/file_reader.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr std::size_t kLongestCommandLine = 255;

bool Exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

[[noreturn]] void GiveWay(const std::string& program_name) {
    Log("Another %s process is already running, exiting", program_name.c_str());
    std::exit(-1);
}

// False when another process holds the lock. The descriptor stays open on purpose; a file that
// cannot be opened, or a file system without locks, keeps nobody from running.
bool LockPidFile(const std::string& pid_file) {
    const int fd =
        open(pid_file.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    return fd < 0 || flock(fd, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

// The own id is no other copy: in a container, or on a router that starts in the same order every
// time, the id that a crash left behind comes round again.
bool IsAnotherCopy(int pid, const std::string& program_name) {
    return pid != static_cast<int>(getpid()) && IsRunningCopy(pid, program_name);
}

void WritePidFile(const std::string& pid_file) {
    const int fd =
        open(pid_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0) return;
    const std::string pid = Format("%d", static_cast<int>(getpid()));
    Log("Writing pid %s to pidfile '%s'", pid.c_str(), pid_file.c_str());
    const ssize_t ignored = write(fd, pid.data(), pid.size());
    static_cast<void>(ignored);
    close(fd);
}

}  // namespace

int ReadStoredPid(const std::string& pid_file) {
    std::string text;
    ReadTextFile(pid_file, LastCharacter::kAsItIs, text);
    return ToInt(text);
}

bool IsRunningCopy(int pid, const std::string& program_name) {
    const std::string directory = Format("/proc/%d", pid);
    std::string command_line;
    if (!Exists(directory)) return false;
    if (!ReadTextFile(directory + "/cmdline", LastCharacter::kAsItIs, command_line)) return false;
    // Its first element, up to the zero byte, is the program's path as it was started.
    const std::string started_as = command_line.substr(0, kLongestCommandLine).c_str();
    return Contains(started_as, program_name);
}

void EnforceSingleInstance(const std::string& pid_file, const std::string& program_name) {
    if (Exists(pid_file) && IsAnotherCopy(ReadStoredPid(pid_file), program_name)) {
        GiveWay(program_name);
    }
    if (!LockPidFile(pid_file)) GiveWay(program_name);
    WritePidFile(pid_file);
}
