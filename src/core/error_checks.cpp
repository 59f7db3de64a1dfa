// Error counts that others and we ourselves keep, and the rule that makes a reset of them.

#include "core/error_checks.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "modem/reset_device.h"
#include "state/published.h"
#include "state/settings.h"
#include "support/file_reader.h"
#include "support/info_table.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr int kResetModulus = 8;

// Whole seconds. An uptime that cannot be read counts as long enough.
int ReadUptime() {
    std::string text;
    double uptime = 0;
    if (ReadTextFile(published::kUptimeFile, LastCharacter::kAsItIs, text)) {
        if (std::sscanf(text.c_str(), "%lf", &uptime) < 1) uptime = 0;
    } else {
        Log("Unable to open /proc/uptime");
        uptime = g_i_UptimeCutoff + 1;
    }
    LogDebug("Uptime current: %lf, uptime cutoff is %d", uptime, g_i_UptimeCutoff);
    return static_cast<int>(std::min(std::max(0.0, uptime), 2e9));  // In this order for a "nan".
}

int ReadPppErrorCount(int& last_seen) {
    const cInfoTable table(published::kInitStatusFile, '=');
    const int count = ToInt(table.GetValue(published::config_key::kPppErrorCount));
    LogAbove(1, "DEBUG: Read in %d PPP Wireless error%s from file %s", count, count == 1 ? "" : "s",
             published::kInitStatusFile);
    if (count == 0) last_seen = 0;
    return count;
}

// Never through a link: anybody may have put one there.
void CreateMarker() {
    const int fd = open(published::kResettingMarker,
                        O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644);
    if (fd >= 0) close(fd);
}

void ApplyResetRule(int count, int& last_seen) {
    if (ResetIsDue(count, kResetModulus, last_seen)) ResetDevice();
}

}  // namespace

bool ResetIsDue(int count, int modulus, int& last_seen) {
    if (count == 0 || count == last_seen) return false;
    last_seen = count;
    if (access(published::kResettingMarker, F_OK) == 0) {
        unlink(published::kResettingMarker);
        return false;
    }
    if (count % modulus != 0) return false;
    CreateMarker();
    return true;
}

void CheckErrorCounts(int& last_seen) {
    if (ReadUptime() < g_i_UptimeCutoff) return;
    if (!IsLteCard()) {
        LogDebug("Uptime > %d, checking PPP errors", g_i_UptimeCutoff);
        ApplyResetRule(ReadPppErrorCount(last_seen), last_seen);
        return;
    }
    LogDebug("Uptime > %d, checking LTE connection errors", g_i_UptimeCutoff);
    // One last-seen value for both, deliberately: two counts that stand above 0 at the same time
    // overwrite it in turn, and each then counts as changed on every pass.
    // Oddity shared-last-seen: two error counts above 0 can reset the modem at every pass.
    ApplyResetRule(g_i_LteConnectAttempts, last_seen);
    ApplyResetRule(g_i_TxCheckFailures, last_seen);
}
