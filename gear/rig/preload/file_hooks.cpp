// Files, directories and their times. What concerns the port or the kernel's own files goes to
// descriptors.h; all else is really done, in the private root.

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "rig/preload/agent.h"
#include "rig/preload/descriptors.h"

using namespace rig;

namespace {

const struct stat kNoFile = {};

bool IsForWriting(int flags) {
    return (flags & O_ACCMODE) != O_RDONLY;
}

int Open(const char* path, int flags, mode_t mode) {
    if ((flags & O_CLOEXEC) == 0) agent::NoteInheritable(path);
    if (const int error = agent::PathError(path)) {
        errno = error;
        return -1;
    }
    if (agent::IsPortPath(path)) return agent::OpenPortFile(path);
    if (agent::IsKernelPath(path)) return agent::OpenKernelFile(path);

    // A file that is only opened keeps its times.
    const bool may_create = (flags & O_CREAT) != 0 && (flags & O_TRUNC) == 0;
    const bool existed = !may_create || RIG_REAL(access)(path, F_OK) == 0;
    const int fd = RIG_REAL(open)(path, flags | O_LARGEFILE, mode);
    if (fd < 0) return fd;
    agent::Remember(fd, path, false, false, IsForWriting(flags));
    if (!existed || (IsForWriting(flags) && (flags & O_TRUNC) != 0)) agent::NoteWritten(fd);
    return fd;
}

mode_t TakeMode(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

void Leave(int fd) {
    const agent::Descriptor* entry = agent::Find(fd);
    if (entry == nullptr) return;
    if (entry->port) agent::ClosePortFile();
    if (entry->writable) agent::JournalFile(entry->path);
    agent::Forget(fd);
}

FILE* OpenStream(const char* path, const char* mode) {
    const bool plain_read = strchr(mode, 'r') != nullptr && strchr(mode, '+') == nullptr;
    int flags = plain_read ? O_RDONLY : O_RDWR;
    if (strchr(mode, 'w') != nullptr) flags |= O_CREAT | O_TRUNC;
    if (strchr(mode, 'a') != nullptr) flags |= O_CREAT | O_APPEND;
    if (strchr(mode, 'e') != nullptr) flags |= O_CLOEXEC;
    const int fd = Open(path, flags, 0666);
    return fd < 0 ? nullptr : fdopen(fd, mode);
}

int Status(const char* path, struct stat* file, int result) {
    if (agent::IsKernelPath(path)) {
        if (const int error = agent::FindKernelFile(path)) {
            errno = error;
            return -1;
        }
        *file = {};
        file->st_mode = S_IFREG | 0444;
        file->st_nlink = 1;
        return 0;
    }
    if (result == 0) agent::Translate(*file, -1);
    return result;
}

int StatusOfOpen(int fd, struct stat* file) {
    const int result = RIG_REAL(fstat)(fd, file);
    if (result == 0) agent::Translate(*file, fd);
    return result;
}

int InterfaceAddress(ifreq* request) {
    if (agent::shared->address == 0 || strcmp(request->ifr_name, "wwan0") != 0) {
        errno = EADDRNOTAVAIL;
        return -1;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = agent::shared->address;
    memcpy(&request->ifr_addr, &address, sizeof(address));
    return 0;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = TakeMode(flags, arguments);
    va_end(arguments);
    return agent::Enter() ? Open(path, flags, mode) : RIG_REAL(open)(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = TakeMode(flags, arguments);
    va_end(arguments);
    return agent::Enter() ? Open(path, flags, mode)
                          : RIG_REAL(open)(path, flags | O_LARGEFILE, mode);
}

int __open_2(const char* path, int flags) {
    return open(path, flags);
}
int __open64_2(const char* path, int flags) {
    return open64(path, flags);
}
int creat(const char* path, mode_t mode) {
    return open(path, O_WRONLY | O_CREAT | O_TRUNC, mode);
}

int close(int fd) {
    if (agent::Enter()) Leave(fd);
    return static_cast<int>(syscall(SYS_close, fd));
}

ssize_t read(int fd, void* buffer, size_t size) {
    if (agent::Enter()) {
        const agent::Descriptor* entry = agent::Find(fd);
        if (entry != nullptr && entry->port) return agent::ReadPortBytes(buffer, size);
    }
    return syscall(SYS_read, fd, buffer, size);
}

ssize_t __read_chk(int fd, void* buffer, size_t size, size_t room) {
    if (size > room) __builtin_trap();
    return read(fd, buffer, size);
}

ssize_t write(int fd, const void* data, size_t size) {
    if (!agent::Enter()) return syscall(SYS_write, fd, data, size);
    const agent::Descriptor* entry = agent::Find(fd);
    if (entry != nullptr && entry->port) return agent::WritePort(data, size);
    const ssize_t count = syscall(SYS_write, fd, data, size);
    if (count > 0 && entry != nullptr && entry->writable) agent::NoteWritten(fd);
    return count;
}

int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (agent::Enter()) {
        const agent::Descriptor* entry = agent::Find(fd);
        if (entry != nullptr && entry->port) return agent::ControlPort(request, argument);
        const bool open = syscall(SYS_fcntl, fd, F_GETFD) != -1;
        if (request == SIOCGIFADDR && open) return InterfaceAddress(static_cast<ifreq*>(argument));
    }
    return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

FILE* fopen(const char* path, const char* mode) {
    return agent::Enter() ? OpenStream(path, mode) : RIG_REAL(fopen)(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    return agent::Enter() ? OpenStream(path, mode) : RIG_REAL(fopen64)(path, mode);
}

int fclose(FILE* stream) {
    if (agent::Enter()) {
        const int fd = fileno(stream);
        const agent::Descriptor* entry = agent::Find(fd);
        if (entry != nullptr && entry->writable) {
            fflush(stream);
            agent::NoteWritten(fd);
        }
        Leave(fd);
    }
    return RIG_REAL(fclose)(stream);
}

DIR* opendir(const char* path) {
    if (agent::Enter()) {
        if (const int error = agent::PathError(path)) {
            errno = error;
            return nullptr;
        }
    }
    return RIG_REAL(opendir)(path);
}

int access(const char* path, int mode) noexcept {
    if (!agent::Enter() || !agent::IsKernelPath(path)) return RIG_REAL(access)(path, mode);
    const int error = agent::FindKernelFile(path);
    if (error == 0) return 0;
    errno = error;
    return -1;
}

int stat(const char* path, struct stat* file) noexcept {
    const bool mine = agent::Enter();
    const int result = RIG_REAL(stat)(path, file);
    return mine ? Status(path, file, result) : result;
}

int lstat(const char* path, struct stat* file) noexcept {
    const bool mine = agent::Enter();
    const int result = RIG_REAL(lstat)(path, file);
    return mine ? Status(path, file, result) : result;
}

int fstat(int fd, struct stat* file) noexcept {
    return agent::Enter() ? StatusOfOpen(fd, file) : RIG_REAL(fstat)(fd, file);
}

// On the systems that the tests run on the two structures are one.
static_assert(sizeof(struct stat) == sizeof(struct stat64));

int stat64(const char* path, struct stat64* file) noexcept {
    return stat(path, reinterpret_cast<struct stat*>(file));
}

int lstat64(const char* path, struct stat64* file) noexcept {
    return lstat(path, reinterpret_cast<struct stat*>(file));
}

int fstat64(int fd, struct stat64* file) noexcept {
    return fstat(fd, reinterpret_cast<struct stat*>(file));
}

int unlink(const char* path) noexcept {
    const bool mine = agent::Enter();
    const struct stat file = mine ? agent::Behind(path) : kNoFile;
    const int result = RIG_REAL(unlink)(path);
    if (mine && result == 0) {
        agent::NoteGone(file);
        agent::JournalText(Kind::kUnlink, 0, path);
    }
    return result;
}

int remove(const char* path) noexcept {
    const bool mine = agent::Enter();
    const struct stat file = mine ? agent::Behind(path) : kNoFile;
    const int result = RIG_REAL(remove)(path);
    if (mine && result == 0) {
        agent::NoteGone(file);
        agent::JournalText(Kind::kUnlink, 0, path);
    }
    return result;
}

int rename(const char* from, const char* to) noexcept {
    const bool mine = agent::Enter();
    const struct stat replaced = mine ? agent::Behind(to) : kNoFile;
    const int result = RIG_REAL(rename)(from, to);
    if (mine && result == 0) {
        agent::NoteGone(replaced);
        agent::NoteRenamed(to);
        agent::JournalFile(to);
    }
    return result;
}

}  // extern "C"
