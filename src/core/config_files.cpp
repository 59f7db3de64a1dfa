// Two KEY=value files, watched by their modification time.

#include "core/config_files.h"

#include <sys/stat.h>

#include <cstring>

#include "state/published.h"
#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/info_table.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr std::size_t kLongestApn = 20;
constexpr int kSyncHours = 4;

namespace config_key = published::config_key;

enum FileState : int { kMissing = 0, kUnchanged = 1, kChanged = 2 };

// A watched file: its path, and its state when it was last read.
struct WatchedFile {
    const char* path;
    struct stat saved;

    FileState Test(struct stat& now) const {
        if (stat(path, &now) != 0) return kMissing;
        return now.st_mtime == saved.st_mtime ? kUnchanged : kChanged;
    }
};

// The two files as they were last read. Each is written by its own reader below, and starts with
// the time 0, so that a file that is there counts as changed at the first look.
WatchedFile ppp_file = {published::kPppConfigFile, {}};
WatchedFile provisioning_file = {published::kProvisioningFile, {}};

std::string LowerValue(const cInfoTable& table, const char* key) {
    std::string value = table.GetValue(key);
    CleanWhiteSpace(value);
    ToLower(value);
    return value;
}

// Names CM_APN whichever key is missing: deliberate, field notes search the log for this line.
// Oddity missing-entry-is-apn: the log names CM_APN when another key is missing.
void LogMissingEntry() {
    LogDebug("DEBUG:  %s(): %s entry missing ", "ReadPppConfigFile", config_key::kApn);
}

std::string CheckedApn(const std::string& apn) {
    std::string lower = apn;
    ToLower(lower);
    if (lower.empty()) {
        Log("Note: Config file APN is empty");
        return "";
    }
    if (ApnIsValidFormat(lower) == 0) {
        Log("Error:  The APN '%s' contains invalid characters", lower.c_str());
        return "";
    }
    if (lower.size() > kLongestApn) {
        Log("Error:  The APN '%s' is too long", lower.c_str());
        return "";
    }
    return apn;
}

void ReadApn(const cInfoTable& table) {
    if (!table.HasLabel(config_key::kApn)) return LogMissingEntry();
    std::string apn = table.GetValue(config_key::kApn);
    CleanWhiteSpace(apn);
    g_S_PppConfig.apn = CheckedApn(apn);
}

void ReadInterfaceEnabled(const cInfoTable& table) {
    g_S_PppConfig.interface_enabled = true;
    if (!table.HasLabel(config_key::kEnableInterface)) return LogMissingEntry();
    const std::string value = LowerValue(table, config_key::kEnableInterface);
    if (value == "no") {
        Log("Config option %s is 'NO', WAN interface is disabled", config_key::kEnableInterface);
        g_S_PppConfig.interface_enabled = false;
    } else {
        Log("Config option %s is '%s'", config_key::kEnableInterface, value.c_str());
    }
}

// Both messages name CM_ENABLE_INTERFACE, deliberately: the web page's log view looks for it.
// Oddity route-logged-as-enable: CM_DEFAULTROUTE is logged under the name CM_ENABLE_INTERFACE.
void ReadDefaultRoute(const cInfoTable& table) {
    g_S_PppConfig.default_route = true;
    if (!table.HasLabel(config_key::kDefaultRoute)) return LogMissingEntry();
    const std::string value = LowerValue(table, config_key::kDefaultRoute);
    if (value == "no") {
        Log("Config option %s is '%s', WAN interface default route setting is off",
            config_key::kEnableInterface, value.c_str());
        g_S_PppConfig.default_route = false;
    } else {
        Log("Config option %s is '%s'", config_key::kEnableInterface, value.c_str());
    }
}

// Without the key the level falls to 0 and takes the -d options back: deliberate, a router with a
// provisioning file is quiet unless the file asks for more.
// Oddity debug-level-falls: a provisioning file without DEBUG_MODE takes the -d options back.
void ReadDebugMode(const cInfoTable& table) {
    if (!table.HasLabel(config_key::kDebugMode)) {
        g_i_DebugLevel = 0;
        return;
    }
    std::string value = table.GetValue(config_key::kDebugMode);
    CleanWhiteSpace(value);
    if (value.empty() || !IsInteger(value)) return;
    g_i_DebugLevel = ToInt(value);
    Log("%s set to %d", config_key::kDebugMode, g_i_DebugLevel);
}

void ReadSyncTime(const cInfoTable& table) {
    g_S_PppConfig.time_sync_enabled = false;
    if (!table.HasLabel(config_key::kSyncTime) || LowerValue(table, config_key::kSyncTime) != "yes")
        return;
    Log("%s config option is YES.  Time sync will attempt every %d hours", config_key::kSyncTime,
        kSyncHours);
    g_S_PppConfig.time_sync_enabled = true;
    g_Cp_TowerTimeTimer->Stop();  // The next answered pass synchronises.
}

}  // namespace

int ReadPppConfigFile() {
    struct stat now = {};
    if (ppp_file.Test(now) != kChanged) return 0;
    ppp_file.saved = now;
    const cInfoTable table(ppp_file.path, '=');
    ReadApn(table);
    ReadInterfaceEnabled(table);
    ReadDefaultRoute(table);
    return 1;
}

int ReadProvisioningFile() {
    struct stat now = {};
    const FileState state = provisioning_file.Test(now);
    if (state == kMissing) g_S_PppConfig.time_sync_enabled = true;
    if (state != kChanged) return 0;
    g_S_PppConfig.provisioning_changed = true;
    provisioning_file.saved = now;
    const cInfoTable table(provisioning_file.path, '=');
    ReadDebugMode(table);
    ReadSyncTime(table);
    return 1;
}

int ApnIsValidFormat(const std::string& apn) {
    constexpr char kAllowed[] = "abcdefghijklmnopqrstuvwxyz0123456789.-_!";
    if (apn.empty()) return 0;
    LogDebug("DEBUG: %s(): Checking for bad characters in '%s'", __func__, apn.c_str());
    for (const char c : apn) {
        const char* allowed = kAllowed;
        for (; *allowed != '\0'; ++allowed) {
            LogAbove(2, "DEBUG: %s(): Checking if '%c' = '%c'", __func__, c, *allowed);
            if (c == *allowed) break;
        }
        if (*allowed != '\0') continue;
        LogDebug("DEBUG: %s(): Error: Bad APN", __func__);
        return 0;
    }
    LogDebug("DEBUG: %s(): APN has valid chars", __func__);
    return 1;
}
