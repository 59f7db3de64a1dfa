// Registration by +CREG or +CEREG (3GPP 27.007), and how soon to ask again.

#include "status/registration.h"

#include <cstdio>
#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "state/published.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/system_log.h"
#include "support/text.h"
#include "support/text_file_writer.h"

namespace {

struct RegistrationText {
    const char* full;
    const char* abbreviated;
    int poll_period;  // seconds
};

// Indexed by <stat>; what is above 5 counts as unknown. The lower-case "registered" of row 2 is
// what the web page shows.
constexpr RegistrationText kRegistrationTexts[] = {
    {"Not Registered, Not Searching", "Not Reg", kCregSearchingPeriod},
    {"Registered, Home Network", "Reg Home", kCregRegisteredPeriod},
    {"Not registered, Searching", "Searching", kCregSearchingPeriod},
    {"Registration Denied", "Reg Denied", kCregSearchingPeriod},
    {"Status Unknown", "Unkn Stat", kCregSearchingPeriod},
    {"Registered, Roaming", "Reg Roam", kCregRegisteredPeriod},
};
constexpr int kKnownStatuses = sizeof(kRegistrationTexts) / sizeof(kRegistrationTexts[0]);

// What a scan does not fill keeps the value of the line before it.
struct Registration {
    int mode = 0;    // <n>: with 2 the answer tells area and cell, too
    int status = 0;  // <stat>
};

// The second scan counts again from the start, and its result replaces the first. Deliberate, like
// the test for more matches than it has room for: the log lines show this count.
// Oddity second-scan-counts: the logged number of matches is that of the scan with the cell.
int ScanWithCell(const std::string& line, Registration& registration) {
    unsigned area = 0;
    unsigned cell = 0;
    const int matches = std::sscanf(line.c_str(), "+CREG: %d,%d,%X,%X,%*d", &registration.mode,
                                    &registration.status, &area, &cell);
    if (matches > 4) {
        g_S_Globalstats.location_area_code.clear();
        g_S_Globalstats.serving_cell.clear();
    } else {
        g_S_Globalstats.location_area_code = Format("%X", area);
        g_S_Globalstats.serving_cell = Format("%X (%d)", cell, static_cast<int>(cell));
    }
    return matches;
}

int ScanSierra(std::string line, Registration& registration) {
    RemoveChar(line, '"');
    LogAbove(1, "DEBUG: Checking line: %s", line.c_str());
    const int matches =
        std::sscanf(line.c_str(), "+CREG: %d,%d", &registration.mode, &registration.status);
    return registration.mode == 2 ? ScanWithCell(line, registration) : matches;
}

int ScanNovatel(const std::string& line, Registration& registration) {
    return std::sscanf(line.c_str(), "+CEREG: %d,%d", &registration.mode, &registration.status);
}

int ReadStatus(const std::string& response) {
    Registration registration;
    for (const std::string& line : LinesOf(response)) {
        const int matches =
            IsLteCard() ? ScanNovatel(line, registration) : ScanSierra(line, registration);
        LogDebug("DEBUG: Got num matches %d", matches);
        if (matches <= 1) continue;
        LogDebug("DEBUG: Got Registration mode: %d, Registration status: %d", registration.mode,
                 registration.status);
        g_S_Globalstats.registration_status = registration.status;
        break;
    }
    return registration.status;
}

void TakeStatus(int status) {
    RegistrationText text = {"Unknown", "Unknown", kCregSearchingPeriod};
    if (status >= 0 && status < kKnownStatuses) {
        text = kRegistrationTexts[status];
    } else {
        Log("got %d value for registration_status", status);
    }
    g_S_Globalstats.creg = text.full;
    g_S_Globalstats.creg_abr = text.abbreviated;
    g_i_CregPollPeriod = text.poll_period;
}

}  // namespace

void CheckRegistration() {
    if (!cards::Has(cards::kRegistering, g_i_CardType)) return;
    TakeStatus(ReadStatus(SendAtCommand(IsLteCard() ? "AT+CEREG?" : "AT+CREG?", 0)));

    cTextFileWriter activation(published::kActivationStatusFile);
    activation.AddLine(g_S_Globalstats.creg_abr);
    activation.WriteFile();

    g_Cp_CregTimer->SetPeriod(static_cast<unsigned>(g_i_CregPollPeriod));
    g_Cp_CregTimer->Start();
}
