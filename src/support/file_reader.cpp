#include "support/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Opening alone can do harm: a watchdog starts, a tape rewinds.
bool IsDevice(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return false;
    return S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

bool IsReadable(int fd) {
    struct stat status = {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

bool ReadTextFile(const std::string& path, LastCharacter last, std::string& text) {
    text.clear();
    if (IsDevice(path)) return true;
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return false;

    char piece[4096];
    ssize_t count = IsReadable(fd) ? read(fd, piece, sizeof(piece)) : 0;
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
