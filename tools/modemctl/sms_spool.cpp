#include "modemctl/sms_spool.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "modemctl/unicode.h"
#include "state/published.h"
#include "support/file_reader.h"
#include "support/info_table.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace sms_label = published::sms_label;

// A received text is an answer of the modem at most.
constexpr std::size_t kLongestReceived = 1024 * 1024;
constexpr std::size_t kStampLength = 16;  // ".20260314-091502"

EntryKind KindOf(mode_t mode) {
    if (S_ISREG(mode)) return EntryKind::kFile;
    if (S_ISLNK(mode)) return EntryKind::kLink;
    return S_ISDIR(mode) ? EntryKind::kDirectory : EntryKind::kOther;
}

// What stands behind `label` at `at`, up to the line end, which is passed over.
bool TakeField(const std::string& file, const char* label, std::size_t& at, std::string& value) {
    const std::string wanted = label;
    if (file.compare(at, wanted.size(), wanted) != 0) return false;
    const std::size_t start = at + wanted.size();
    const std::size_t end = file.find('\n', start);
    if (end == std::string::npos) return false;
    value = file.substr(start, end - start);
    at = end + 1;
    return true;
}

// The very file that was looked at; nothing but a regular one is read.
bool ReadRegularFile(const std::string& path, std::size_t most, std::string& text) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    const int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return false;
    char piece[4096];
    ssize_t count = 0;
    if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode)) {
        while (text.size() < most && (count = read(fd, piece, sizeof(piece))) > 0) {
            text.append(piece, static_cast<std::size_t>(count));
        }
    }
    close(fd);
    return count >= 0;
}

// "sms_msg20260314-091502." and 12: the daemon counts the messages of one second.
void SplitNumber(const std::string& name, std::string& stem, std::string& number) {
    const std::size_t last = name.find_last_not_of("0123456789");
    const std::size_t start = last == std::string::npos ? 0 : last + 1;
    stem = name.substr(0, start);
    number = name.substr(start);
}

bool ComesBefore(const SpoolEntry& a, const SpoolEntry& b) {
    std::string stem_a, stem_b, number_a, number_b;
    SplitNumber(a.name, stem_a, number_a);
    SplitNumber(b.name, stem_b, number_b);
    if (stem_a != stem_b) return stem_a < stem_b;
    if (number_a.size() != number_b.size()) return number_a.size() < number_b.size();
    return number_a < number_b;
}

bool HasPlaceInFront(const std::string& typed, SpoolPlace place, std::string& name) {
    for (const std::string& word :
         {std::string(PlaceWord(place)) + "/", std::string(PlaceDirectory(place))}) {
        if (typed.compare(0, word.size(), word) != 0) continue;
        name = typed.substr(word.size());
        return true;
    }
    return false;
}

}  // namespace

const char* PlaceWord(SpoolPlace place) {
    switch (place) {
        case SpoolPlace::kReceived:
            return "received";
        case SpoolPlace::kWaiting:
            return "waiting";
        case SpoolPlace::kFailed:
            return "failed";
    }
    return "";
}

const char* PlaceDirectory(SpoolPlace place) {
    switch (place) {
        case SpoolPlace::kReceived:
            return published::kSmsReceiveDirectory;
        case SpoolPlace::kWaiting:
            return published::kSmsSendDirectory;
        case SpoolPlace::kFailed:
            return published::kSmsFailDirectory;
    }
    return "";
}

const char* KindWord(EntryKind kind) {
    switch (kind) {
        case EntryKind::kFile:
            return "file";
        case EntryKind::kLink:
            return "link";
        case EntryKind::kDirectory:
            return "directory";
        case EntryKind::kOther:
            return "special file";
        case EntryKind::kGone:
            return "gone";
    }
    return "";
}

SpoolEntry LookAt(const Tree& tree, SpoolPlace place, const std::string& name) {
    SpoolEntry entry;
    entry.place = place;
    entry.name = name;
    struct stat status = {};
    const std::string path = tree.Locate(PlaceDirectory(place)) + "/" + name;
    if (lstat(path.c_str(), &status) != 0) return entry;
    entry.kind = KindOf(status.st_mode);
    entry.size = status.st_size;
    entry.modified = status.st_mtim.tv_sec;
    entry.nanoseconds = status.st_mtim.tv_nsec;
    entry.changed = tree.IsLive() ? status.st_ctime : status.st_mtime;
    return entry;
}

bool ListSpool(const Tree& tree, SpoolPlace place, std::vector<SpoolEntry>& entries) {
    std::vector<Entry> listing;
    if (!tree.List(PlaceDirectory(place), listing)) return false;
    const std::size_t first = entries.size();
    for (const Entry& found : listing) {
        SpoolEntry entry = LookAt(tree, place, found.name);
        if (entry.kind != EntryKind::kGone) entries.push_back(entry);
    }
    std::sort(entries.begin() + static_cast<std::ptrdiff_t>(first), entries.end(), ComesBefore);
    return true;
}

SpoolMessage ParseReceived(const std::string& file) {
    SpoolMessage message;
    std::size_t at = 0;
    if (file.empty() || file.back() != '\n') {
        message.readable = Readable::kUnfinished;
        return message;
    }
    const std::string label = sms_label::kMessage;
    if (!TakeField(file, sms_label::kFrom, at, message.number) ||
        !TakeField(file, sms_label::kTime, at, message.time) ||
        file.compare(at, label.size(), label) != 0) {
        return message;
    }
    message.text = file.substr(at + label.size());
    // Each line of the text and the field end in a line feed.
    while (!message.text.empty() && message.text.back() == '\n') message.text.pop_back();
    message.readable = Readable::kGood;
    return message;
}

SpoolMessage ParseSendFile(const std::string& file) {
    SpoolMessage message;
    message.number = cInfoTable::FromText(file, '=').GetValue(sms_label::kTo);
    CleanWhiteSpace(message.number);
    const std::string label = sms_label::kMessage;
    const std::size_t found = file.find(label);
    if (found == std::string::npos) return message;
    message.text = file.substr(found + label.size());
    message.readable = Readable::kGood;
    return message;
}

std::string SendFileText(const std::string& number, const std::string& text) {
    return std::string(sms_label::kTo) + "=" + number + "\n" + sms_label::kMessage + text;
}

SpoolMessage ReadMessage(const Tree& tree, const SpoolEntry& entry) {
    const bool received = entry.place == SpoolPlace::kReceived;
    std::string file;
    const std::string path = tree.Locate(PlaceDirectory(entry.place)) + "/" + entry.name;
    if (!ReadRegularFile(path, received ? kLongestReceived : kLongestTextFile, file)) return {};
    return received ? ParseReceived(file) : ParseSendFile(file);
}

std::string NameBeforeFailure(const std::string& name) {
    if (name.size() <= kStampLength) return name;
    const std::string stamp = name.substr(name.size() - kStampLength);
    for (std::size_t i = 0; i < kStampLength; ++i) {
        const bool digit = stamp[i] >= '0' && stamp[i] <= '9';
        const bool fits = i == 0 ? stamp[i] == '.' : i == 9 ? stamp[i] == '-' : digit;
        if (!fits) return name;
    }
    return name.substr(0, name.size() - kStampLength);
}

bool IsFailureOf(const std::string& failed_name, const std::string& name) {
    return failed_name != name && NameBeforeFailure(failed_name) == name;
}

bool FindEntry(const Tree& tree, const std::string& typed, SpoolEntry& entry,
               std::string& complaint) {
    std::vector<SpoolEntry> found;
    for (const SpoolPlace place : kSpoolPlaces) {
        std::string name = typed;
        const bool here = HasPlaceInFront(typed, place, name);
        std::vector<SpoolEntry> entries;
        ListSpool(tree, place, entries);
        for (const SpoolEntry& candidate : entries) {
            const bool same = candidate.name == name || Escaped(candidate.name, false) == name ||
                              Escaped(candidate.name, true) == name;
            if (same) found.push_back(candidate);
        }
        if (here) break;
    }
    if (found.size() == 1) {
        entry = found[0];
        return true;
    }
    complaint = found.empty() ? "there is no message '" : "more than one place has a message '";
    complaint += Escaped(typed, false) + "'";
    if (found.size() > 1) complaint += "; say where: received/, waiting/ or failed/ in front";
    return false;
}

}  // namespace modemctl
