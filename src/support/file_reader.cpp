// Looks at a file before it opens it, and then opens the very file that it has looked at.

#include "support/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/text.h"

namespace {

constexpr int kReadFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// What was opened, and whether it may be read.
struct OpenFile {
    int fd = -1;  // -1: it cannot be opened, or must not be
    mode_t type = 0;
};

bool IsDevice(mode_t type) {
    return type == S_IFCHR || type == S_IFBLK;
}

// Opening a device can do harm by itself: a watchdog starts, a tape rewinds. O_PATH only takes hold
// of the file, so that nobody can exchange it between the look and the open.
OpenFile OpenUnlessDevice(const std::string& path) {
    OpenFile file;
    const int held = open(path.c_str(), O_PATH | O_CLOEXEC);
    if (held < 0) return file;
    struct stat status = {};
    if (fstat(held, &status) == 0) file.type = status.st_mode & S_IFMT;
    if (!IsDevice(file.type)) {
        file.fd = open(Format("/proc/self/fd/%d", held).c_str(), kReadFlags);
        if (file.fd < 0 && errno == ENOENT) file.fd = open(path.c_str(), kReadFlags);  // no /proc
    }
    close(held);
    return file;
}

// A regular file gives all that was asked for until its end.
void ReadToTheEnd(int fd, std::string& text) {
    char piece[1024];
    ssize_t count = sizeof(piece);
    while (count == sizeof(piece) && text.size() < kLongestTextFile) {
        count = read(fd, piece, sizeof(piece));
        if (count > 0) text.append(piece, static_cast<std::size_t>(count));
    }
}

}  // namespace

bool ReadTextFile(const std::string& path, LastCharacter last, std::string& text) {
    text.clear();
    const OpenFile file = OpenUnlessDevice(path);
    if (file.fd < 0) return IsDevice(file.type);
    if (file.type == S_IFREG) ReadToTheEnd(file.fd, text);
    close(file.fd);
    if (last == LastCharacter::kDoubled && !text.empty() && text.size() < kLongestTextFile) {
        text += text.back();
    }
    return true;
}
