#include "rig/manners.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>

#include "state/published.h"

namespace rig {

namespace {

namespace fs = std::filesystem;

constexpr Micros kMillisecond = 1000;
constexpr Micros kSecond = 1000 * kMillisecond;
constexpr unsigned kMode = 0644;

// What is known of one pause: the length, and what comes right before it.
struct Step {
    Micros length;
    Deed after;
    Micros before = 0;  // for a sleep: its length
};

// The schedule's pauses, each behind what it follows. A failed write leaves out the pauses behind
// it, so that the next one of the schedule follows the write.
constexpr Step kSchedule[] = {
    // Between a command, its CR and its LF; between the two commands that carry the APN.
    {20 * kMillisecond, Deed::kPortWrite},
    {20 * kMillisecond, Deed::kPortLook},
    {20 * kMillisecond, Deed::kPortRead},  // of which the last one failed
    // Before an answer, and between its pieces.
    {50 * kMillisecond, Deed::kPortWrite},
    {50 * kMillisecond, Deed::kPortRead},
    // The signal's answer, behind the second that each canned command takes.
    {200 * kMillisecond, Deed::kSleep, kSecond},
    {200 * kMillisecond, Deed::kPortWrite},
    // A DHCP client that was told to go.
    {500 * kMillisecond, Deed::kShell},
    // Canned commands; commands that are given time; a modem that says nothing.
    {kSecond, Deed::kPortWrite},
    {kSecond, Deed::kSleep, 50 * kMillisecond},
    {kSecond, Deed::kPortLook},
    {kSecond, Deed::kPortRead},
    // Commands that are given more time; a call that was begun; the end of a pass.
    {2 * kSecond, Deed::kSleep, 50 * kMillisecond},
    {2 * kSecond, Deed::kSleep, kSecond},
    {2 * kSecond, Deed::kSleep, 5 * kSecond},
    {2 * kSecond, Deed::kPortWrite},
    {2 * kSecond, Deed::kPortLook},
    {2 * kSecond, Deed::kPortRead},
    {2 * kSecond, Deed::kShell},
    {2 * kSecond, Deed::kOther},
    // The state of a call; a call that was ended; a modem that was reset.
    {5 * kSecond, Deed::kSleep, 50 * kMillisecond},
    {5 * kSecond, Deed::kSleep, kSecond},
    {5 * kSecond, Deed::kPortWrite},
    {5 * kSecond, Deed::kShell},
    // A port that cannot be opened.
    {10 * kSecond, Deed::kOther},
};

bool IsOfTheSchedule(const Pause& pause) {
    return std::any_of(std::begin(kSchedule), std::end(kSchedule), [&](const Step& step) {
        return step.length == pause.length && step.after == pause.after &&
               step.before == pause.before;
    });
}

std::string InSeconds(Micros length) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6f s", static_cast<double>(length) / kSecond);
    return text;
}

std::string NameOf(const Pause& pause) {
    switch (pause.after) {
        case Deed::kPortWrite:
            return "a write to the port";
        case Deed::kPortRead:
            return "a read of the port";
        case Deed::kPortLook:
            return "a look at the port";
        case Deed::kSleep:
            return "a pause of " + InSeconds(pause.before);
        case Deed::kShell:
            return "a command line";
        case Deed::kOther:
            break;
    }
    return "something else";
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

// What a kept descriptor is for; empty for one that is not the daemon's to keep.
std::string PurposeOf(int fd, const std::string& target) {
    if (fd <= STDERR_FILENO) return "standard descriptor " + std::to_string(fd);
    if (StartsWith(target, "/run/") || StartsWith(target, "/var/run/")) return "lock";
    if (StartsWith(target, published::kLogFile)) return "log";
    if (target == "/dev/null") return "port";  // as the rig opens it
    return "";
}

bool IsTheDaemons(const fs::path& path) {
    return !StartsWith(path, published::kSmsReceiveDirectory) ||
           StartsWith(path.filename(), published::kSmsReceivedPrefix);
}

}  // namespace

std::vector<std::string> NeedlessPauses(const Shared& memory) {
    std::vector<std::string> found;
    for (std::uint32_t i = 0; i < memory.pause_count; ++i) {
        const Pause& pause = memory.pauses[i];
        if (IsOfTheSchedule(pause)) continue;
        found.push_back(InSeconds(pause.length) + " behind " + NameOf(pause) + ", " +
                        std::to_string(pause.count) + " times");
    }
    return found;
}

std::vector<std::string> LeakedDescriptors(pid_t process) {
    std::vector<std::string> found;
    std::map<std::string, int> kept;
    std::error_code none;
    const std::string folder = "/proc/" + std::to_string(process) + "/fd";
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, none)) {
        const int fd = std::stoi(entry.path().filename());
        const std::string target = fs::read_symlink(entry.path(), none);
        const std::string purpose = PurposeOf(fd, target);
        if (purpose.empty() || ++kept[purpose] > 1) {
            found.push_back(std::to_string(fd) + " on " + target);
        }
    }
    return found;
}

std::vector<std::string> WrongModes() {
    std::vector<std::string> found;
    for (const char* folder : {"/var/log", "/var/run", "/tmp", published::kSmsReceiveDirectory}) {
        std::error_code none;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, none)) {
            struct stat status = {};
            if (lstat(entry.path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
            if ((status.st_mode & 07777U) == kMode || !IsTheDaemons(entry.path())) continue;
            char mode[16];
            std::snprintf(mode, sizeof(mode), "%04o", status.st_mode & 07777U);
            found.push_back(entry.path().string() + " has the mode " + mode);
        }
    }
    return found;
}

}  // namespace rig
