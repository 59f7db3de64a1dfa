// Checks of the files between the daemon and the others: pid file, configuration, spool.
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>

#include "modemctl/doctor_checks.h"
#include "modemctl/sms_spool.h"
#include "modemctl/time_text.h"
#include "state/published.h"
#include "support/info_table.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr std::size_t kLongestApn = 20;
constexpr long long kMostFuture = 60;     // seconds
constexpr long long kSoonOld = 72000;     // seconds: 20 of the 24 hours that a file lives
constexpr std::size_t kManyFiles = 1000;  // at one each 15 s, more than four hours

using Keys = std::vector<std::string>;

bool IsOneOf(const Keys& keys, const std::string& wanted) {
    for (const std::string& key : keys) {
        if (key == wanted) return true;
    }
    return false;
}

// What any of the two configuration files may suffer from; fine when it does not.
Finding JudgeConfigFile(const Patient& patient, const char* path, const Keys& keys) {
    const TextFile file = patient.tree.Read(path, AnyText);
    if (file.presence == Presence::kAbsent) return NotChecked(std::string("there is no ") + path);
    if (file.presence == Presence::kUnreadable) {
        return Bad(std::string(path) + " cannot be read", std::string("chmod 0644 ") + path);
    }
    if (file.modified == 0) {
        return Bad(std::string(path) + " has the modification time 0: the daemon never reads it",
                   std::string("touch ") + path);
    }
    if (file.modified > patient.snapshot.now + kMostFuture) {
        return Note(std::string(path) + " is of the future: " + ShownTime(file.modified),
                    std::string("set the clock, then touch ") + path);
    }
    if (!file.text.empty() && file.text.back() != '\n') {
        return Bad(std::string(path) +
                       " has no line end at its end: its last character counts "
                       "twice",
                   std::string("echo >> ") + path);
    }
    const cInfoTable table = cInfoTable::FromText(file.text, '=');
    for (const cStringTokenizer& entry : table) {
        const std::string key = entry.GetTokenCount() > 0 ? entry[0] : "";
        if (IsOneOf(keys, key)) continue;
        return Note("the daemon does not know the key '" + key + "' in " + path,
                    "correct it: " + keys.front() + ", ... (docs/files.md); or delete the line");
    }
    return Fine(path);
}

bool HasOnlyApnCharacters(const std::string& apn) {
    for (const char c : apn) {
        const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0;
        if (!plain && std::string(".-_!").find(c) == std::string::npos) return false;
    }
    return true;
}

// The APN of the modem's context 3, which the daemon sets; false when the modem has not told it.
bool ContextApn(const Statistics& statistics, std::string& apn) {
    for (const auto& row : statistics.values) {
        const std::string label = published::key::kSimContextApn;
        if (row.first.compare(0, label.size(), label) != 0) continue;
        if (row.second.compare(0, 2, "3:") != 0) continue;
        apn = row.second.substr(2);
        return true;
    }
    return false;
}

std::string Mode(mode_t mode) {
    return Format("%04o", static_cast<unsigned>(mode & 07777));
}

// The spool and what leads to it, up to /tmp.
Finding JudgeSpoolPart(const Tree& tree, const std::string& part) {
    struct stat status = {};
    const std::string place =
        tree.Locate(part.substr(0, part.rfind('/'))) + part.substr(part.rfind('/'));
    if (lstat(place.c_str(), &status) != 0) {
        return Note(part + " is not there yet",
                    "mkdir -p -m 0700 " + part + " in a start script, before any user can");
    }
    if (S_ISLNK(status.st_mode)) {
        if (status.st_uid == 0) return Fine("");
        return Bad(part + " is somebody else's link: the daemon does not use it", "rm " + part);
    }
    if (!S_ISDIR(status.st_mode)) {
        return Bad(part + " is no directory", "rm " + part + "; mkdir -m 0700 " + part);
    }
    if (tree.IsLive() && status.st_uid != 0) {
        return Bad(Format("%s belongs to user %d, who reads and changes messages", part.c_str(),
                          static_cast<int>(status.st_uid)),
                   "chown 0:0 " + part + "; chmod 0700 " + part);
    }
    if ((status.st_mode & 0002) != 0) {
        return Bad(part + " may be written by anybody (mode " + Mode(status.st_mode) +
                       "): whoever writes there may talk to the modem",
                   "chmod 0700 " + part);
    }
    return Fine("");
}

Finding JudgeEntry(const Patient& patient, const SpoolEntry& entry) {
    const std::string path = entry.Path();
    if (entry.kind == EntryKind::kDirectory) {
        return Bad("the directory " + path + " cannot be sent: what is listed behind it waits",
                   "rmdir '" + path + "'");
    }
    if (entry.kind == EntryKind::kLink) {
        return Note("the link " + path + " is followed, and what it leads to is sent",
                    "rm '" + path + "', unless you made it");
    }
    if (entry.kind == EntryKind::kOther) {
        return Note(path + " is no plain file: it is deleted as invalid", "rm '" + path + "'");
    }
    const long long age = patient.snapshot.now - entry.changed;
    if (age > kSoonOld) {
        return Note(path + " waits since " + ShownSpan(age) + ", and is deleted at 24 hours",
                    "see why it is not sent: modemctl log --since 1h");
    }
    return Fine("");
}

}  // namespace

Finding CheckPidFile(const Patient& patient) {
    const Snapshot& snapshot = patient.snapshot;
    switch (snapshot.daemon) {
        case DaemonState::kNeverStarted:
            return Note("there is no pid file: the daemon was never started here",
                        "start it: /etc/init.d/modemd start, or systemctl start modemd");
        case DaemonState::kRunning:
            return Fine(Format("the daemon runs as process %d", snapshot.pid));
        case DaemonState::kDead:
            return Bad(Format("the pid file is stale: no daemon has process id %d", snapshot.pid),
                       "start it: /etc/init.d/modemd start, or systemctl start modemd; it takes "
                       "the file over");
        case DaemonState::kUnknown:
            break;
    }
    return NotChecked("processes are not in this tree");
}

Finding CheckPppFile(const Patient& patient) {
    using namespace published::config_key;
    return JudgeConfigFile(patient, published::kPppConfigFile,
                           {kApn, kEnableInterface, kDefaultRoute});
}

Finding CheckProvisioningFile(const Patient& patient) {
    using namespace published::config_key;
    const Finding finding =
        JudgeConfigFile(patient, published::kProvisioningFile, {kDebugMode, kSyncTime});
    const std::string& level = patient.snapshot.provisioning.debug_mode;
    if (finding.health == Health::kFine && ToInt(level) > 0) {
        return Note("DEBUG_MODE=" + level + " fills the log",
                    std::string("set DEBUG_MODE=0 in ") + published::kProvisioningFile);
    }
    return finding;
}

Finding CheckApn(const Patient& patient) {
    const std::string& apn = patient.snapshot.ppp.apn;
    const std::string where = std::string("correct CM_APN in ") + published::kPppConfigFile;
    if (apn.empty()) return NotChecked("no APN is configured: the modem keeps its own");
    if (!HasOnlyApnCharacters(apn)) {
        return Bad("the APN '" + apn + "' is not used: letters, digits, '.', '-', '_', '!' only",
                   where);
    }
    if (apn.size() > kLongestApn) {
        return Bad("the APN '" + apn + "' is not used: more than 20 characters", where);
    }
    std::string taken;
    if (patient.snapshot.card != Card::kLte || !ContextApn(patient.snapshot.statistics, taken)) {
        return Fine("the APN '" + apn + "' is well formed");
    }
    if (taken == apn) return Fine("the modem has taken the APN '" + apn + "'");
    return Bad("the modem has refused the APN '" + apn + "': its context 3 has '" + taken + "'",
               where + ", or touch the file to set it again");
}

Finding CheckSpoolDirectories(const Patient& patient) {
    for (const char* const part :
         {"/tmp/sms", "/tmp/sms/send", "/tmp/sms/recv", "/tmp/sms/send_fail"}) {
        const Finding finding = JudgeSpoolPart(patient.tree, part);
        if (finding.health != Health::kFine) return finding;
    }
    return Fine("the directories belong to root, and nobody else writes there");
}

Finding CheckSpoolEntries(const Patient& patient) {
    std::vector<SpoolEntry> entries;
    if (!ListSpool(patient.tree, SpoolPlace::kWaiting, entries)) {
        return NotChecked("no send directory");
    }
    Finding worst = Fine(Format("%d waiting", static_cast<int>(entries.size())));
    for (const SpoolEntry& entry : entries) {
        const Finding finding = JudgeEntry(patient, entry);
        if (finding.health == Health::kBad) return finding;
        if (finding.health == Health::kNote) worst = finding;
    }
    if (worst.health == Health::kFine && entries.size() > kManyFiles) {
        return Note(worst.what + ": one is sent every 15 s, and none lives longer than a day",
                    "find out who writes them: ls -l /tmp/sms/send | head");
    }
    return worst;
}

}  // namespace modemctl
