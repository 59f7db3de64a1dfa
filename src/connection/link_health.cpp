// Traffic made on purpose, and the counter that must show it.

#include "connection/link_health.h"

#include <unistd.h>

#include <string>

#include "state/published.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/file_reader.h"
#include "support/shell.h"
#include "support/system_log.h"
#include "support/text.h"

int RunPingCheck() {
    if (!g_Cp_PingTimer->HasExpired()) return 0;
    RunShell(Format("ping -c 1 -I %s 8.8.8.8 &> /dev/null", published::kWwanInterface));
    g_Cp_PingTimer->Start();
    return 1;
}

int CheckTxBytes() {
    std::string count;
    if (access(published::kTxBytesFile, F_OK) != 0) return 0;
    if (!ReadTextFile(published::kTxBytesFile, LastCharacter::kAsItIs, count)) return 0;
    int& current = g_S_Globalstats.tx_bytes_current;
    int& previous = g_S_Globalstats.tx_bytes_previous;
    current = ToInt(count);
    if (previous < current) {
        if (IsAbove(0))
            Log("Last %s TX count %d > %d (good)", published::kWwanInterface, current, previous);
        previous = current;
        return 1;
    }
    // The previous count stays, deliberately: the reset rule counts on failures that last.
    // Oddity tx-count-stays: a counter that begins again counts as a dead link up to the old count.
    Log("Warning: TX count on %s not incrementing.", published::kWwanInterface);
    return 0;
}
