// The signal, in the three forms in which modems tell it, and the display that shows it.

#include "status/signal_quality.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "modem/response_fields.h"
#include "state/published.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "support/system_log.h"
#include "support/text.h"
#include "support/text_file_writer.h"

namespace {

constexpr std::size_t kConvertedLine = 32;  // characters of room for a line made from indicators

// The CSQ value for each signal indicator. Indicator 0 counts as unknown, not as the weakest
// signal.
constexpr int kCsqOfIndicator[] = {99, 5, 14, 22, 29, 30};

struct SignalLabel {
    const char* needle;
    StatsText field;
};

constexpr SignalLabel kSignalLabels[] = {
    {"RSSI=", &GlobalStats::rssi},
    {"ECIO=", &GlobalStats::ecio},
    {"RSRP=", &GlobalStats::lte_rsrp},
    {"RSRQ=", &GlobalStats::lte_rsrq},
};

void ParseCsq(const std::string& line) {
    g_S_Globalstats.csq.clear();
    const auto found = line.find("+CSQ:");
    if (found != std::string::npos) {
        std::string value = line.substr(found + 5);
        value.erase(std::min(value.find(','), value.size()));
        CleanWhiteSpace(value);
        // Always empty by now: deliberate. Without a previous value of 99 an unknown signal is
        // published as -99 and not as -125, and the signal display draws it so.
        // Oddity unknown-signal-is-99: an unknown signal is published as -99 dBm.
        g_S_Globalstats.previous_csq = g_S_Globalstats.csq;
        g_S_Globalstats.csq = value;
        return;
    }
    int signal = 0;
    int error_rate = 0;
    if (std::sscanf(line.c_str(), "%d, %d", &signal, &error_rate) >= 1) {
        g_S_Globalstats.csq = Format("%d", signal);
    }
}

void TakeSignalLabel(const std::string& line, const SignalLabel& label) {
    if (!Contains(line, label.needle)) return;
    LogHit(Hit::kPlain, label.needle);
    std::string& field = g_S_Globalstats.*label.field;
    field = Behind(line, label.needle);
    if (label.field != &GlobalStats::rssi) return;
    if (IsInteger(field)) {
        NegateNumberText(field);
    } else {
        field.clear();
    }
}

}  // namespace

void ConvertIndicatorLine(char* line) {
    int indicators[12] = {};
    int* i = indicators;
    std::sscanf(line, "%*s %d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d", &i[0], &i[1], &i[2], &i[3], &i[4],
                &i[5], &i[6], &i[7], &i[8], &i[9], &i[10], &i[11]);
    const int indicator = indicators[1];
    const int csq = indicator >= 0 && indicator <= 5 ? kCsqOfIndicator[indicator] : 99;
    LogDebug("got CIND signal value %d, setting CSQ value to %d", indicator, csq);
    std::snprintf(line, kConvertedLine, "+CSQ: %d, 99", csq);
}

void UpdateLightbar(const char* line) {
    ParseCsq(line);
    LogAbove(1, "UpdateLightbar: %s into /var/log/lightbar", line);

    // What the modem says never reaches a shell, so the line is written here and not by an echo; in
    // place, as the signal display keeps the file open.
    cTextFileWriter lightbar(published::kLightbarFile);
    lightbar.AddLine(line);
    lightbar.WriteFile();

    cTextFileWriter ecio(published::kLightbarEcioFile);
    ecio.InsertLine(g_S_Globalstats.ecio, 0);
    ecio.WriteFile();
}

void QueryNovatelSignal() {
    g_S_Globalstats.rssi.clear();
    if (!IsLteCard()) return;

    const std::string response = SendAtCommand("AT$NWRSSI=15", 0);
    for (const SignalLabel& label : kSignalLabels) (g_S_Globalstats.*label.field).clear();
    for (std::string line : CountedLinesOf(response)) {
        LogChecking(line);
        CleanWhiteSpace(line);
        for (const SignalLabel& label : kSignalLabels) TakeSignalLabel(line, label);
    }
}

void QuerySierraEcio() {
    if (g_i_CardType != kCardSierra881) return;

    constexpr char kLabel[] = "Tot Ec/Io:";
    const std::string response = SendAtCommand("at+ecio?", 0);
    g_S_Globalstats.ecio.clear();
    const cStringTokenizer lines = CountedLinesOf(response);
    const std::string* line = FindLine(lines, kLabel);
    if (line == nullptr) return;
    LogHit(Hit::kQuotedAndCleaned, kLabel);
    std::string value = Behind(*line, kLabel);
    value.erase(std::min(value.find("dB"), value.size()));
    CleanWhiteSpace(value);
    g_S_Globalstats.ecio = value;
}
