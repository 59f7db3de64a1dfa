// Looks at a file before it opens it, and then opens the very file that it has looked at.

#include "support/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "support/text.h"

namespace {

constexpr int kReadFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

mode_t TypeOf(int fd) {
    struct stat status = {};
    return fstat(fd, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

// Opening a device can do harm by itself: a watchdog starts, a tape rewinds. O_PATH only takes hold
// of the file, so that nobody can exchange it between the look and the open. -1 when the file
// cannot be opened; 0 with `is_device` when it must not.
int OpenUnlessDevice(const std::string& path, bool& is_device) {
    const int held = open(path.c_str(), O_PATH | O_CLOEXEC);
    if (held < 0) return -1;
    const mode_t type = TypeOf(held);
    is_device = type == S_IFCHR || type == S_IFBLK;
    int fd = is_device ? 0 : open(Format("/proc/self/fd/%d", held).c_str(), kReadFlags);
    if (fd < 0 && errno == ENOENT) fd = open(path.c_str(), kReadFlags);  // no /proc yet
    close(held);
    return fd;
}

}  // namespace

bool ReadTextFile(const std::string& path, LastCharacter last, std::string& text) {
    text.clear();
    bool is_device = false;
    const int fd = OpenUnlessDevice(path, is_device);
    if (fd < 0 || is_device) return fd >= 0;

    char piece[1024];
    ssize_t count = TypeOf(fd) == S_IFREG ? read(fd, piece, sizeof(piece)) : 0;
    while (count > 0 && text.size() < kLongestTextFile) {
        text.append(piece, static_cast<std::size_t>(count));
        count = read(fd, piece, sizeof(piece));
    }
    close(fd);

    if (last == LastCharacter::kDoubled && !text.empty() && text.size() < kLongestTextFile) {
        text += text.back();
    }
    return true;
}
