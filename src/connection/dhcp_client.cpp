// The shell lines that start, signal and stop udhcpc. Nobody looks at their results.

#include "connection/dhcp_client.h"

#include <unistd.h>

#include <string>

#include "connection/wwan_interface.h"
#include "state/published.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "support/shell.h"
#include "support/system_log.h"
#include "support/text.h"
#include "support/text_file_writer.h"

namespace {

constexpr useconds_t kSettlePause = 500000;  // microseconds

std::string SignalCommand(const char* kill) {
    return Format("%s `cat %s 2> /dev/null` &> /dev/null", kill, published::kUdhcpcPidFile);
}

}  // namespace

void StopUdhcpc(int mode) {
    Log("Stopping udhcpc on %s", published::kWwanInterface);
    const std::string command = SignalCommand(mode == kTerminate ? "kill" : "kill -USR2");
    LogAbove(0, "DEBUG: running command '%s'", command.c_str());
    g_S_Globalstats.qmi_call_time = "Unknown";  // The call ends with the client.
    RunShell(command);
    BringWwanUp();
    usleep(kSettlePause);
}

void StartUdhcpc() {
    if (!g_S_PppConfig.interface_enabled) return;
    Log("Starting/Signaling udhcpc");
    const std::string start = Format("udhcpc -T 3 -S -b -i %s", published::kWwanInterface);
    // The base text only, without the -G: deliberate, the log has always shown it so.
    // Oddity client-line-logged-short: the log shows the start of udhcpc without its -G.
    LogAbove(0, "DEBUG: running command '%s'", start.c_str());
    RunShell(start + (g_S_PppConfig.default_route ? "" : " -G ") + " &> /dev/null");
    usleep(kSettlePause);
}

void ResetLeaseFailCounter() {
    Log("Resetting udhcpc fail counter file");
    cTextFileWriter counter(published::kLeaseFailCounterFile);
    counter.AddLine("LEASE_FAIL_COUNTER=0");
    counter.WriteFile();
}
