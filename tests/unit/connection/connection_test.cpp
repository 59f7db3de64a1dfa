#include "connection_test.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "fakes/libc.h"
#include "state/settings.h"

namespace {

constexpr std::int64_t kShownPause = 100000;  // microseconds

struct Router {
    fake::World* world = nullptr;  // null when no test of this folder runs
    std::string root;
    std::string address;
    bool has_sockets = true;

    Lines story;
    std::size_t logged = 0, ran = 0, heard = 0;  // how much of each has been told
    std::int64_t told_until = 0;

    void Tell() {
        const Lines commands = world->Commands();
        for (; logged < world->log.size(); ++logged) story.push_back("log: " + world->log[logged]);
        for (; ran < world->shell.size(); ++ran) story.push_back("run: " + world->shell[ran]);
        for (; heard < commands.size(); ++heard) story.push_back("modem: " + commands[heard]);
    }

    void TellSleep(std::int64_t now) {
        const std::int64_t slept = now - told_until;
        told_until = now;
        Tell();
        if (slept < kShownPause) return;
        story.push_back("sleep " + std::to_string(slept / 1000) + " ms");
    }

    void TellFile(const std::string& what, const std::string& path) {
        Tell();
        story.push_back(what + ": " + path);
    }

    bool Owns(const std::string& path) const {
        if (world == nullptr) return false;
        for (const char* prefix :
             {"/var/", "/sys/class/net/", "/proc/uptime", "/tmp/udhcpc.", "/tmp/kvtswi."}) {
            if (path.compare(0, std::strlen(prefix), prefix) == 0) return true;
        }
        return false;
    }
};

Router g_router;

std::string Mapped(const char* path) {
    return g_router.Owns(path) ? g_router.root + path : std::string(path);
}

int FlagsOf(const char* mode) {
    const int access = std::strchr(mode, '+') != nullptr ? O_RDWR : O_WRONLY;
    if (mode[0] == 'w') return access | O_CREAT | O_TRUNC;
    if (mode[0] == 'a') return access | O_CREAT | O_APPEND;
    return access == O_RDWR ? O_RDWR : O_RDONLY;
}

int AnswerAddressQuery(void* argument) {
    auto* request = static_cast<ifreq*>(argument);
    const bool asks_for_it =
        std::string(request->ifr_name) == "wwan0" && request->ifr_addr.sa_family == AF_INET;
    if (!asks_for_it || g_router.address.empty()) {
        errno = EADDRNOTAVAIL;
        return -1;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    inet_pton(AF_INET, g_router.address.c_str(), &address.sin_addr);
    std::memcpy(&request->ifr_addr, &address, sizeof(address));
    return 0;
}

}  // namespace

// File and network calls of the daemon, sent to the router of the running test: each by a call that
// stands behind it, which nobody has replaced.
extern "C" {

int access(const char* path, int mode) LIBC_NOEXCEPT {
    return faccessat(AT_FDCWD, Mapped(path).c_str(), mode, 0);
}

int unlink(const char* path) LIBC_NOEXCEPT {
    if (g_router.Owns(path)) g_router.TellFile("remove", path);
    return unlinkat(AT_FDCWD, Mapped(path).c_str(), 0);
}

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (g_router.Owns(path) && (flags & O_CREAT) != 0) g_router.TellFile("write", path);
    return openat(AT_FDCWD, Mapped(path).c_str(), flags, mode);
}

std::FILE* fopen(const char* path, const char* mode) {
    const int fd = openat(AT_FDCWD, Mapped(path).c_str(), FlagsOf(mode), 0666);
    return fd != -1 ? fdopen(fd, mode) : nullptr;
}

int socket(int domain, int type, int protocol) LIBC_NOEXCEPT {
    if (g_router.world != nullptr && !g_router.has_sockets) {
        errno = EMFILE;
        return -1;
    }
    return static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}

int ioctl(int fd, IoctlRequest request, ...) LIBC_NOEXCEPT {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    const bool open = fcntl(fd, F_GETFD) != -1;
    if (g_router.world != nullptr && request == SIOCGIFADDR && open) {
        return AnswerAddressQuery(argument);
    }
    return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

}  // extern "C"

ConnectionTest::ConnectionTest() {
    for (const char* folder : {"/var/log", "/var/run", "/tmp", "/proc"}) {
        std::filesystem::create_directories(RealPath(folder));
    }
    g_router = Router();
    g_router.world = &world;
    g_router.root = Folder();
    g_router.told_until = world.now_us;
    world.on_sleep = [](std::int64_t now) { g_router.TellSleep(now); };
}

ConnectionTest::~ConnectionTest() {
    g_router = Router();
}

void ConnectionTest::Put(const std::string& path, const std::string& text) {
    const std::filesystem::path real = RealPath(path);
    std::filesystem::create_directories(real.parent_path());
    std::ofstream(real, std::ios::binary) << text;
}

bool ConnectionTest::Exists(const std::string& path) const {
    return std::filesystem::exists(RealPath(path));
}

void ConnectionTest::Remove(const std::string& path) {
    std::filesystem::remove(RealPath(path));
}

void ConnectionTest::SetAddress(const std::string& dotted) {
    g_router.address = dotted;
}

void ConnectionTest::ClearAddress() {
    g_router.address.clear();
}

void ConnectionTest::RefuseSockets() {
    g_router.has_sockets = false;
}

Lines ConnectionTest::Story() {
    g_router.Tell();
    return g_router.story;
}

void ConnectionTest::StartStory() {
    world.Commands();  // Takes in what the modem has not heard yet.
    world.log.clear();
    world.shell.clear();
    world.heard.clear();
    g_router.story.clear();
    g_router.logged = g_router.ran = g_router.heard = 0;
}

Lines ConnectionTest::StoryToExit(const std::function<void()>& action) {
    static int pipe_ends[2];
    if (pipe(pipe_ends) != 0) return {"no pipe"};
    const pid_t child = fork();
    if (child == 0) {
        std::atexit([] {
            g_router.Tell();
            for (const std::string& line : g_router.story)
                dprintf(pipe_ends[1], "%s\n", line.c_str());
        });
        action();
        _exit(99);  // It came back.
    }
    close(pipe_ends[1]);
    std::string text;
    char piece[4096];
    for (ssize_t n = 0; (n = read(pipe_ends[0], piece, sizeof(piece))) > 0;) {
        text.append(piece, static_cast<std::size_t>(n));
    }
    close(pipe_ends[0]);
    int status = 0;
    waitpid(child, &status, 0);

    Lines story;
    for (std::size_t end = 0; (end = text.find('\n')) != std::string::npos;) {
        story.push_back(text.substr(0, end));
        text.erase(0, end + 1);
    }
    story.push_back(WIFEXITED(status) ? "exit " + std::to_string(WEXITSTATUS(status)) : "killed");
    return story;
}

Levels ConnectionTest::LevelsThatLog(const std::string& line, const std::function<void()>& action) {
    Levels levels;
    for (const int level : kAlways) {
        StartStory();
        g_i_DebugLevel = level;
        action();
        if (world.Logged(line)) levels.push_back(level);
    }
    g_i_DebugLevel = 0;
    return levels;
}
