// Four clocks that modems have, and what is made of a time before it is believed.

#include "connection/tower_time.h"

#include <cstdio>
#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/shell.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr unsigned kAnswerWait = 2;      // seconds
constexpr unsigned kGoodPeriod = 14400;  // seconds
constexpr unsigned kRetryPeriod = 300;   // seconds

// As the modem tells it, month and day from 1; nothing of it is checked before HasPossibleDate.
struct TowerTime {
    unsigned year = 0, month = 0, day = 0;
    unsigned hour = 0, minute = 0, second = 0;
    bool is_valid = false;  // a whole date and time were read
    bool use_utc = false;   // else the router's local time

    bool HasPossibleDate() const { return month <= 12 && day <= 31; }
};

// A command whose answer is one line of six numbers.
struct ClockFormat {
    const char* command;
    int (*scan)(const char* line, TowerTime& time);  // returns the number of matches
    bool short_years;                                // 26 means 2026
    bool use_utc;
};

int ScanDotted(const char* line, TowerTime& t) {
    return std::sscanf(line, "%u.%u.%u.%u.%u.%u", &t.year, &t.month, &t.day, &t.hour, &t.minute,
                       &t.second);
}

// A word, a quote, then year/month/day,hour:minute:second. A sign is read, too, and then makes
// the number too large for any date.
int ScanQuoted(const char* line, TowerTime& t) {
    int n[6] = {};
    const int matches =
        std::sscanf(line, "%*s %*c%d/%d/%d,%d:%d:%d", &n[0], &n[1], &n[2], &n[3], &n[4], &n[5]);
    t.year = static_cast<unsigned>(n[0]);
    t.month = static_cast<unsigned>(n[1]);
    t.day = static_cast<unsigned>(n[2]);
    t.hour = static_cast<unsigned>(n[3]);
    t.minute = static_cast<unsigned>(n[4]);
    t.second = static_cast<unsigned>(n[5]);
    return matches;
}

constexpr ClockFormat kE362Clock = {"AT$NWLTIME", ScanDotted, false, false};
constexpr ClockFormat kE371Clock = {"AT$CCLK?", ScanQuoted, true, false};
constexpr ClockFormat k881Clock = {"AT+CCLK?", ScanQuoted, true, true};
constexpr char k881FallbackCommand[] = "at!time?";

void LogDate(const TowerTime& t) {
    LogAbove(0, "DEBUG: year=%d, month=%d, day=%d", static_cast<int>(t.year),
             static_cast<int>(t.month), static_cast<int>(t.day));
}

void LogDateAndTime(const TowerTime& t) {
    LogAbove(0, "DEBUG: year=%d, month=%d, day=%d, hour=%d, min=%d, seconds=%d",
             static_cast<int>(t.year), static_cast<int>(t.month), static_cast<int>(t.day),
             static_cast<int>(t.hour), static_cast<int>(t.minute), static_cast<int>(t.second));
}

// Stops at the first line of six numbers, good or bad. Numbers are taken over from it only.
void AskClock(const ClockFormat& format, TowerTime& time) {
    const std::string response = SendAtCommand(format.command, kAnswerWait);
    for (const std::string& line : LinesOf(response)) {
        TowerTime scanned;
        const int matches = format.scan(line.c_str(), scanned);
        LogAbove(0, "DEBUG: Got num matches %d", matches);
        if (matches != 6) continue;
        time = scanned;
        LogAbove(0, "DEBUG: Got tower time: %s", line.c_str());
        LogDateAndTime(time);
        if (!time.HasPossibleDate()) {
            Log("Got BAD tower time: %s", line.c_str());
            return;
        }
        if (format.short_years && time.year < 99) time.year += 2000;
        time.is_valid = true;
        time.use_utc = format.use_utc;
        return;
    }
}

bool TakeDateLine(const std::string& line, TowerTime& time) {
    TowerTime t;
    if (std::sscanf(line.c_str(), "%u/%u/%u", &t.year, &t.month, &t.day) != 3) return false;
    time.year = t.year;
    time.month = t.month;
    time.day = t.day;
    LogAbove(0, "DEBUG: Got tower date: %s", line.c_str());
    LogDate(time);
    return true;
}

bool TakeTimeLine(const std::string& line, TowerTime& time) {
    TowerTime t;
    char zone[32] = "";
    const int matches =
        std::sscanf(line.c_str(), "%u:%u:%u %31s", &t.hour, &t.minute, &t.second, zone);
    if (matches != 4 && matches != 3) return false;
    time.hour = t.hour;
    time.minute = t.minute;
    time.second = t.second;
    LogAbove(0, "DEBUG: Got tower time: %s", line.c_str());
    LogAbove(0, "DEBUG: hour=%d, min=%d, seconds=%d", static_cast<int>(time.hour),
             static_cast<int>(time.minute), static_cast<int>(time.second));
    return true;
}

// Date and time on lines of their own; a short year is not completed here, deliberately: this clock
// is known to say four digits, or nonsense. False when the modem does not know the command.
// Oddity fallback-year-whole: a two-digit year of at!time? never sets the clock.
bool AskFallbackClock(TowerTime& time) {
    bool have_date = false;
    bool have_time = false;
    const std::string response = SendAtCommand(k881FallbackCommand, kAnswerWait);
    for (const std::string& line : LinesOf(response)) {
        if (line == "ERROR" || line == "ERROR\r") {
            Log("Modem does not appear to support tower time command, cannot time sync");
            return false;
        }
        if (!have_date && TakeDateLine(line, time)) {
            have_date = true;
        } else if (!have_time && TakeTimeLine(line, time)) {
            have_time = true;
        }
    }
    time.is_valid = have_date && have_time;
    return true;
}

// False when there is nobody to ask.
bool AskModem(TowerTime& time) {
    switch (g_i_CardType) {
        case kCardNovatelE362:
            AskClock(kE362Clock, time);
            return true;
        case kCardNovatelE371:
            AskClock(kE371Clock, time);
            return true;
        case kCardSierra881:
            AskClock(k881Clock, time);
            return time.is_valid || AskFallbackClock(time);
        default:
            Log("Cannot sync to tower time, unsupported modem");
            return false;
    }
}

std::string ShownTime(const TowerTime& t) {
    return Format("%2.2d:%2.2d:%2.2d %2.2d/%2.2d/%d", static_cast<int>(t.hour),
                  static_cast<int>(t.minute), static_cast<int>(t.second), static_cast<int>(t.month),
                  static_cast<int>(t.day), static_cast<int>(t.year));
}

// False when the year is too far off to be worth a retry of its own.
bool CheckTime(TowerTime& time) {
    if (time.HasPossibleDate() && time.year > 2011) return true;
    Log("Time from tower does not look valid: %s", ShownTime(time).c_str());
    time.is_valid = false;
    return time.year >= 2011 && time.year <= 2100;
}

void SetClocks(const TowerTime& time) {
    std::string command = "/bin/date ";
    if (time.use_utc) {
        Log("Using UTC switch when setting date");
        command += " -u ";
    }
    command +=
        Format("  -s \"%u:%u:%u %u/%u/%u\" &> /dev/null; /bin/hwclock --systohc &> /dev/null",
               time.hour, time.minute, time.second, time.month, time.day, time.year);
    Log("Syncing system time to %s (%s)", ShownTime(time).c_str(), time.use_utc ? "UTC" : "LOCAL");
    RunShell(command);
}

}  // namespace

void SyncTowerTime() {
    if (!g_S_PppConfig.time_sync_enabled) return;
    TowerTime time;
    if (!AskModem(time) || !CheckTime(time)) return;
    if (!time.is_valid) {
        g_Cp_TowerTimeTimer->SetPeriod(kRetryPeriod);
        Log("Will check tower time again in %d minutes", static_cast<int>(kRetryPeriod / 60));
        return;
    }
    SetClocks(time);
    g_Cp_TowerTimeTimer->SetPeriod(kGoodPeriod);
}
