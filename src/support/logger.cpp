// The daemon's own log file: one line at a time, one generation kept.

#include "support/logger.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr std::int32_t kSmallestLimit = 50;  // kilobytes
constexpr char kDefaultTimeFormat[] = "%m/%d %H:%M:%S";
constexpr std::size_t kTimeRoom = 23;  // characters, the terminating zero included

// Each newline takes the character behind it along: "a\nb" becomes "a^M". Deliberate; the log
// viewers on the router count on lines of exactly this shape.
// Oddity newline-eats-neighbour: in /var/log/csq a line end and the character behind it read "^M".
void ReplaceNewlines(std::string& message) {
    for (auto at = message.find('\n'); at != std::string::npos; at = message.find('\n', at + 2)) {
        message.replace(at, 2, "^M");
    }
}

const char* OnOff(std::uint8_t flag) {
    return flag != 0 ? "On" : "Off";
}

bool WriteLine(int fd, const std::string& line) {
    return write(fd, line.data(), line.size()) != -1;
}

}  // namespace

std::string IntToString(std::int32_t value) {
    return std::to_string(value);
}

bool cKVTLogger::Init(const std::string& path, std::int32_t max_kilobytes, std::int32_t time_stamps,
                      const char* time_format) {
    max_kilobytes_ = std::max(max_kilobytes, kSmallestLimit);
    path_ = path;
    fd_ = -1;
    time_stamps_ = time_stamps;
    debug_level_ = 0;
    last_line_.clear();
    fold_repeats_ = 0;
    syslog_mirror_ = 0;
    time_format_ = time_format != nullptr ? time_format : kDefaultTimeFormat;
    repeat_count_ = 0;
    skip_next_stamp_ = false;
    OpenLogFile();
    return true;
}

void cKVTLogger::SetDebugLevel(std::int32_t level) {
    if (level != 0) Log("cKVTLogger debug level %d", level);
    debug_level_ = level;
}

void cKVTLogger::SetSyslogMirror(std::uint8_t flag) {
    if (debug_level_ != 0) {
        Log("cKVTLogger also send messages for %s to the syslog is %s", path_.c_str(), OnOff(flag));
    }
    syslog_mirror_ = flag;
}

void cKVTLogger::SetFoldRepeats(std::uint8_t flag) {
    if (debug_level_ != 0) {
        // Spelled so on purpose, as old logs have it.
        Log("cKVTLogger Supress messages for %s is %s", path_.c_str(), OnOff(flag));
    }
    fold_repeats_ = flag;
}

bool cKVTLogger::OpenLogFile() {
    if (fd_ != -1) CloseLogFile();
    fd_ =
        open(path_.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0644);
    if (fd_ == -1) {
        const int error = errno;
        if (debug_level_ > 1) {
            Log("cKVTLogger::OpenLogFile(): error open %s for writing, errno %d", path_.c_str(),
                error);
        }
        return false;
    }
    if (debug_level_ > 1) {
        Log("cKVTLogger::OpenLogFile(): opened %s for writing", path_.c_str());
    }
    return true;
}

void cKVTLogger::CloseLogFile() {
    close(fd_);
    fd_ = -1;
}

bool cKVTLogger::PathExists() const {
    return access(path_.c_str(), F_OK) == 0;
}

bool cKVTLogger::Rotate() {
    if (debug_level_ > 1) Log("running cKVTLogger::Rotate()");
    if (PathExists()) {
        CloseLogFile();
        const std::string older = Format("%s.%d", path_.c_str(), 1);
        if (std::rename(path_.c_str(), older.c_str()) != 0 && debug_level_ > 1) {
            Log("cKVTLogger::Rotate(): ERROR: rename() gave errno %d", errno);
        }
    } else {
        if (debug_level_ > 1) {
            Log("cKVTLogger::Rotate(): error cannot access %s, nothing to rotate", path_.c_str());
        }
        CloseLogFile();
    }
    return OpenLogFile();
}

void cKVTLogger::CheckRotate() {
    if (!PathExists()) {
        if (debug_level_ > 1) {
            Log("cKVTLogger::CheckRotate(): error cannot access %s, nothing to rotate",
                path_.c_str());
        }
        return;
    }
    struct stat status = {};
    stat(path_.c_str(), &status);
    const int size = static_cast<int>(status.st_size);
    const int limit = max_kilobytes_ * 1024;
    if (debug_level_ > 2) {
        Log("cKVTLogger::CheckRotate(): file size of %s is %d bytes, max file size is %d",
            path_.c_str(), size, limit);
    }
    if (status.st_size < limit) return;
    if (debug_level_ > 2) {
        Log("cKVTLogger::CheckRotate(): file %s is bigger than %d bytes, running Rotate()",
            path_.c_str(), limit);
    }
    Rotate();
}

bool cKVTLogger::LogIt(std::string& message, std::int32_t force) {
    if ((fd_ == -1 || !PathExists()) && !OpenLogFile()) return false;
    ReplaceNewlines(message);
    const std::string prefix = Prefix();
    if (Fold(message, prefix, force != 0)) return true;

    if (syslog_mirror_ != 0) Log("%s", message.c_str());
    if (!WriteLine(fd_, prefix + message + "\n")) {
        const int error = errno;
        if (debug_level_ > 1) {
            Log("cKVTLogger::LogIt(): error cannot access %s for writing, errno %d", path_.c_str(),
                error);
        }
        return false;
    }
    CheckRotate();
    return true;
}

std::string cKVTLogger::Prefix() {
    const bool stamped = time_stamps_ != 0 && !skip_next_stamp_;
    skip_next_stamp_ = false;
    return stamped ? LocalTime(time_format_.c_str(), kTimeRoom) + ": " : "";
}

// True when the message is a repeat that is only counted. Goes on while a count is pending, even
// when folding has been switched off meanwhile, so that the note is not lost.
bool cKVTLogger::Fold(const std::string& message, const std::string& prefix, bool force) {
    if (fold_repeats_ == 0 && repeat_count_ == 0) return false;
    if (message == last_line_) {
        ++repeat_count_;
        if (!force) return true;
    }
    if (repeat_count_ != 0) {
        const auto count = IntToString(static_cast<std::int32_t>(repeat_count_));
        WriteLine(fd_, prefix + "last line repeated " + count + " time(s)\n");
        repeat_count_ = 0;
    }
    last_line_ = message;
    return false;
}
