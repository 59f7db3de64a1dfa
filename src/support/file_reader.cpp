#include "support/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool IsReadable(int fd) {
    struct stat status = {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

bool ReadTextFile(const std::string& path, LastCharacter last, std::string& text) {
    text.clear();
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
