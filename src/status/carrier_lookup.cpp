// From the network number in use to the carrier's name, by way of a list of 1,500 names.

#include "status/carrier_lookup.h"

#include <algorithm>
#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "modem/response_fields.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr char kGsmInfoCommand[] = "at!GSMINFO?";
constexpr char kOperatorListCommand[] = "AT+COPN";
constexpr char kPlmnLabel[] = "PLMN:";
constexpr unsigned kAnswerWait = 2;  // seconds

void LogTokenCount(const char* command, const cStringTokenizer& lines) {
    LogAbove(1, "DEBUG: token count for %s is : %d", command,
             static_cast<int>(lines.GetTokenCount()));
}

// Empty when the modem does not tell.
std::string ReadPlmn() {
    const cStringTokenizer lines = LinesOf(SendAtCommand(kGsmInfoCommand, kAnswerWait));
    LogTokenCount(kGsmInfoCommand, lines);
    std::string number;
    const bool found = std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return ExtractAfterNeedle(line, kPlmnLabel, number) == 1;
    });
    if (found) {
        CleanWhiteSpace(number);
        LogDebug("DEBUG: GetGsmCarrierFromOperatorNameList() Got carrier number : %s",
                 number.c_str());
    }
    return number;
}

// By substring, not equality: deliberate, networks with a two-digit and a three-digit code for one
// carrier would else fetch the list on every pass.
// Oddity carrier-by-substring: a longer network number keeps the name of the shorter one.
bool NameIsKnownFor(const std::string& number) {
    if (!Contains(number, g_S_Globalstats.carrier_plmn)) return false;
    LogAbove(1, "DEBUG: l_s_this_carrier_number == g_S_Globalstats.carrier_plmn");
    return !IsStillUnknown(g_S_Globalstats.carrier);
}

// The first line of the operator list that holds the number anywhere; empty when there is none.
std::string FindOperatorLine(const std::string& number) {
    const std::string response = SendAtCommand(kOperatorListCommand, kAnswerWait);
    LogDebug("DEBUG: AT+COPN list is %d bytes", static_cast<int>(response.size()));
    const cStringTokenizer lines = LinesOf(response);
    LogTokenCount(kOperatorListCommand, lines);
    const std::string* line = FindLine(lines, number);
    if (line == nullptr) return "";
    LogDebug("DEBUG: found carrier number %s", number.c_str());
    LogDebug("DEBUG:     on line matching %s", line->c_str());
    return *line;
}

}  // namespace

void GetGsmCarrierFromOperatorNameList() {
    if (g_i_CardType != kCardSierra881) return;

    const std::string number = ReadPlmn();
    if (number.empty()) {
        LogDebug("DEBUG: %s(): could not find line match for \"PLMN:\"", __func__);
        return;
    }
    if (NameIsKnownFor(number)) return;
    g_S_Globalstats.carrier_plmn = number;

    std::string line = FindOperatorLine(number);
    RemoveChar(line, '"');
    cStringTokenizer fields(line, ',');
    if (fields.GetTokenCount() < 2) return;
    Trim(fields[1]);
    g_S_Globalstats.carrier = fields[1];
    Log("Carrier name set to \"%s\"", fields[1].c_str());
}
