#include "sim/program/pty_port.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace sim {

namespace {

// What is kept for a host that does not read; older bytes than these are worthless to it.
constexpr std::size_t kLongestBacklog = 1 << 20;

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

// Raw before anybody opens it: else the terminal itself would echo the modem's words back to it.
void MakeRaw(int terminal) {
    termios settings{};
    if (tcgetattr(terminal, &settings) != 0) Fail("terminal settings");
    cfmakeraw(&settings);
    cfsetspeed(&settings, B115200);
    if (tcsetattr(terminal, TCSANOW, &settings) != 0) Fail("terminal settings");
}

bool IsSymbolicLink(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool Exists(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

}  // namespace

void PtyPort::Open() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_ < 0) Fail("no pseudo terminal");
    char name[128];
    if (grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name, sizeof(name)) != 0) {
        Fail("pseudo terminal");
    }
    path_ = name;
    slave_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave_ < 0) Fail(path_);
    MakeRaw(slave_);
    const int flags = fcntl(master_, F_GETFL);
    if (flags < 0 || fcntl(master_, F_SETFL, flags | O_NONBLOCK) != 0) Fail(path_);
    MakeLink();
}

void PtyPort::Close() {
    if (!IsOpen()) return;
    RemoveLink();
    close(slave_);
    close(master_);
    slave_ = master_ = -1;
    backlog_.clear();
}

std::string PtyPort::Read() {
    char buffer[4096];
    const ssize_t count = IsOpen() ? read(master_, buffer, sizeof(buffer)) : 0;
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
}

void PtyPort::Write(std::string_view bytes) {
    backlog_.append(bytes);
    if (backlog_.size() > kLongestBacklog) backlog_.erase(0, backlog_.size() - kLongestBacklog);
    Flush();
}

void PtyPort::Flush() {
    while (IsOpen() && !backlog_.empty()) {
        const ssize_t count = write(master_, backlog_.data(), backlog_.size());
        if (count <= 0) return;
        backlog_.erase(0, static_cast<std::size_t>(count));
    }
}

std::string PtyPort::Link() const {
    if (!number_ || link_.empty()) return link_;
    return link_.substr(0, link_.find_last_not_of("0123456789") + 1) + std::to_string(*number_);
}

// Made under another name and moved into place, so that nobody ever finds the path missing.
void PtyPort::MakeLink() const {
    const std::string link = Link();
    if (link.empty()) return;
    if (Exists(link) && !IsSymbolicLink(link)) {
        throw std::runtime_error(link + ": is in the way, and no symbolic link");
    }
    const std::string fresh = link + "." + std::to_string(getpid());
    unlink(fresh.c_str());
    if (symlink(path_.c_str(), fresh.c_str()) != 0) Fail(fresh);
    if (rename(fresh.c_str(), link.c_str()) != 0) {
        unlink(fresh.c_str());
        Fail(link);
    }
}

// Only while it is still ours: another modem may have taken the name.
void PtyPort::RemoveLink() const {
    const std::string link = Link();
    char target[PATH_MAX];
    const ssize_t length = link.empty() ? -1 : readlink(link.c_str(), target, sizeof(target));
    if (length > 0 && std::string_view(target, static_cast<std::size_t>(length)) == path_) {
        unlink(link.c_str());
    }
}

}  // namespace sim
