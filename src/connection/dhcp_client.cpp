#include "connection/dhcp_client.h"

#include <unistd.h>

#include <string>

#include "core/settings.h"
#include "status/statistics_record.h"
#include "support/shell.h"
#include "support/system_log.h"
#include "support/text_file_writer.h"

namespace {

constexpr char kInterface[] = "wwan0";
constexpr char kLeaseFailCounterFile[] = "/tmp/udhcpc.wwan0.lfc";
constexpr useconds_t kSettlePause = 500000;  // microseconds

constexpr char kStartCommand[] = "udhcpc -T 3 -S -b -i wwan0";
constexpr char kTerminateCommand[] =
    "kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null";
constexpr char kReleaseCommand[] =
    "kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null";
constexpr char kInterfaceUpCommand[] = "ifconfig wwan0 0.0.0.0 up &> /dev/null";

}  // namespace

void StopUdhcpc(int mode) {
    Log("Stopping udhcpc on %s", kInterface);
    const char* command = mode == kTerminate ? kTerminateCommand : kReleaseCommand;
    if (IsAbove(0)) Log("DEBUG: running command '%s'", command);
    g_S_Globalstats.qmi_call_time = "Unknown";  // The call ends with the client.
    RunShell(command);
    RunShell(kInterfaceUpCommand);
    usleep(kSettlePause);
}

void StartUdhcpc() {
    if (!g_S_PppConfig.interface_enabled) return;
    Log("Starting/Signaling udhcpc");
    std::string command = kStartCommand;
    if (!g_S_PppConfig.default_route) command += " -G ";
    command += " &> /dev/null";
    // The base text only, without the -G: deliberate, the log has always shown it so.
    if (IsAbove(0)) Log("DEBUG: running command '%s'", kStartCommand);
    RunShell(command);
    usleep(kSettlePause);
}

void ResetLeaseFailCounter() {
    Log("Resetting udhcpc fail counter file");
    cTextFileWriter counter(kLeaseFailCounterFile);
    counter.AddLine("LEASE_FAIL_COUNTER=0");
    counter.WriteFile();
}
