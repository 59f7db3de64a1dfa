// Is the data call up? If not, why did it end, and up with it again.

#include "connection/lte_supervision.h"

#include <unistd.h>

#include <algorithm>
#include <string>

#include "connection/dhcp_client.h"
#include "connection/link_health.h"
#include "connection/qmi_texts.h"
#include "connection/wwan_interface.h"
#include "modem/answer.h"
#include "modem/at_channel.h"
#include "modem/reset_device.h"
#include "modem/response_fields.h"
#include "state/published.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/shell.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr unsigned kStatusWait = 5;         // seconds for the answer to AT$NWQMISTATUS
constexpr unsigned kDisconnectPause = 5;    // seconds
constexpr unsigned kConnectPause = 2;       // seconds
constexpr unsigned kResetPause = 5;         // seconds
constexpr int kMostFailures = 10;           // checks; one more resets the modem
constexpr unsigned kGoodPingPeriod = 600;   // seconds
constexpr unsigned kFailedPingPeriod = 30;  // seconds

// The dialing marker outlives the restart, deliberately: only a disabled interface takes it away.
// Oddity dialing-marker-stays: wirelessdial_dialing stands beside a working link.
void SetMarker(const char* wanted, const char* unwanted) {
    RunShell(std::string("touch ") + wanted);
    unlink(unwanted);
}

// The translated texts lag one check behind, deliberately: the restart message tells how the call
// ended that it replaces.
// Oddity qmi-texts-lag: result number and end reason tell of the check before.
void ShiftPreviousResults() {
    GlobalStats& stats = g_S_Globalstats;
    stats.previous_qmi_call_time = stats.qmi_call_time;
    stats.qmi_end_reason = stats.qmi_end_reason_raw;
    DescribeCallEndReason(stats.qmi_end_reason);
    stats.qmi_result_number = stats.qmi_result_raw;
    DescribeQmiResult(stats.qmi_result_number);

    stats.qmi_result = "Unknown";
    stats.qmi_result_raw = "Unknown";
    stats.qmi_state = "Unknown";
    stats.qmi_end_reason_raw = "Unknown";
    stats.qmi_call_time = "Unknown";
}

void TakeQmiResult(std::string value) {
    CleanWhiteSpace(value);
    const cStringTokenizer halves(value, ':');
    const bool two = halves.GetTokenCount() == 2;
    g_S_Globalstats.qmi_result = two ? halves[0] : value;
    g_S_Globalstats.qmi_result_raw = two ? halves[1] : value;
}

// One line is tested against all four keys.
void TakeQmiLine(const std::string& line) {
    std::string value;
    if (ExtractAfterNeedle(line, "$NWQMISTATUS:", value) == 1) TakeQmiResult(value);
    if (ExtractAfterNeedle(line, "QMI State:", value) == 1) g_S_Globalstats.qmi_state = value;
    if (ExtractAfterNeedle(line, "Call End Reason:", value) == 1) {
        CleanWhiteSpace(value);
        g_S_Globalstats.qmi_end_reason_raw = value;
    }
    if (ExtractAfterNeedle(line, "Call Duration:", value) == 1) {
        TrimLeft(value);
        g_S_Globalstats.qmi_call_time = value;
    }
}

// True when the address decides; false when the call is known to be down. A modem that says
// "unknown" counts as a failed check and still goes to the address test: deliberate, it says so
// while it is busy with a call that works.
// Oddity unknown-counts-as-failed: a link that works is reset after eleven answers of "unknown".
bool CallMayBeUp(const char* caller) {
    const std::string& state = g_S_Globalstats.qmi_state;
    if (Contains(state, " CONNECTED")) {  // The blank keeps DISCONNECTED out.
        LogAbove(1, "DEBUG: %s(): Device is CONNECTED", caller);
        g_S_Globalstats.lte_connect_failures = 0;
        return true;
    }
    ++g_S_Globalstats.lte_connect_failures;
    if (Contains(state, "unknown")) {
        LogAbove(0, "DEBUG: %s(): Device is connection state is Unknown (no answer)", caller);
        return true;
    }
    LogAbove(0, "DEBUG: %s(): Device is NOT CONNECTED / Unknown", caller);
    return false;
}

void KeepCallDown(const char* caller) {
    LogAbove(0, "DEBUG: %s(): Not Starting LTE connection: Wan connecting is disabled in config",
             caller);
    if (IsNovatelConnected() == 1) {
        Log("LTE is connected, but Enable Wan interface in config is disabled.  "
            "Bringing down LTE connection.");
        StopUdhcpc(kTerminate);
        SendCommandType(kSendDataCallDisconnect);
    }
    SetMarker(published::kNotDialingMarker, published::kDialingMarker);
}

void RestartCall(int result) {
    SetMarker(published::kDialingMarker, published::kNotDialingMarker);
    ++g_i_LteConnectAttempts;
    Log("LTE Connected returned %d, restarting connection", result);
    Log("Last connect time was reported as '%s'", g_S_Globalstats.previous_qmi_call_time.c_str());
    Log("Last connect end reason was '%s'", g_S_Globalstats.qmi_end_reason.c_str());
    Log("Last qmi result was '%s'", g_S_Globalstats.qmi_result_number.c_str());

    StopUdhcpc(kTerminate);
    ResetLeaseFailCounter();
    SendCommandType(kSendDataCallDisconnect);
    sleep(kDisconnectPause);
    SendCommandType(kSendDataCallConnect);
    sleep(kConnectPause);
    StartUdhcpc();
    IsNovatelConnected();
}

void WatchLink() {
    g_i_LteConnectAttempts = 0;
    if (RunPingCheck() == 0) return;
    if (CheckTxBytes() == 1) {
        g_Cp_PingTimer->SetPeriod(kGoodPingPeriod);
        g_i_TxCheckFailures = 0;
    } else {
        ++g_i_TxCheckFailures;
        g_Cp_PingTimer->SetPeriod(kFailedPingPeriod);
    }
    g_Cp_PingTimer->Start();
}

// The message always says 10, the threshold: deliberate, the field tools look for it.
// Oddity log-says-ten: the log says 10 when eleven checks have failed.
void ResetAfterTooManyFailures() {
    if (g_S_Globalstats.lte_connect_failures <= kMostFailures) return;
    Log("Failed to connect to LTE network %d times, resetting modem", kMostFailures);
    ResetDevice();
    sleep(kResetPause);
    g_S_Globalstats.lte_connect_failures = 0;
}

}  // namespace

int IsNovatelConnected() {
    if (!IsLteCard()) return 0;
    std::string response = SendAtCommand("AT$NWQMISTATUS", kStatusWait);
    ShiftPreviousResults();
    std::replace(response.begin(), response.end(), '\r', '\n');
    for (const std::string& line : LinesOf(response)) {
        LogAbove(1, "DEBUG: %s(): checking line : %s", __func__, line.c_str());
        TakeQmiLine(line);
    }
    if (!CallMayBeUp(__func__)) return 0;
    if (GetInterfaceIpv4Address(published::kWwanInterface) != 0) {
        LogAbove(1, "DEBUG: %s(): Interface %s has a valid IP.", __func__,
                 published::kWwanInterface);
        return 1;
    }
    Log("Interface %s is connected, but does not have a valid IP.", published::kWwanInterface);
    return 0;
}

void checkLteStatus() {
    if (!IsLteCard()) return;
    // Not gated by the timer, deliberately: while the interface is disabled every pass looks, so
    // that a call that somebody else started is brought down at once.
    // Oddity disabled-looks-always: a disabled interface makes each pass five seconds longer.
    if (!g_S_PppConfig.interface_enabled) return KeepCallDown(__func__);
    if (haveValidService(g_S_Globalstats.service_type) == 0) {
        LogAbove(0, "DEBUG: %s(): No valid service, aborting checking LTE connected state",
                 __func__);
        return;
    }
    if (g_Cp_LteCheckTimer->IsCounting()) return;

    const int result = IsNovatelConnected();
    if (result == 1) {
        WatchLink();
    } else {
        RestartCall(result);
    }
    ResetAfterTooManyFailures();
    g_Cp_LteCheckTimer->Start();
}
