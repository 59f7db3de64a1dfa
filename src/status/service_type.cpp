// Three families of cards, three ways to ask for the service.

#include "status/service_type.h"

#include <cstdio>
#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "modem/response_fields.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr int kNoServiceSeconds = 30;  // the period of g_Cp_NoServiceTimer, as the log shows it

// Indexed by the numbers of a $NWRAT line. The trailing blanks are part of the texts: the web page
// compares them so. Mode 2 has no text of its own.
// Oddity texts-end-in-blanks: trim the service domain of the E371.
constexpr const char* kRatModes[] = {"Automatic", "GSM Only",        "Unknown",
                                     "LTE Only",  "CDMA (1x) only ", "HDR Only"};
constexpr const char* kRatDomains[] = {"Circuit-switched only ", "Packet-switched only ",
                                       "CS and PS"};
constexpr const char* kRatStates[] = {
    "Searching",      "WCDMA CS", "WCDMA PS", "WCDMA CS and PS", "GSM CS",  "GSM PS",
    "GSM CS and PS",  "LTE CS",   "LTE PS",   "LTE CS and PS",   "CDMA CS", "CDMA PS",
    "CDMA CS and PS", "HDR CS",   "HDR PS",   "HDR CS and PS"};

template <int N>
const char* TextOf(const char* const (&texts)[N], int number) {
    return number >= 0 && number < N ? texts[number] : "Unknown";
}

void LogChange() {
    Log("Service Type changed from '%s' to '%s'", g_S_Globalstats.previous_service_type.c_str(),
        g_S_Globalstats.service_type.c_str());
}

// --- Novatel E362 --------------------------------------------------------------------------------

constexpr char kSysModeCommand[] = "AT$NWSYSMODE";

// The carriage return is set aside, so that the final "OK" is short and never a service type.
bool IsSysModeAnswer(const std::string& line) {
    const std::size_t length = line.size() - (!line.empty() && line.back() == '\r' ? 1 : 0);
    return length > 2 && !Contains(line, kSysModeCommand);
}

void CheckNoServiceTimer() {
    if (!g_Cp_NoServiceTimer->IsRunning()) return;
    if (IsAbove(0)) {
        Log("DEBUG: g_Cp_NoServiceTimer is running, at %d",
            static_cast<int>(g_Cp_NoServiceTimer->GetElapsed()));
    }
    if (!g_Cp_NoServiceTimer->HasExpired()) return;
    Log("No service after %d seconds, sending modem a disconnect.", kNoServiceSeconds);
    SendCommandType(kSendDataCallDisconnect);
    g_Cp_NoServiceTimer->Stop();
}

// True when the new service is a good one.
bool TakeChangedService() {
    LogChange();
    if (haveValidService(g_S_Globalstats.service_type)) {
        g_Cp_NoServiceTimer->Stop();
        return true;
    }
    if (!g_Cp_NoServiceTimer->IsRunning()) {
        LogDebug("DEBUG: starting g_Cp_NoServiceTimer");
        g_Cp_NoServiceTimer->Start();
    }
    return false;
}

// The first line that changes the service ends the query.
bool QuerySysMode() {
    SendAtCommand("ATE0", 0);
    const std::string response = SendAtCommand(kSysModeCommand, 0);
    g_S_Globalstats.service_type = "Unknown";
    for (std::string line : LinesOf(response)) {
        LogChecking(line);
        if (!IsSysModeAnswer(line)) continue;
        LogAbove(1, "DEBUG: line not empty, cleaning white space");
        Trim(line);
        LogCleaned(line);
        g_S_Globalstats.service_type = line;
        CheckNoServiceTimer();
        if (g_S_Globalstats.previous_service_type == line) continue;
        const bool good = TakeChangedService();
        g_S_Globalstats.previous_service_type = line;
        return good;
    }
    return false;
}

// --- Novatel E371 --------------------------------------------------------------------------------

void QueryRat() {
    SendAtCommand("ATE0", 0);
    const std::string response = SendAtCommand("AT$NWRAT?", 0);
    g_S_Globalstats.service_type = "Unknown";
    for (const std::string& line : LinesOf(response)) {
        int mode = 0;
        int domain = 0;
        int state = 0;
        const int matches = std::sscanf(line.c_str(), "$NWRAT: %d,%d,%d", &mode, &domain, &state);
        LogDebug("DEBUG: Got num matches %d", matches);
        if (matches != 3) continue;
        LogDebug("DEBUG: Got NWRAT: %s", line.c_str());
        LogDebug("DEBUG: mode=%d, domain=%d, currentState=%d", mode, domain, state);
        g_S_Globalstats.system_mode = TextOf(kRatModes, mode);
        g_S_Globalstats.service_domain = TextOf(kRatDomains, domain);
        g_S_Globalstats.service_type = TextOf(kRatStates, state);
        return;
    }
}

// --- Sierra cards --------------------------------------------------------------------------------

struct SierraQuery {
    const char* command;
    const char* label;   // of the line that tells the service
    bool shortens_hspa;  // "HSDPA/HSUPA" is kept as "HSPA"
};

constexpr SierraQuery kSierraQueries[] = {
    {"AT*CNTI=0", "*CNTI: 0,", true},
    {"AT!GETRAT?", "!GETRAT:", false},
};

void TakeSierraService(const SierraQuery& query, const std::string& rest) {
    std::string service = rest;
    Trim(service);
    if (query.shortens_hspa && service == "HSDPA/HSUPA") service = "HSPA";
    g_S_Globalstats.service_type = service;
    const std::string& previous = g_S_Globalstats.previous_service_type;
    if (previous != service && !previous.empty()) LogChange();
    g_S_Globalstats.previous_service_type = service;
}

// True when a line of the answer held the label.
bool AskSierra(const SierraQuery& query) {
    const cStringTokenizer lines = CountedLinesOf(SendAtCommand(query.command, 0));
    const std::string* line = FindLine(lines, query.label);
    if (line == nullptr) return false;
    LogHit(Hit::kQuotedAndCleaned, query.label);
    TakeSierraService(query, Behind(*line, query.label));
    return true;
}

void QuerySierraService() {
    g_S_Globalstats.service_type = "Unknown";
    for (const SierraQuery& query : kSierraQueries) {
        if (AskSierra(query)) return;
    }
}

}  // namespace

bool QueryServiceType() {
    switch (g_i_CardType) {
        case kCardNovatelE362:
            return QuerySysMode();
        case kCardNovatelE371:
            QueryRat();
            return false;
        case kCardSierra881:
        case kCardType3:
        case kCardSierraUsb305:
            QuerySierraService();
            return false;
        default:
            return false;
    }
}
