// From the command line to the first status file, step by step.

#include "core/startup.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>

#include "connection/wwan_interface.h"
#include "core/command_line.h"
#include "core/config_files.h"
#include "core/shutdown.h"
#include "core/single_instance.h"
#include "modem/at_channel.h"
#include "modem/serial_port.h"
#include "sms/receive.h"
#include "state/published.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "status/card_statistics.h"
#include "status/identity.h"
#include "support/countdown_timer.h"
#include "support/logger.h"
#include "support/system_log.h"
#include "support/text.h"
#include "support/version.h"

namespace {

constexpr char kHostKeyFile[] = "/etc/ssh/ssh_host_dsa_key";
constexpr int kCutoffWithHostKey = 600;      // seconds of uptime
constexpr int kCutoffWithoutHostKey = 1800;  // a first boot, still making its keys, takes longer
constexpr int kLogKilobytes = 50;

// A copy that lives as long as the process.
char* Kept(const std::string& text) {
    char* copy = strdup(text.c_str());
    if (copy == nullptr) std::abort();
    return copy;
}

void NameProgram(const char* argv0) {
    const std::string name = ProgramNameOf(argv0 != nullptr ? argv0 : "");
    g_cp_ProgramName = Kept(name);
    g_cp_PidFile = Kept(Format(published::kPidFileFormat, name.c_str()));
}

void ChooseUptimeCutoff() {
    if (access(kHostKeyFile, F_OK) != 0) {
        Log("file %s is not present", kHostKeyFile);
        g_i_UptimeCutoff = kCutoffWithoutHostKey;
    } else {
        Log("file %s is present", kHostKeyFile);
        g_i_UptimeCutoff = kCutoffWithHostKey;
    }
    Log("uptime cutoff set to %d seconds", g_i_UptimeCutoff);
}

void ReadArgumentsOrExit(int argc, const char* const* argv) {
    const bool have_path = ReadArguments(argc, argv);
    LogDebug("DEBUG: debug mode %d", g_i_DebugLevel);
    if (have_path) return;
    Log("No /dev/device path given, exiting");
    PrintUsage(g_cp_ProgramName);
    std::exit(1);
}

void CreateLoggerAndTimers() {
    g_Cp_Logger = new cKVTLogger;
    g_Cp_Logger->Init(published::kLogFile, kLogKilobytes, 1, nullptr);
    g_Cp_Logger->SetDebugLevel(0);
    g_Cp_Logger->SetFoldRepeats(0);
    CreateTimers();
}

void PrepareDataConnection() {
    ResetLteStats();
    g_S_PppConfig.interface_enabled = true;
    g_S_PppConfig.default_route = true;
    if (!IsLteCard()) return;
    if (BringWwanUp() != 0) {
        Log("Warning: Modem type set to E362/E371, but int %s does not appear to exist.",
            published::kWwanInterface);
    }
    g_Cp_PingTimer->Start();
}

// Each answer is thrown away: this only brings the modem into a known state.
void SendFirstCommands() {
    SendCommandType(kSendAt);
    DiscardWaiting();
    if (IsLteCard()) {
        SendAtCommand("ATE0", 0);
        DiscardWaiting();
    }
    SendAtCommand("AT+CREG=2", 1);
    DiscardWaiting();
}

void LogHeaderLine() {
    std::string header = "# " + g_S_Globalstats.model + ", " + g_S_Globalstats.serial_number +
                         ", " + g_S_Globalstats.mdn;
    g_Cp_Logger->SkipNextTimestamp();
    g_Cp_Logger->LogIt(header, 0);
}

}  // namespace

void StartUp(int argc, const char* const* argv) {
    g_Cp_SmsQueue = new std::deque<SmsMessage>;
    g_i_SmsSendAttempts = 0;
    g_i_FirstHealthReport = 1;
    NameProgram(argc > 0 ? argv[0] : nullptr);
    Log("v%s starting", kVersion);
    EnforceSingleInstance(g_cp_PidFile, g_cp_ProgramName);
    ResetGlobalStats();
    ChooseUptimeCutoff();
    ReadArgumentsOrExit(argc, argv);

    CreateLoggerAndTimers();
    PrepareDataConnection();
    ReadProvisioningFile();
    OpenPort();
    SendFirstCommands();
    CheckCmgfSupport();
    g_Cp_IdentityTimer->Start();
    UpdateCardIdentity();
    DumpAllCardInfo();
    LogHeaderLine();
    InstallSignalHandlers();
}
