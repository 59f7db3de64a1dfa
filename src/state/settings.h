// The process-wide settings and handles: plain globals of one single-threaded process, grouped by
// who writes them. The timers have a header of their own; g_i_DebugLevel belongs to the system log.
#pragma once

#include <csignal>
#include <deque>
#include <string>

#include "state/cards.h"
#include "support/system_log.h"  // g_i_DebugLevel

class cKVTLogger;
struct SmsMessage;

// --- Written by the command line -----------------------------------------------------------------
extern int g_i_CardType;        // a CardType
extern int g_i_IsE362;          // 1 after the E362 option, 0 after the E371 option
extern int g_i_IsMc75i;         // 1 after the mc75i option
extern int g_i_UseCind1;        // 1: the signal is polled with AT+CIND? instead of AT+CSQ
extern int g_i_UptimeCutoff;    // seconds of uptime below which the error checks do nothing
extern char* g_cp_ProgramName;  // last element of argv[0]
extern char* g_cp_PidFile;      // /var/run/<program>.pid
extern char g_c_PortPath[80];   // serial device; no zero byte behind a path of 80 characters

// --- The serial port, written by modem/ ----------------------------------------------------------
extern int g_i_PortFd;            // meaningful only after a successful open
extern int g_i_PortOpenFailures;  // consecutive failed opens; non-zero: the port is not usable
extern int g_i_PortErrorCounter;  // consecutive failed command writes
extern bool g_b_CsqQueryForm;     // false: AT+CSQ, true: AT+CSQ?; flipped by an ERROR answer
extern const char g_c_CR;
extern const char g_c_LF;

// --- Modem status, written by status/ ------------------------------------------------------------
constexpr int kCregSearchingPeriod = 5;    // seconds
constexpr int kCregRegisteredPeriod = 30;  // seconds
extern int g_i_CregPollPeriod;             // seconds between registration checks, one of the two
extern int g_i_FirstHealthReport;          // 1 until the model query has seen an MC7700

// --- Data connection, written by connection/ -----------------------------------------------------
extern int g_i_LteConnectAttempts;  // restarts since the data call was last found connected
extern int g_i_TxCheckFailures;     // consecutive failed TX-byte checks

// What the two configuration files say, written by core/config_files. Start-up turns the interface
// and the route on, so that a router without the files connects.
struct PppConfig {
    bool provisioning_changed = false;  // a changed provisioning file was read; nothing reads this
    bool time_sync_enabled = false;     // SYNC_TIME
    std::string apn;                    // CM_APN, checked; empty: nothing to provision
    bool interface_enabled = false;     // CM_ENABLE_INTERFACE; false keeps the data call down
    bool default_route = false;         // CM_DEFAULTROUTE; false: udhcpc leaves the route alone
};
extern PppConfig g_S_PppConfig;

// --- SMS gateway, written by sms/ ----------------------------------------------------------------
extern std::deque<SmsMessage>* g_Cp_SmsQueue;  // received, not yet written out
extern int g_i_SmsSendAttempts;                // consecutive failed sends, one count for all files
extern bool g_b_SmsCmgfSupported;              // the modem accepted AT+CMGF=1, text mode

// --- Created at start-up and kept for the whole run ----------------------------------------------
extern cKVTLogger* g_Cp_Logger;  // the daemon's own log file

// --- Set by the signal handlers, never cleared ---------------------------------------------------
extern volatile std::sig_atomic_t g_b_GotSigInt;
extern volatile std::sig_atomic_t g_b_GotSigTerm;
extern volatile std::sig_atomic_t g_b_GotSigHup;

// An LTE modem with the network interface wwan0 and a QMI data call.
inline bool IsLteCard() {
    return cards::Has(cards::kLte, g_i_CardType);
}
