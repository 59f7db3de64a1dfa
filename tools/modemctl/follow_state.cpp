#include "modemctl/follow_state.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kWords[] = "?bfda";  // by Handling
constexpr std::size_t kManyLines = 1000;

bool MakeDirectories(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string part = path.substr(0, slash);
        if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) return false;
        if (slash == std::string::npos) return true;
    }
}

bool WriteAll(int fd, const std::string& text) {
    const ssize_t count = write(fd, text.data(), text.size());
    return count == static_cast<ssize_t>(text.size()) && fsync(fd) == 0;
}

// A whole file in one step: nobody sees half of it, and a crash leaves the old one or the new one.
bool ReplaceFile(const std::string& path, const std::string& text) {
    const std::string beside = path + ".new";
    const int fd =
        open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    const bool written = WriteAll(fd, text);
    close(fd);
    return written && rename(beside.c_str(), path.c_str()) == 0;
}

std::string ReadAll(const std::string& path) {
    std::string text;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return text;
    char piece[4096];
    for (ssize_t count = read(fd, piece, sizeof(piece)); count > 0;
         count = read(fd, piece, sizeof(piece))) {
        text.append(piece, static_cast<std::size_t>(count));
    }
    close(fd);
    return text;
}

std::string StateLine(Handling handling, const std::string& key) {
    return std::string(1, kWords[static_cast<int>(handling)]) + " " + key + "\n";
}

}  // namespace

std::string MessageKey(const SpoolEntry& entry) {
    return Format("%lld.%09lld %lld ", static_cast<long long>(entry.modified), entry.nanoseconds,
                  entry.size) +
           Escaped(entry.name, false);
}

std::string FollowState::Open(const std::string& directory) {
    directory_ = directory;
    if (!MakeDirectories(directory)) return "cannot make " + directory + ": " + strerror(errno);
    const std::string path = directory + "/follow.lock";
    if (lock_ >= 0) close(lock_);
    lock_ = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (lock_ < 0) return "cannot write " + path + ": " + std::strerror(errno);
    is_busy_ = flock(lock_, LOCK_EX | LOCK_NB) != 0;
    if (is_busy_) {
        return "another sms follow --exec, or a program that it started, has " + directory;
    }
    Reload();
    return "";
}

FollowState::~FollowState() {
    if (lock_ >= 0) close(lock_);
}

// A line that a crash cut off has no end, and is as if it had not been written.
void FollowState::Reload() {
    records_.clear();
    lines_ = 0;
    const std::string text = ReadAll(Path());
    for (std::size_t start = 0, end = text.find('\n'); end != std::string::npos;
         start = end + 1, end = text.find('\n', start)) {
        TakeLine(text.substr(start, end - start));
    }
}

void FollowState::TakeLine(const std::string& line) {
    const char* const word = line.empty() ? nullptr : std::strchr(kWords, line[0]);
    if (word == nullptr || line.size() < 3 || line[1] != ' ') return;
    ++lines_;
    HandlingRecord& record = records_[line.substr(2)];
    record.handling = static_cast<Handling>(word - kWords);
    if (record.handling == Handling::kBegun) ++record.tries;
}

HandlingRecord FollowState::Get(const std::string& key) const {
    const auto found = records_.find(key);
    return found != records_.end() ? found->second : HandlingRecord();
}

// What a crash has left of a line is ended first.
bool FollowState::Note(const std::string& key, Handling handling) {
    const std::string before = ReadAll(Path());
    const int fd =
        open(Path().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    const bool cut = !before.empty() && before.back() != '\n';
    const bool noted = WriteAll(fd, (cut ? "\n" : "") + StateLine(handling, key));
    close(fd);
    Reload();
    return noted;
}

void FollowState::KeepOnly(const std::vector<std::string>& keys) {
    if (lines_ < kManyLines && records_.size() <= keys.size() + kManyLines / 2) return;
    std::string text;
    for (const std::string& key : keys) {
        const auto found = records_.find(key);
        if (found == records_.end()) continue;
        for (int i = 0; i < found->second.tries; ++i) text += StateLine(Handling::kBegun, key);
        if (found->second.handling != Handling::kBegun) {
            text += StateLine(found->second.handling, key);
        }
    }
    if (ReplaceFile(Path(), text)) Reload();
}

bool FollowState::PutAside(const SpoolEntry& entry, const SpoolMessage& message) const {
    if (!MakeDirectories(AsideDirectory())) return false;
    return ReplaceFile(
        AsideDirectory() + "/" + entry.name,
        "FROM=" + message.number + "\nTIME=" + message.time + "\nMSG=" + message.text + "\n");
}

std::string StateDirectory(const std::string& wanted) {
    if (!wanted.empty()) return wanted;
    const char* const home = std::getenv("XDG_STATE_HOME");
    if (home != nullptr && home[0] == '/') return std::string(home) + "/modemctl";
    return "/var/lib/modemctl";
}

}  // namespace modemctl
