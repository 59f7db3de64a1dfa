// AT^SYSINFO of the Sierra cards, the SIM state of the Novatel cards.

#include "status/system_info.h"

#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "support/code_text.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr unsigned kSysinfoFields = 5;  // service, domain, roaming, system mode, SIM

constexpr CodeText kServiceStatuses[] = {{0, "No Service"},
                                         {1, "Limited Service"},
                                         {2, "Service"},
                                         {3, "Limited Regional Service"},
                                         {4, "Power Save Mode"}};
constexpr CodeText kServiceDomains[] = {{0, "No Service"},
                                        {1, "Circuit Switched Service Only"},
                                        {2, "Packet Switched Service Only"},
                                        {3, "Circuit and Packet Switched Service"}};
// "No Serivce" is spelled so: the web page looks for it.
// Oddity no-serivce: compare the system mode with "No Serivce".
constexpr CodeText kSystemModes[] = {{0, "No Serivce"}, {3, "GSM/GPRS Mode"}, {5, "WCDMA Mode"}};
constexpr CodeText kSimStates[] = {
    {0, "Not Available"}, {1, "Available"}, {255, "Not Present / PIN Locked"}};

void QuerySimReady() {
    constexpr char kReady[] = "COMPLETED";
    if (FindLine(CountedLinesOf(SendAtCommand("at$qcsimstat?", 1)), kReady) == nullptr) return;
    LogHit(Hit::kCleaned, kReady);
    g_S_Globalstats.sim_ready = true;
}

void LogTokenCount(const cStringTokenizer& tokens) {
    LogAbove(1, "DEBUG: GetSysinfo() first token count is : %d",
             static_cast<int>(tokens.GetTokenCount()));
}

void QuerySysinfo() {
    const cStringTokenizer parts(SendAtCommand("at^sysinfo", 0), ':');
    LogTokenCount(parts);
    if (parts.GetTokenCount() != 2) return;
    const cStringTokenizer fields(parts[1], ',');
    LogTokenCount(fields);
    if (fields.GetTokenCount() < kSysinfoFields) return;

    DescribeCode(kServiceStatuses, ToInt(fields[0]), g_S_Globalstats.service_status);
    DescribeCode(kServiceDomains, ToInt(fields[1]), g_S_Globalstats.service_domain);
    // Compared with the character codes of "0" and "1": deliberate. The web page shows roaming
    // from the registration, and this field has always stayed 0.
    // Oddity roaming-stays-0: CELLMODEM_ROAMING is always 0; see CELLMODEM_CREG_ABR.
    const int roaming = ToInt(fields[2]);
    if (roaming == 48) g_S_Globalstats.roaming = 0;
    if (roaming == 49) g_S_Globalstats.roaming = 1;
    DescribeCode(kSystemModes, ToInt(fields[3]), g_S_Globalstats.system_mode);
    DescribeCode(kSimStates, ToInt(fields[4]), g_S_Globalstats.sim_status);
}

}  // namespace

void GetSysinfo() {
    g_S_Globalstats.service_status = "Unknown";
    g_S_Globalstats.service_domain = "Unknown";
    g_S_Globalstats.sim_status = "Unknown";
    g_S_Globalstats.roaming = 0;
    if (IsLteCard()) {
        QuerySimReady();
    } else if (g_i_CardType == kCardSierra881 || g_i_CardType == kCardSierraUsb305) {
        QuerySysinfo();
    }
}
