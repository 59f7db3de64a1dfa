// The ways out. A handler only sets a flag; the next pass acts on it.

#include "core/shutdown.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "connection/dhcp_client.h"
#include "connection/wwan_interface.h"
#include "modem/at_channel.h"
#include "modem/reset_device.h"
#include "state/published.h"
#include "state/settings.h"
#include "support/shell.h"
#include "support/system_log.h"

namespace {

void OnSigInt(int) {
    g_b_GotSigInt = 1;
}

void OnSigHup(int) {
    g_b_GotSigHup = 1;
}

void OnSigTerm(int) {
    g_b_GotSigTerm = 1;
}

void TakeLinkDown() {
    StopUdhcpc(kReleaseLease);
    StopUdhcpc(kTerminate);
    SendCommandType(kSendDataCallDisconnect);
    ResetLeaseFailCounter();
    TakeWwanDown();
}

}  // namespace

void InstallSignalHandlers() {
    std::signal(SIGINT, OnSigInt);
    std::signal(SIGHUP, OnSigHup);
    std::signal(SIGTERM, OnSigTerm);
}

void CheckSignals() {
    if (g_b_GotSigInt != 0 || g_b_GotSigTerm != 0) {
        Log("received SIGINT/SIGTERM");
        CleanupAndExit();
    }
    if (g_b_GotSigHup != 0) {
        // Oddity recieved: search the log for "recieved SIGHUP".
        Log("recieved SIGHUP, resetting device");  // Spelled so on purpose, as old logs have it.
        ResetDevice();
        CleanupAndExit();
    }
}

// The pid file stays, deliberately: the next start finds its process gone and takes it over.
// Oddity pid-file-stays: a pid file does not mean that the daemon runs.
void CleanupAndExit() {
    Log("doing cleanup and exiting");
    unlink(published::kCardStatisticsFile);
    unlink("/var/run/BackendResetControl");
    // Emptied, not removed: the signal display keeps the lightbar file open.
    RunShell("/bin/echo -n  > /var/log/lightbar");
    RunShell("/bin/rm -f /var/log/wireless.*");
    if (IsLteCard()) TakeLinkDown();
    Log("exit");
    std::exit(0);
}
