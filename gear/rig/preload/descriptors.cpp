#include "rig/preload/descriptors.h"

#include <ctype.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <initializer_list>

#include "rig/preload/agent.h"

namespace rig::agent {

namespace {

constexpr int kMostDescriptors = 256;
constexpr unsigned long kMostWatchedText = 1UL << 20;

Descriptor g_descriptors[kMostDescriptors];
char g_text[kMostWatchedText];

bool StartsWith(const char* text, const char* start) {
    return strncmp(text, start, strlen(start)) == 0;
}

// Straight to the kernel: what the library itself does is no call of the program.
long RawOpen(const char* path, int flags) {
    return syscall(SYS_openat, AT_FDCWD, path, flags | O_CLOEXEC, 0);
}

bool IsWatched(const char* path) {
    for (unsigned i = 0; i < shared->watched_count; ++i) {
        if (strcmp(shared->watched[i], path) == 0) return true;
    }
    return false;
}

unsigned long ReadWatched(const char* path) {
    const auto fd = static_cast<int>(RawOpen(path, O_RDONLY | O_NONBLOCK));
    if (fd < 0) return 0;
    unsigned long size = 0;
    long count = 0;
    while (size < kMostWatchedText &&
           (count = syscall(SYS_read, fd, g_text + size, kMostWatchedText - size)) > 0) {
        size += static_cast<unsigned long>(count);
    }
    syscall(SYS_close, fd);
    return size;
}

}  // namespace

Descriptor* Find(int fd) {
    return fd >= 0 && fd < kMostDescriptors ? &g_descriptors[fd] : nullptr;
}

void Remember(int fd, const char* path, bool port, bool kernel, bool writable) {
    Descriptor* entry = Find(fd);
    if (entry == nullptr) return;
    *entry = {port, kernel, writable, {}};
    strncpy(entry->path, path, sizeof(entry->path) - 1);
}

void Forget(int fd) {
    if (Descriptor* entry = Find(fd)) *entry = {};
}

void NoteWritten(int fd) {
    const int error = errno;
    struct stat file = {};
    if (RIG_REAL(fstat)(fd, &file) == 0) shared->file_times.Written(file, WallClock());
    errno = error;
}

void NoteRenamed(const char* path) {
    const int error = errno;
    struct stat file = {};
    if (RIG_REAL(lstat)(path, &file) == 0) shared->file_times.StatusChanged(file, WallClock());
    errno = error;
}

struct stat Behind(const char* path) {
    const int error = errno;
    struct stat file = {};
    if (RIG_REAL(lstat)(path, &file) != 0) file = {};
    errno = error;
    return file;
}

void NoteGone(const struct stat& file) {
    if (file.st_nlink == 1) shared->file_times.Forget(file);
}

void Translate(struct stat& file, int fd) {
    const Descriptor* entry = Find(fd);
    if (entry == nullptr || !entry->kernel) {
        shared->file_times.Translate(file, WallClock());
        return;
    }
    file.st_size = 0;
    FileTimes::Show(file, WallClock(), WallClock());  // each is made when it is opened
}

void JournalFile(const char* path) {
    if (IsLeaving() || !IsKept(Kind::kFile)) return;
    const int error = errno;
    const unsigned long size = IsWatched(path) ? ReadWatched(path) : 0;
    JournalTwo(Kind::kFile, static_cast<std::int64_t>(strlen(path)), path, strlen(path), g_text,
               size);
    errno = error;
}

int PathError(const char* path) {
    for (unsigned i = 0; i < shared->path_fault_count; ++i) {
        if (strcmp(shared->path_faults[i].path, path) == 0) return shared->path_faults[i].error;
    }
    return 0;
}

bool IsPortPath(const char* path) {
    if (strcmp(path, shared->device) == 0) return true;
    if (!StartsWith(path, "/dev/")) return false;
    for (const char* other : {"/dev/null", "/dev/zero", "/dev/urandom", "/dev/random"}) {
        if (strcmp(path, other) == 0) return false;
    }
    return true;
}

bool IsKernelPath(const char* path) {
    if (strcmp(path, "/proc/uptime") == 0 || StartsWith(path, "/sys/class/net/")) return true;
    return StartsWith(path, "/proc/") && isdigit(static_cast<unsigned char>(path[6])) != 0;
}

int FindKernelFile(const char* path) {
    Ask(Request::kVirtual, path);
    return shared->error;
}

int OpenKernelFile(const char* path) {
    if (const int error = FindKernelFile(path)) {
        errno = error;
        return -1;
    }
    const int fd = memfd_create("kernel-file", MFD_CLOEXEC);
    if (fd < 0) return -1;
    syscall(SYS_write, fd, shared->text, static_cast<unsigned long>(shared->text_size));
    syscall(SYS_lseek, fd, 0L, SEEK_SET);
    Remember(fd, path, false, true, false);
    return fd;
}

}  // namespace rig::agent
