#include "rig/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

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

bool Files::Touch(const std::string& path) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    struct stat file = {};
    if (futimens(fd, nullptr) == 0 && fstat(fd, &file) == 0) {
        memory_.file_times.Written(file, WallClock());
    }
    close(fd);
    return true;
}

void Files::SetTimes(const std::string& path, std::int64_t wall) {
    struct stat file = {};
    if (lstat(path.c_str(), &file) != 0) throw std::runtime_error("no file " + path);
    memory_.file_times.Set(file, wall, wall);
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
