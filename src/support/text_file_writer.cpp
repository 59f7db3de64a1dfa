// Lines into a file in one write, and the traps on the way to it.

#include "support/text_file_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

constexpr int kWriteFlags = O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t kMode = 0666;

// A hard link is as good a trap as a symbolic one.
bool IsFileOfOneName(int fd) {
    struct stat status = {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
}

int OpenForReplacing(const std::string& path) {
    const bool anybodys_folder = path.compare(0, 5, "/tmp/") == 0;
    if (!anybodys_folder) return open(path.c_str(), kWriteFlags | O_TRUNC, kMode);

    // Truncated only when it is known whose file it is.
    const int fd = open(path.c_str(), kWriteFlags | O_NOFOLLOW, kMode);
    if (fd < 0 && errno != ELOOP) return fd;
    if (fd >= 0) {
        if (IsFileOfOneName(fd) && ftruncate(fd, 0) == 0) return fd;
        close(fd);
    }
    unlink(path.c_str());
    return open(path.c_str(), kWriteFlags | O_EXCL, kMode);
}

bool WriteAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = write(fd, text.data() + done, text.size() - done);
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

std::string WithNewline(const std::string& line) {
    return !line.empty() && line.back() == '\n' ? line : line + '\n';
}

}  // namespace

void cTextFileWriter::AddLine(const std::string& line) {
    push_back(WithNewline(line));
}

void cTextFileWriter::InsertLine(const std::string& line, size_type index) {
    insert(begin() + static_cast<difference_type>(std::min(index, size())), WithNewline(line));
}

std::string cTextFileWriter::Text() const {
    std::string text;
    for (const std::string& line : *this) text += line;
    return text;
}

bool cTextFileWriter::WriteFile() const {
    const int fd = OpenForReplacing(file_name_);
    if (fd < 0) return false;
    WriteAll(fd, Text());  // A full file system is nobody's news here: the next write tries again.
    close(fd);
    return true;
}
