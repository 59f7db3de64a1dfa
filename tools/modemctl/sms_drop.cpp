#include "modemctl/sms_drop.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "support/text.h"

namespace modemctl {

namespace {

constexpr int kDirectoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

// A file descriptor that ends with its owner.
class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return fd_; }
    bool IsOpen() const { return fd_ >= 0; }

  private:
    const int fd_;
};

std::string Reason(const char* what, const std::string& where) {
    return std::string(what) + " " + where + ": " + std::strerror(errno);
}

// As the daemon sees it: a link below /tmp is used when it belongs to root or to its own user.
bool IsForeignLink(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode) && status.st_uid != 0 &&
           status.st_uid != geteuid();
}

std::string LinkTrouble(const std::string& directory) {
    constexpr std::size_t kBehindTmp = sizeof("/tmp/") - 1;
    for (std::size_t slash = directory.find('/', kBehindTmp); slash != std::string::npos;
         slash = directory.find('/', slash + 1)) {
        const std::string element = directory.substr(0, slash);
        if (IsForeignLink(element)) return element + " is a link that somebody else made";
    }
    return "";
}

bool WriteWhole(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = write(fd, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return fsync(fd) == 0;
}

// Beside the directory itself, also when a link leads to it: only there a rename is sure to work.
std::string PlaceBeside(const std::string& directory) {
    char real[PATH_MAX];
    if (realpath(directory.c_str(), real) == nullptr) return "";
    const std::string path = real;
    return path.substr(0, path.rfind('/') + 1);
}

bool IsSameFileSystem(int a, int b) {
    struct stat first = {};
    struct stat second = {};
    return fstat(a, &first) == 0 && fstat(b, &second) == 0 && first.st_dev == second.st_dev;
}

bool ExistsAt(const Descriptor& directory, const std::string& name) {
    struct stat status = {};
    return fstatat(directory.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace

std::string SpoolTrouble() {
    const std::string send = PlaceDirectory(SpoolPlace::kWaiting);
    const std::string trouble = LinkTrouble(send);
    if (!trouble.empty()) return trouble + ": the daemon does not use the spool; remove the link";
    struct stat status = {};
    if (stat(send.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return "";
    return "there is no " + send + ": the daemon makes it once it runs for a modem with messages";
}

std::string NewSendName() {
    static int count = 0;
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return Format("%010lld.%06ld.%d.%d", static_cast<long long>(now.tv_sec), now.tv_nsec / 1000,
                  static_cast<int>(getpid()), ++count);
}

std::string DropSendFile(const std::string& name, const std::string& text) {
    const std::string trouble = SpoolTrouble();
    if (!trouble.empty()) return trouble;
    const std::string send = PlaceDirectory(SpoolPlace::kWaiting);
    const std::string place = PlaceBeside(send);
    const Descriptor spool(open(send.c_str(), kDirectoryFlags));
    const Descriptor beside(open(place.c_str(), kDirectoryFlags));
    if (!spool.IsOpen()) return Reason("cannot open", send);
    if (!beside.IsOpen()) return Reason("cannot open", place);
    if (!IsSameFileSystem(spool.get(), beside.get())) {
        return send + " is a file system of its own: nothing can be renamed into it";
    }
    const std::string temporary = ".modemctl-" + name;
    const Descriptor file(openat(beside.get(), temporary.c_str(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.IsOpen()) return Reason("cannot write in", place);
    std::string complaint;
    if (!WriteWhole(file.get(), text)) {
        complaint = Reason("cannot write in", place);
    } else if (ExistsAt(spool, name)) {
        complaint = "there is a file of that name in " + send;
    } else if (renameat(beside.get(), temporary.c_str(), spool.get(), name.c_str()) != 0) {
        complaint = Reason("cannot write in", send);
    }
    if (!complaint.empty()) {
        unlinkat(beside.get(), temporary.c_str(), 0);
    } else {
        fsync(spool.get());
    }
    return complaint;
}

std::string RequeueFailed(const SpoolEntry& entry, std::string& name) {
    if (entry.place != SpoolPlace::kFailed) return "it has not failed";
    if (entry.kind != EntryKind::kFile) return std::string("it is a ") + KindWord(entry.kind);
    const SpoolMessage message = ReadMessage(Tree(), entry);
    if (message.readable != Readable::kGood || message.number.empty()) {
        return "it has no TO or no MSG: the daemon would delete it, or fail again";
    }
    const std::string trouble = SpoolTrouble();
    if (!trouble.empty()) return trouble;
    const std::string send = PlaceDirectory(SpoolPlace::kWaiting);
    const Descriptor from(open(PlaceDirectory(SpoolPlace::kFailed), kDirectoryFlags));
    const Descriptor to(open(send.c_str(), kDirectoryFlags));
    if (!from.IsOpen() || !to.IsOpen()) return Reason("cannot open", send);
    name = NameBeforeFailure(entry.name);
    if (ExistsAt(to, name)) name = NewSendName();
    if (renameat(from.get(), entry.name.c_str(), to.get(), name.c_str()) != 0) {
        return Reason("cannot write in", send);
    }
    return "";
}

std::string DeleteEntry(const SpoolEntry& entry) {
    const std::string directory = PlaceDirectory(entry.place);
    const std::string trouble = LinkTrouble(directory);
    if (!trouble.empty()) return trouble;
    const Descriptor place(open(directory.c_str(), kDirectoryFlags));
    const int flags = entry.kind == EntryKind::kDirectory ? AT_REMOVEDIR : 0;
    if (place.IsOpen() && unlinkat(place.get(), entry.name.c_str(), flags) == 0) return "";
    return std::strerror(errno);
}

}  // namespace modemctl
