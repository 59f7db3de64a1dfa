#include "rig/private_root.h"

#include <fcntl.h>
#include <ftw.h>
#include <linux/capability.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace rig {

namespace {

namespace fs = std::filesystem;

const char* const kCovered[] = {"/var/log", "/var/run", "/tmp"};
const char* const kEmptied[] = {"/var/log", "/var/run", "/tmp", "/etc/kvt", "/etc/ssh"};

bool g_private = false;

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

void WriteProcFile(const char* path, const std::string& text) {
    const int fd = open(path, O_WRONLY | O_CLOEXEC);
    const bool ok =
        fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (fd >= 0) close(fd);
    if (!ok) Fail(path);
}

// Root needs no user namespace, unless it is a container's root without the right to unshare.
void EnterNamespaces() {
    constexpr int kSpaces = CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWNET;
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (user == 0 && unshare(kSpaces) == 0) return;
    if (unshare(CLONE_NEWUSER | kSpaces) != 0) {
        Fail("the kernel gives this user no private namespaces (unshare)");
    }
    WriteProcFile("/proc/self/setgroups", "deny");
    WriteProcFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    WriteProcFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

void DropClockRight() {
    prctl(PR_CAPBSET_DROP, CAP_SYS_TIME, 0, 0, 0);
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    if (syscall(SYS_capget, &header, data) != 0) Fail("capget");
    const auto keep = ~(1U << CAP_SYS_TIME);
    data[0].effective &= keep;
    data[0].permitted &= keep;
    data[0].inheritable &= keep;
    if (syscall(SYS_capset, &header, data) != 0) Fail("capset");
}

void Mount(const char* source, const std::string& target, const char* type, unsigned long flags,
           const char* options) {
    if (mount(source, target.c_str(), type, flags, options) != 0) Fail("mount " + target);
}

void MountMemory(const std::string& target, const char* options) {
    Mount("private", target, "tmpfs", MS_NOSUID | MS_NODEV, options);
}

bool LiesIn(const std::string& path, const std::string& folder) {
    return path.compare(0, folder.size() + 1, folder + "/") == 0;
}

// Covers a folder, but keeps those in it that are wanted.
void Cover(const std::string& folder, const std::vector<std::string>& keep) {
    struct Kept {
        std::string path;
        int fd;
    };
    std::vector<Kept> kept;
    for (const std::string& path : keep) {
        if (!LiesIn(path, folder)) continue;
        const int fd = open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0) kept.push_back({path, fd});
    }
    MountMemory(folder, folder == "/tmp" ? "mode=1777,size=75%" : "mode=755,size=75%");
    for (const Kept& one : kept) {
        fs::create_directories(one.path);
        const std::string source = "/proc/self/fd/" + std::to_string(one.fd);
        Mount(source.c_str(), one.path, nullptr, MS_BIND | MS_REC, nullptr);
        close(one.fd);
    }
}

// /etc holds only what programs need in order to run, and the daemon's two folders.
void CoverEtc() {
    const char* const needed[] = {"/etc/passwd",        "/etc/group",      "/etc/nsswitch.conf",
                                  "/etc/ld.so.cache",   "/etc/ld.so.conf", "/etc/localtime",
                                  "/etc/ld.so.preload", "/etc/shells"};
    std::vector<std::pair<std::string, std::string>> files;
    for (const char* path : needed) {
        std::ifstream file(path, std::ios::binary);
        if (!file) continue;
        files.emplace_back(path, std::string(std::istreambuf_iterator<char>(file), {}));
    }
    MountMemory("/etc", "mode=755");
    for (const auto& [path, text] : files) std::ofstream(path, std::ios::binary) << text;
    fs::create_directory("/etc/kvt");
    fs::create_directory("/etc/ssh");
}

void BuildRoot(const std::vector<std::string>& keep) {
    // In a plain chroot the root is a folder like any other.
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        Fail("the root folder is no mount point of its own that may be made private");
    }
    CoverEtc();
    for (const char* folder : kCovered) Cover(fs::canonical(folder), keep);
    // A sandbox may refuse a fresh /proc; only the leak checker misses it.
    if (mount("proc", "/proc", "proc", 0, nullptr) != 0) std::fprintf(stderr, "no private /proc\n");
}

int WaitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int Guarded(const std::function<int()>& body, int status_of_trouble) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        return body();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "private root: %s\n", error.what());
        return status_of_trouble;
    }
}

// The tests' process leaves by exit, so that its own checks at the end run; those between make the
// root and cannot run any checks, since they could start no thread.
enum class Child { kTests, kBetween };

int InChild(Child kind, const std::function<int()>& body) {
    const pid_t child = fork();
    if (child < 0) Fail("fork");
    if (child == 0) {
        const int status = Guarded(body, kind == Child::kTests ? 1 : kNoPrivateRoot);
        if (kind == Child::kTests) exit(status);
        std::fflush(nullptr);
        _exit(status);
    }
    return WaitFor(child);
}

int RemoveEntry(const char* path, const struct stat*, int, FTW* where) {
    // What cannot be removed is the mount point of a kept folder, or leads to one.
    if (where->level > 0) static_cast<void>(std::remove(path));
    return 0;
}

}  // namespace

int RunInPrivateRoot(std::vector<std::string> keep, const std::function<int()>& body) {
    keep.push_back(fs::current_path());
    const auto run_tests = [&] {
        g_private = true;
        return body();
    };
    // The first process of a pid namespace takes no signals that it has no handler for, so the
    // tests run in its child.
    const auto be_first = [&] {
        BuildRoot(keep);
        DropClockRight();
        return InChild(Child::kTests, run_tests);
    };
    const auto enter = [&] {
        EnterNamespaces();
        return InChild(Child::kBetween, be_first);
    };
    std::fflush(nullptr);
    return InChild(Child::kBetween, enter);
}

void EmptyPrivateFolders() {
    if (!g_private) return;
    for (const char* folder : kEmptied) {
        const std::string path = fs::canonical(folder);
        nftw(path.c_str(), RemoveEntry, 32, FTW_DEPTH | FTW_PHYS | FTW_MOUNT);
    }
}

bool InPrivateRoot() {
    return g_private;
}

}  // namespace rig
