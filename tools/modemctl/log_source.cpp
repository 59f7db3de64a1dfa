#include "modemctl/log_source.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>

#include "modemctl/child.h"
#include "modemctl/time_text.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kProgram[] = "modemd";
constexpr char kJournal[] = "/run/systemd/journal";
constexpr const char* kLogFiles[] = {"/var/log/messages", "/var/log/syslog"};
// The generations before, oldest first: busybox counts from 0, others from 1.
constexpr const char* kOlder[] = {".1", ".0"};
constexpr std::size_t kLongestLine = 64 * 1024;
constexpr std::size_t kLongestField = 1024 * 1024;
constexpr useconds_t kFollowPause = 400000;  // microseconds
constexpr std::time_t kDay = 86400;

constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Month, day and time of day at the start of `text`; "Mar 14 09:15:02". Returns the length.
std::size_t ScanClassicTime(const std::string& text, std::tm& parts) {
    char month[4] = "";
    int taken = 0;
    if (std::sscanf(text.c_str(), "%3[A-Za-z] %2d %2d:%2d:%2d%n", month, &parts.tm_mday,
                    &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &taken) < 5) {
        return 0;
    }
    const auto* const found = std::find_if(std::begin(kMonths), std::end(kMonths),
                                           [&](const char* name) { return !strcmp(name, month); });
    if (found == std::end(kMonths)) return 0;
    parts.tm_mon = static_cast<int>(found - std::begin(kMonths));
    parts.tm_isdst = -1;
    return static_cast<std::size_t>(taken);
}

std::time_t InYear(std::tm parts, int year) {
    parts.tm_year = year - 1900;
    return std::mktime(&parts);
}

int YearOf(std::time_t when) {
    std::tm local = {};
    return localtime_r(&when, &local) != nullptr ? local.tm_year + 1900 : 1970;
}

// The time in any of the forms. Returns its length, 0 when the line begins with none.
std::size_t ScanTime(const std::string& line, std::time_t now, std::time_t& when) {
    const std::size_t iso = ScanIsoTime(line, when);
    if (iso > 0) return iso;
    std::tm parts = {};
    std::size_t taken = ScanClassicTime(line, parts);
    if (taken > 0) {
        when = InYear(parts, YearOf(now));
        if (when > now + kDay) when = InYear(parts, YearOf(now) - 1);
        return taken;
    }
    // "Sat " in front, the year behind.
    if (line.size() < 5 || line[3] != ' ') return 0;
    taken = ScanClassicTime(line.substr(4), parts);
    int year = 0;
    int length = 0;
    if (taken == 0 || std::sscanf(line.c_str() + 4 + taken, " %4d%n", &year, &length) < 1) return 0;
    when = InYear(parts, year);
    return 4 + taken + static_cast<std::size_t>(length);
}

// The program's name ends at its process id or its colon.
bool IsOurTag(const std::string& word) {
    const std::size_t length = sizeof(kProgram) - 1;
    if (word.compare(0, length, kProgram) != 0) return false;
    if (word.compare(length, std::string::npos, ":") == 0) return true;
    return word.size() > length + 2 && word[length] == '[' &&
           word.compare(word.size() - 2, 2, "]:") == 0;
}

bool HasFacility(const std::string& word) {
    return word.find('.') != std::string::npos && word.find(':') == std::string::npos;
}

std::string NextWord(const std::string& line, std::size_t& at) {
    while (at < line.size() && line[at] == ' ') ++at;
    const std::size_t start = at;
    while (at < line.size() && line[at] != ' ') ++at;
    return line.substr(start, at - start);
}

// Reads on from where it stands; a piece without a line end is kept for the next time.
class LineReader {
  public:
    LineReader(const LogRequest& request, const RecordTaker& take)
        : request_(request), take_(take) {}

    // All that is there now. False when the taker has had enough.
    bool ReadOn(std::FILE* stream) {
        clearerr(stream);
        // One thread: no lock for each character of a log of megabytes.
        for (int c = getc_unlocked(stream); c != EOF; c = getc_unlocked(stream)) {
            if (c != '\n') {
                if (line_.size() < kLongestLine) line_ += static_cast<char>(c);
            } else if (!EndLine()) {
                return false;
            }
        }
        return true;
    }

    bool EndLine() {
        LogRecord record;
        const bool ours = ParseLogLine(line_, request_.now, record);
        line_.clear();
        if (!ours || (record.when != 0 && record.when < request_.since)) return true;
        return take_(record);
    }

    bool HasPiece() const { return !line_.empty(); }

  private:
    const LogRequest& request_;
    const RecordTaker& take_;
    std::string line_;
};

bool IsSameFile(std::FILE* stream, const std::string& path) {
    struct stat open = {};
    struct stat named = {};
    if (fstat(fileno(stream), &open) != 0 || stat(path.c_str(), &named) != 0) return true;
    return open.st_ino == named.st_ino && open.st_dev == named.st_dev &&
           named.st_size >= ftell(stream);
}

// Waits for more, also in the file that takes its place.
void FollowFile(std::FILE* stream, const std::string& path, LineReader& reader) {
    while (reader.ReadOn(stream)) {
        if (IsSameFile(stream, path)) {
            usleep(kFollowPause);
        } else if (std::freopen(path.c_str(), "re", stream) == nullptr) {
            return;
        }
    }
}

bool ReadFile(const std::string& path, const LogRequest& request, const RecordTaker& take) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return false;
    std::FILE* const stream = std::fopen(path.c_str(), "re");
    if (stream == nullptr) return false;
    LineReader reader(request, take);
    if (request.follow) {
        FollowFile(stream, path, reader);
    } else if (reader.ReadOn(stream) && reader.HasPiece()) {
        reader.EndLine();
    }
    if (stream != nullptr) std::fclose(stream);
    return true;
}

bool ReadStandardInput(const LogRequest& request, const RecordTaker& take) {
    LineReader reader(request, take);
    if (reader.ReadOn(stdin) && reader.HasPiece()) reader.EndLine();
    return true;
}

bool ReadJournal(const LogRequest& request, const RecordTaker& take) {
    std::vector<std::string> words = {"journalctl", "--quiet", "--output=export", "--identifier"};
    words.emplace_back(kProgram);
    if (request.since > 0) {
        words.push_back(Format("--since=@%lld", static_cast<long long>(request.since)));
    }
    if (request.follow) words.emplace_back("--follow");
    Child child(words);
    if (child.output() == nullptr) return false;
    LogRecord record;
    while (ReadExportEntry(child.output(), record)) {
        if (!take(record)) break;
    }
    return true;
}

bool ReadLogread(const LogRequest& request, const RecordTaker& take) {
    std::vector<std::string> words = {"logread"};
    if (request.follow) words.emplace_back("-f");
    Child child(words);
    if (child.output() == nullptr) return false;
    LineReader reader(request, take);
    reader.ReadOn(child.output());
    return true;
}

// The older generations are only read by somebody who asks for the past.
bool ReadRouterFiles(const Tree& tree, const LogRequest& request, const RecordTaker& take) {
    for (const char* const name : kLogFiles) {
        if (!tree.Exists(name)) continue;
        LogRequest past = request;
        past.follow = false;
        for (const char* const suffix : kOlder) {
            ReadFile(tree.Locate(std::string(name) + suffix), past, take);
        }
        if (ReadFile(tree.Locate(name), request, take)) return true;
    }
    return false;
}

}  // namespace

bool ParseLogLine(const std::string& line, std::time_t now, LogRecord& record) {
    std::size_t at = ScanTime(line, now, record.when);
    if (at == 0) return false;
    // Host, facility and tag in the forms that there are: the tag is one of the next three words.
    for (int words = 0; words < 3; ++words) {
        const std::string word = NextWord(line, at);
        if (IsOurTag(word)) {
            record.text = at < line.size() ? line.substr(at + 1) : "";
            return true;
        }
        if (words == 1 && !HasFacility(word)) return false;
        if (!word.empty() && word.back() == ':') return false;  // another program's tag
    }
    return false;
}

bool ReadExportEntry(std::FILE* stream, LogRecord& record) {
    record = LogRecord();
    std::string name;
    bool any = false;
    for (int c = std::getc(stream); c != EOF; c = std::getc(stream)) {
        if (c == '\n' && name.empty()) {
            if (any) return true;
            continue;
        }
        if (c != '\n' && c != '=') {
            if (name.size() < kLongestField) name += static_cast<char>(c);
            continue;
        }
        std::string value;
        if (c == '=') {
            while ((c = std::getc(stream)) != EOF && c != '\n') value += static_cast<char>(c);
        } else {
            // Behind a name alone: eight bytes of length, the lowest first, and so many bytes.
            std::uint64_t length = 0;
            for (unsigned i = 0; i < 64; i += 8) {
                length |= static_cast<std::uint64_t>(std::getc(stream) & 0xff) << i;
            }
            if (length > kLongestField) return false;
            value.resize(static_cast<std::size_t>(length));
            if (std::fread(&value[0], 1, value.size(), stream) != value.size()) return false;
            std::getc(stream);
        }
        any = true;
        if (name == "MESSAGE") record.text = value;
        if (name == "__REALTIME_TIMESTAMP") {
            record.when = static_cast<std::time_t>(std::strtoll(value.c_str(), nullptr, 10) /
                                                   1000000);  // from microseconds
        }
        name.clear();
    }
    return any;
}

bool ReadLog(const Tree& tree, const LogRequest& request, const RecordTaker& take,
             std::string& complaint) {
    if (request.file == "-") return ReadStandardInput(request, take);
    if (!request.file.empty()) {
        if (ReadFile(request.file, request, take)) return true;
        complaint = "cannot read the log in that file";
        return false;
    }
    if (tree.IsLive() && tree.Exists(kJournal) && ReadJournal(request, take)) return true;
    if (ReadRouterFiles(tree, request, take)) return true;
    if (tree.IsLive() && ReadLogread(request, take)) return true;
    complaint = "found no system log: no journal, no /var/log/messages, no logread";
    return false;
}

std::vector<LogRecord> RecentRecords(const Tree& tree, LogRequest request, std::size_t most,
                                     std::string& complaint) {
    std::deque<LogRecord> newest;
    request.follow = false;
    const RecordTaker keep = [&](const LogRecord& record) {
        newest.push_back(record);
        if (newest.size() > most) newest.pop_front();
        return true;
    };
    ReadLog(tree, request, keep, complaint);
    return {newest.begin(), newest.end()};
}

}  // namespace modemctl
