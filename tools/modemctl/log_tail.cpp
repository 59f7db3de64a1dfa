#include "modemctl/log_tail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace modemctl {

namespace {

constexpr char kJournal[] = "/run/systemd/journal";
constexpr std::size_t kLongestLine = 64 * 1024;

// Its output, made such that a look at it never waits; null when there is no such program.
std::unique_ptr<Child> StartChild(const std::vector<std::string>& words) {
    auto child = std::make_unique<Child>(words);
    if (child->output() == nullptr) return nullptr;
    fcntl(fileno(child->output()), F_SETFL, O_NONBLOCK);
    return child;
}

}  // namespace

LogTail::LogTail(const Tree& tree, const std::string& file) : path_(file) {
    if (!path_.empty()) {
        OpenFile(true);
        return;
    }
    if (tree.IsLive() && tree.Exists(kJournal)) {
        child_ = StartChild({"journalctl", "--quiet", "--all", "--output=short-iso", "--follow",
                             "--lines=0", "--identifier=modemd"});
    }
    if (child_ != nullptr) return;
    for (const char* const name : {"/var/log/messages", "/var/log/syslog"}) {
        if (!tree.Exists(name)) continue;
        path_ = tree.Locate(name);
        OpenFile(true);
        return;
    }
    if (tree.IsLive()) child_ = StartChild({"logread", "-f"});
}

LogTail::~LogTail() {
    if (fd_ >= 0) close(fd_);
}

void LogTail::OpenFile(bool at_end) {
    if (fd_ >= 0) close(fd_);
    line_.clear();
    fd_ = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd_ >= 0 && at_end) lseek(fd_, 0, SEEK_END);
}

// Renamed away, or truncated.
bool LogTail::WasReplaced() const {
    struct stat open = {};
    struct stat named = {};
    if (stat(path_.c_str(), &named) != 0) return false;
    if (fd_ < 0 || fstat(fd_, &open) != 0) return true;
    return open.st_ino != named.st_ino || open.st_dev != named.st_dev ||
           named.st_size < lseek(fd_, 0, SEEK_CUR);
}

void LogTail::ReadOn(std::time_t now, const RecordTaker& take) {
    const int fd = child_ != nullptr ? fileno(child_->output()) : fd_;
    char piece[4096];
    for (ssize_t count = read(fd, piece, sizeof(piece)); count > 0;
         count = read(fd, piece, sizeof(piece))) {
        for (ssize_t i = 0; i < count; ++i) {
            if (piece[i] != '\n') {
                if (line_.size() < kLongestLine) line_ += piece[i];
                continue;
            }
            LogRecord record;
            const bool ours = ParseLogLine(line_, now, record);
            line_.clear();
            if (ours && !take(record)) return;
        }
    }
}

void LogTail::Poll(std::time_t now, const RecordTaker& take) {
    if (child_ == nullptr && path_.empty()) return;
    ReadOn(now, take);
    if (child_ != nullptr || !WasReplaced()) return;
    OpenFile(false);
    ReadOn(now, take);
}

}  // namespace modemctl
