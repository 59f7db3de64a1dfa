#include "rig/files.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "rig/copy_text.h"
#include "rig/private_root.h"

namespace rig {

namespace {

namespace fs = std::filesystem;

bool IsBefore(const timespec& a, const timespec& b) {
    return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

timespec KernelTick() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return now;
}

}  // namespace

Files::~Files() {
    for (const std::string& folder : mounts_) umount2(folder.c_str(), MNT_DETACH);
}

void Files::Write(const std::string& path, const std::string& text) {
    if (!InPrivateRoot()) throw std::logic_error("no private root, not writing " + path);
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    struct stat file = {};
    if (stat(path.c_str(), &file) != 0 || static_cast<std::size_t>(file.st_size) != text.size()) {
        throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
    }
    memory_.file_times.Written(file, WallClock());
}

std::string Files::Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool Files::Exists(const std::string& path) {
    struct stat file = {};
    return lstat(path.c_str(), &file) == 0;
}

void Files::Remove(const std::string& path) {
    if (!InPrivateRoot()) throw std::logic_error("no private root, not removing " + path);
    fs::remove_all(path);
}

std::vector<std::string> Files::List(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void Files::Touch(const std::string& path) {
    if (!TryTouch(path)) throw std::runtime_error("cannot touch " + path);
}

bool Files::TryTouch(const std::string& path) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    struct stat file = {};
    if (futimens(fd, nullptr) == 0 && fstat(fd, &file) == 0) {
        memory_.file_times.Written(file, WallClock());
    }
    close(fd);
    return true;
}

void Files::SetAge(const std::string& path, Duration age) {
    struct stat file = {};
    if (lstat(path.c_str(), &file) != 0) throw std::runtime_error("no file " + path);
    const std::int64_t then = WallClock() - age.count();
    memory_.file_times.Set(file, then, then);
}

void Files::Fail(const std::string& path, int error) {
    PathFault* const end = memory_.path_faults + memory_.path_fault_count;
    PathFault* fault = std::find_if(memory_.path_faults, end,
                                    [&](const PathFault& one) { return path == one.path; });
    if (fault == end) {
        if (memory_.path_fault_count == kMostPaths) throw std::logic_error("too many path faults");
        CopyText(fault->path, path);
        ++memory_.path_fault_count;
    }
    fault->error = error;
}

void Files::MountSmall(const std::string& folder, std::size_t bytes) {
    fs::create_directories(folder);
    const std::string options = "mode=777,size=" + std::to_string(bytes);
    if (mount("small", folder.c_str(), "tmpfs", 0, options.c_str()) != 0) {
        throw std::runtime_error("cannot mount on " + folder);
    }
    mounts_.insert(mounts_.begin(), folder);
}

void Files::MountReadOnly(const std::string& folder) {
    constexpr std::size_t kAnySize = 1U << 20;
    MountSmall(folder, kAnySize);
    if (mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
        throw std::runtime_error("cannot make read-only: " + folder);
    }
}

// The kernel stamps files with the time of its last tick; a fresh tick tells earlier work from
// what follows.
void Files::BeginForeignWork() {
    const timespec now = KernelTick();
    do {
        foreign_since_ = KernelTick();
    } while (!IsBefore(now, foreign_since_));
}

void Files::EndForeignWork() {
    for (const char* folder : {"/tmp", "/var/log", "/run", "/etc/kvt"}) {
        std::error_code error;
        fs::recursive_directory_iterator entry(
            folder, fs::directory_options::skip_permission_denied, error);
        struct stat root = {};
        if (error || stat(folder, &root) != 0) continue;
        for (; entry != fs::recursive_directory_iterator(); entry.increment(error)) {
            struct stat file = {};
            if (lstat(entry->path().c_str(), &file) != 0) continue;
            if (file.st_dev != root.st_dev) {  // a kept folder, none of ours
                entry.disable_recursion_pending();
            } else if (memory_.file_times.IsAsSeen(file)) {
                continue;  // Newer kernels stamp finer than their tick, and then ahead of it.
            } else if (!IsBefore(file.st_mtim, foreign_since_)) {
                memory_.file_times.Written(file, WallClock());
            } else if (!IsBefore(file.st_ctim, foreign_since_)) {
                memory_.file_times.StatusChanged(file, WallClock());
            }
        }
    }
}

}  // namespace rig
