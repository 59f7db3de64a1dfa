// The spool as a stranger may have left it: names, links, ages, contents.

#include "sms/spool.h"

#include <dirent.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/file_reader.h"
#include "support/info_table.h"
#include "support/shell.h"
#include "support/system_log.h"
#include "support/text.h"

namespace sms_label = published::sms_label;

namespace {

// A file whose status does not fit its structure would count as one of 1970, and be deleted.
static_assert(sizeof(time_t) == 8 && sizeof(off_t) == 8,
              "on 32 bits: -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64, glibc 2.34 or musl 1.2");

constexpr std::int64_t kMostSeconds = 86400;  // a file's life in the spool
constexpr int kMostMinutes = 1440;            // the same, as the log shows it

void LogInvalid(const std::string& path, const char* field) {
    Log("SMS send file %s is invalid, does not contain a '%s' field.", path.c_str(), field);
}

bool IsForeignLink(const std::string& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return false;
    return status.st_uid != 0 && status.st_uid != geteuid();
}

// At any debug level but 0 the timer is not asked, deliberately: whoever looks for a fault sees
// every run.
// Oddity debug-ages-always: at a debug level the spool is searched for old files at every SMS pass.
bool CleanupMustWait() {
    return g_Cp_SmsCleanupTimer->IsCounting() && g_i_DebugLevel == 0;
}

std::int64_t NowInSeconds() {
    timeval now = {};
    gettimeofday(&now, nullptr);
    return now.tv_sec;
}

// A file whose status cannot be read, a dangling link for one, counts as changed in 1970.
std::int64_t SecondsSinceChange(const std::string& path, std::int64_t now) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return now;
    return now - status.st_ctime;
}

// Deletes the file when it has not changed its status for more than a day.
void DeleteIfOld(const std::string& directory, const std::string& name, std::int64_t now) {
    const std::string path = directory + name;
    const std::int64_t age = SecondsSinceChange(path, now);
    LogAbove(0, "DEBUG: %s(): Checking age of SMS file %s, %d/%d seconds", "DeleteOldSmSFiles",
             name.c_str(), static_cast<int>(age), static_cast<int>(kMostSeconds));
    if (age <= kMostSeconds) return;
    Log("Deleting SMS file '%s', older than %d minutes.", path.c_str(), kMostMinutes);
    DeleteSpoolFile(directory, name);
}

}  // namespace

bool IsSafeSpoolPath(const std::string& directory) {
    constexpr std::size_t kBehindTmp = sizeof("/tmp/") - 1;
    for (auto slash = directory.find('/', kBehindTmp); slash != std::string::npos;
         slash = directory.find('/', slash + 1)) {
        const std::string element = directory.substr(0, slash);
        if (!IsForeignLink(element)) continue;
        Log("SMS directory %s is a link that somebody else made, not using it", element.c_str());
        return false;
    }
    return true;
}

void MakeSpoolDirectories(const std::vector<std::string>& directories) {
    std::string command = "mkdir -p";
    for (const std::string& directory : directories) {
        if (!IsSafeSpoolPath(directory)) return;
        command += " " + directory;
    }
    RunShell(command);
}

void DeleteSpoolFile(const std::string& directory, const std::string& name) {
    if (IsSafeSpoolPath(directory)) unlink((directory + name).c_str());
}

int ReadSmsDirectory(const std::string& directory, const NameVisitor& visit) {
    const bool safe = IsSafeSpoolPath(directory);
    DIR* stream = safe ? opendir(directory.c_str()) : nullptr;
    if (stream == nullptr) {
        const int error = safe ? errno : ELOOP;
        LogAbove(0, "DEBUG: Error opening SMS read directory %s, errno %d", directory.c_str(),
                 error);
        return error;
    }
    while (const dirent* entry = readdir(stream)) {
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && !visit(name)) break;
    }
    closedir(stream);
    return 0;
}

bool ReadSmsSendFile(const std::string& path, std::string& to, std::string& message) {
    std::string text;
    if (!ReadTextFile(path, LastCharacter::kDoubled, text)) {
        Log("Cannot open SMS file %s", path.c_str());
        return false;
    }
    const cInfoTable table = cInfoTable::FromText(text, '=');
    if (table.HasLabel(sms_label::kTo)) {
        to = table.GetValue(sms_label::kTo);
        CleanWhiteSpace(to);
    } else {
        LogInvalid(path, sms_label::kTo);
    }
    // The missing number takes no part in the result, deliberately: the message goes out to an
    // empty number, the modem rejects it, and the file ends in send_fail, where it is noticed.
    // Oddity no-number-is-tried: a file without TO goes to send_fail after three tries.
    const auto found = text.find(sms_label::kMessage);
    if (found == std::string::npos) {
        LogInvalid(path, sms_label::kMessage);
        return false;
    }
    message = text.substr(found + sizeof(sms_label::kMessage) - 1);
    return true;
}

void DeleteOldSmSFiles(const std::string& directory) {
    LogAbove(0, "DEBUG: %s(%s): running", __func__, directory.c_str());
    MakeSpoolDirectories({directory});
    const std::int64_t now = NowInSeconds();
    const int error = ReadSmsDirectory(directory, [&](const std::string& name) {
        DeleteIfOld(directory, name, now);
        return true;
    });
    if (error != 0) {
        LogAbove(0, "DEBUG: %s():  Cannot read dir %s, errno %d", __func__, directory.c_str(),
                 error);
    }
}

void DeleteOldSendSmSFiles() {
    if (CleanupMustWait()) return;
    LogAbove(0, "DEBUG: %s running", __func__);
    DeleteOldSmSFiles(kSmsSendDirectory);
    DeleteOldSmSFiles(kSmsFailDirectory);
}

void DeleteOldRecvSmSFiles() {
    if (CleanupMustWait()) return;
    LogAbove(0, "DEBUG: %s running", __func__);
    DeleteOldSmSFiles(kSmsReceiveDirectory);
}
