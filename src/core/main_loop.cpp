// One pass, as the schedule has it; all pacing is here and in the transactions.

#include "core/main_loop.h"

#include <unistd.h>

#include <cstdlib>

#include "connection/apn_provisioning.h"
#include "connection/dhcp_client.h"
#include "connection/lte_supervision.h"
#include "connection/tower_time.h"
#include "core/config_files.h"
#include "core/error_checks.h"
#include "core/shutdown.h"
#include "modem/at_channel.h"
#include "modem/reset_device.h"
#include "modem/serial_port.h"
#include "sms/receive.h"
#include "sms/send.h"
#include "state/settings.h"
#include "state/timers.h"
#include "status/card_statistics.h"
#include "status/health_report.h"
#include "status/identity.h"
#include "status/registration.h"
#include "status/service_type.h"
#include "status/signal_quality.h"
#include "status/system_info.h"
#include "support/countdown_timer.h"
#include "support/system_log.h"

namespace {

constexpr int kMostReopenRetries = 4;
constexpr int kOpenAttempts = 5;                   // the one at start-up and the retries
constexpr int kMostPortErrors = 25;                // consecutive failed writes
constexpr unsigned kReopenPause = 10;              // seconds
constexpr unsigned kSilencePause = 1;              // seconds
constexpr unsigned kPassPause = 2;                 // seconds
constexpr useconds_t kSignalAnswerPause = 200000;  // microseconds
constexpr unsigned kStatusPeriod = 5;              // seconds

// What the loop keeps from one pass to the next.
struct LoopState {
    int reopen_retries = 0;    // never reset
    int last_seen_errors = 0;  // the error count at the last check, see core/error_checks
    cCountdownTimer status_timer{0, kStatusPeriod};  // since the files were last published
};

[[noreturn]] void ResetAndExit() {
    ResetDevice();
    std::exit(-1);
}

// True when the port is usable; else one retry is made, or the process ends.
bool PortIsUsable(LoopState& state) {
    if (g_i_PortOpenFailures == 0) return true;
    ++state.reopen_retries;
    if (state.reopen_retries > kMostReopenRetries) {
        Log("Failed to open port %d times, exiting", kOpenAttempts);
        ResetAndExit();
    }
    ClosePort();
    sleep(kReopenPause);
    OpenPort();
    return false;
}

void GiveUpOnPortErrors() {
    if (g_i_PortErrorCounter <= kMostPortErrors) return;
    Log("Port error counter above %d, resetting modem", kMostPortErrors);
    ResetAndExit();
}

void FollowPppConfig() {
    if (ReadPppConfigFile() == 1) SetApnContext3();
}

void QueryStatus() {
    GetSysinfo();
    QueryBand();
    if (QueryServiceType()) StartUdhcpc();
    QuerySierraEcio();
    QueryNovatelSignal();
    QueryHealthReport();
}

void ServeSms() {
    CheckReceiveSmS();
    CheckSendSmS();
    g_Cp_SmsTimer->Start();
    if (!g_Cp_SmsCleanupTimer->IsCounting()) g_Cp_SmsCleanupTimer->Start();
}

void RunTimedWork() {
    if (g_Cp_CregTimer->HasExpired()) CheckRegistration();
    if (g_Cp_SmsTimer->HasExpired()) ServeSms();
    if (g_Cp_IdentityTimer->HasExpired()) {
        UpdateCardIdentity();
        g_Cp_IdentityTimer->Start();
    }
}

// Number of bytes that the modem answered to the signal query; 0 or less for none.
int PollSignal() {
    SendCommandType(g_i_UseCind1 != 0 ? kSendIndicatorQuery : kSendSignalQuery);
    usleep(kSignalAnswerPause);
    return ReadPort(g_c_ReadBuffer, kReadSize);
}

void TakeSignalAnswer(char* block, int length) {
    char* line = nullptr;
    MassageBlock(block, length);
    switch (IdentifyMessage(block, length, &line)) {
        case kIndicatorLine:
            ConvertIndicatorLine(line);
            UpdateLightbar(line);
            break;
        case kSignalLine:
            UpdateLightbar(line);
            break;
        default:
            LogDebug("unknown AT response from modem");
    }
}

void PublishStatus(cCountdownTimer& status_timer) {
    if (status_timer.IsCounting()) return;
    QueryPdpContexts();
    DumpAllCardInfo();
    ReadProvisioningFile();
    FollowPppConfig();
    status_timer.Start();
}

void KeepClock() {
    if (g_Cp_TowerTimeTimer->IsCounting()) return;
    SyncTowerTime();
    g_Cp_TowerTimeTimer->Start();
}

void RunOnePass(LoopState& state) {
    CheckSignals();
    if (!PortIsUsable(state)) return;
    GiveUpOnPortErrors();
    FollowPppConfig();
    QueryStatus();
    RunTimedWork();

    const int length = PollSignal();
    if (length <= 0) {
        LogDebug("read 0 bytes from port");
        sleep(kSilencePause);
        return;
    }
    TakeSignalAnswer(g_c_ReadBuffer, length);
    PublishStatus(state.status_timer);
    KeepClock();
    checkLteStatus();
    sleep(kPassPause);
    CheckErrorCounts(state.last_seen_errors);
}

}  // namespace

void RunMainLoop() {
    LoopState state;
    for (;;) RunOnePass(state);
}
