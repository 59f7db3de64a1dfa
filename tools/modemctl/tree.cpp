#include "modemctl/tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "modemctl/time_text.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kFactsFile[] = "/modemctl.facts";
constexpr std::size_t kLongestFile = 2 * 1024 * 1024;  // three times the longest that is written
constexpr int kMostLooks = 400;
constexpr int kPatientLooks = 200;   // without a pause between them: some milliseconds
constexpr useconds_t kPause = 1250;  // microseconds; 200 of them are a quarter of a second
constexpr std::time_t kSettledSeconds = 2;
constexpr int kMostLinks = 40;  // as the kernel has it

class OpenFile {
  public:
    explicit OpenFile(const std::string& path)
        : fd_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
    ~OpenFile() {
        if (fd_ >= 0) close(fd_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool IsRegular(std::time_t& modified) const {
        struct stat status = {};
        if (fd_ < 0 || fstat(fd_, &status) != 0) return false;
        modified = status.st_mtime;
        return S_ISREG(status.st_mode);
    }

    // From its beginning, however often it has been read.
    bool Read(std::string& text) const {
        text.clear();
        char piece[16384];
        ssize_t count = 0;
        do {
            count = pread(fd_, piece, sizeof(piece), static_cast<off_t>(text.size()));
            if (count > 0) text.append(piece, static_cast<std::size_t>(count));
        } while (count > 0 && text.size() < kLongestFile);
        return count >= 0;
    }

  private:
    const int fd_;
};

// Not whole, and not being rewritten either: nobody has touched it for a while.
bool IsSettled(const TextFile& file) {
    return file.modified + kSettledSeconds < std::time(nullptr);
}

// What the kernel makes up while it is read is whole at the first look, and new at each.
bool IsMadeByKernel(const std::string& path) {
    return path.compare(0, 6, "/proc/") == 0 || path.compare(0, 5, "/sys/") == 0;
}

// A device is not even opened: that alone can do harm.
bool IsRegular(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::string LinkTarget(const std::string& path) {
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof(target));
    return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : "";
}

// The parts of a path, in reverse, so that the next one is at the back.
void PushParts(const std::string& path, std::vector<std::string>& parts) {
    std::size_t end = path.size();
    while (end > 0) {
        const std::size_t slash = path.rfind('/', end - 1);
        const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
        if (start < end) parts.push_back(path.substr(start, end - start));
        end = slash == std::string::npos ? 0 : slash;
    }
}

}  // namespace

bool HasWholeLines(const std::string& text) {
    return !text.empty() && text.back() == '\n' && text.find('\0') == std::string::npos;
}

bool AnyText(const std::string&) {
    return true;
}

Tree::Tree(const std::string& root) : root_(root) {
    while (!root_.empty() && root_.back() == '/') root_.pop_back();
}

std::string Tree::Locate(const std::string& path) const {
    if (IsLive()) return path;
    std::vector<std::string> parts;
    PushParts(path, parts);
    std::string inside;  // what has been walked, below the root
    int links = 0;
    while (!parts.empty()) {
        const std::string part = parts.back();
        parts.pop_back();
        if (part == ".") continue;
        if (part == "..") {
            inside.erase(std::min(inside.rfind('/'), inside.size()));
            continue;
        }
        const std::string target = LinkTarget(root_ + inside + "/" + part);
        if (target.empty() || ++links > kMostLinks) {
            inside += "/" + part;
            continue;
        }
        if (target[0] == '/') inside.clear();
        PushParts(target, parts);
    }
    return root_ + inside;
}

bool Tree::Exists(const std::string& path) const {
    return access(Locate(path).c_str(), F_OK) == 0;
}

TextFile Tree::Read(const std::string& path, WholeTest is_whole) const {
    const std::string place = Locate(path);
    TextFile file;
    if (access(place.c_str(), F_OK) != 0) return file;
    file.presence = Presence::kUnreadable;
    if (!IsRegular(place)) return file;

    std::string again;
    for (int look = 0; look < kMostLooks; ++look) {
        const OpenFile open(place);
        if (!open.IsRegular(file.modified) || !open.Read(file.text)) {
            const bool there = access(place.c_str(), F_OK) == 0;
            file.presence = there ? Presence::kUnreadable : Presence::kAbsent;
            return file;
        }
        const bool whole = !file.text.empty() && is_whole(file.text);
        if (whole && (IsMadeByKernel(path) || (open.Read(again) && again == file.text))) {
            file.presence = Presence::kWhole;
            return file;
        }
        if (!whole && IsSettled(file)) break;
        if (look >= kPatientLooks) usleep(kPause);
    }
    file.presence = file.text.empty() ? Presence::kEmpty : Presence::kUnsettled;
    return file;
}

std::string Tree::Fact(const std::string& name) const {
    if (IsLive()) return "";
    const TextFile facts = Read(kFactsFile, AnyText);
    const std::string label = "\n" + name + "=";
    const std::string text = "\n" + facts.text;
    const std::size_t found = text.find(label);
    if (found == std::string::npos) return "";
    const std::size_t start = found + label.size();
    return text.substr(start, text.find('\n', start) - start);
}

std::time_t Tree::Now() const {
    const std::time_t now = std::time(nullptr);
    std::time_t then = 0;
    const std::string fact = Fact("now");
    return !fact.empty() && ParseTime(fact, now, then) ? then : now;
}

bool Tree::List(const std::string& directory, std::vector<Entry>& entries) const {
    const std::string place = Locate(directory);
    DIR* const stream = opendir(place.c_str());
    if (stream == nullptr) return false;
    while (const dirent* const found = readdir(stream)) {
        Entry entry;
        entry.name = found->d_name;
        if (entry.name == "." || entry.name == "..") continue;
        struct stat status = {};
        if (lstat((place + "/" + entry.name).c_str(), &status) == 0) {
            entry.changed = IsLive() ? status.st_ctime : status.st_mtime;
            entry.regular = S_ISREG(status.st_mode);
        }
        entries.push_back(entry);
    }
    closedir(stream);
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return true;
}

}  // namespace modemctl
