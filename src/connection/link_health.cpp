#include "connection/link_health.h"

#include <unistd.h>

#include <string>

#include "core/settings.h"
#include "status/statistics_record.h"
#include "support/countdown_timer.h"
#include "support/file_reader.h"
#include "support/shell.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr char kTxBytesFile[] = "/sys/class/net/wwan0/statistics/tx_bytes";

}  // namespace

int RunPingCheck() {
    if (!g_Cp_PingTimer->HasExpired()) return 0;
    RunShell("ping -c 1 -I wwan0 8.8.8.8 &> /dev/null");
    g_Cp_PingTimer->Start();
    return 1;
}

int CheckTxBytes() {
    std::string count;
    if (access(kTxBytesFile, F_OK) != 0) return 0;
    if (!ReadTextFile(kTxBytesFile, LastCharacter::kAsItIs, count)) return 0;
    int& current = g_S_Globalstats.tx_bytes_current;
    int& previous = g_S_Globalstats.tx_bytes_previous;
    current = ToInt(count);
    if (previous < current) {
        if (IsAbove(0)) Log("Last %s TX count %d > %d (good)", "wwan0", current, previous);
        previous = current;
        return 1;
    }
    // The previous count stays, deliberately: the reset rule counts on failures that last.
    Log("Warning: TX count on %s not incrementing.", "wwan0");
    return 0;
}
