#include "modemctl/time_text.h"

#include <cstdio>
#include <cstdlib>

#include "support/text.h"

namespace modemctl {

namespace {

constexpr long long kMinute = 60;
constexpr long long kHour = 60 * kMinute;
constexpr long long kDay = 24 * kHour;

std::string LocalText(std::time_t when, const char* format) {
    std::tm local = {};
    char text[64] = "";
    if (localtime_r(&when, &local) == nullptr) return "";
    return std::string(text, std::strftime(text, sizeof(text), format, &local));
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Days from 1970-01-01 to a date of the Gregorian calendar; timegm is not everywhere.
long long DaysSinceEpoch(int year, int month, int day) {
    const long long shifted_year = month > 2 ? year : year - 1;
    const long long era = shifted_year / 400;
    const long long year_of_era = shifted_year - era * 400;
    const long long day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const long long day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100;
    return era * 146097 + day_of_era + day_of_year - 719468;
}

// "Z", "+01:00" or "+0100" at the start of `text`. Returns the characters taken.
std::size_t ScanZone(const char* text, long long& offset) {
    if (text[0] == 'Z') {
        offset = 0;
        return 1;
    }
    int hours = 0;
    int minutes = 0;
    int taken = 0;
    if (text[0] != '+' && text[0] != '-') return 0;
    if (std::sscanf(text + 1, "%2d:%2d%n", &hours, &minutes, &taken) < 2 &&
        std::sscanf(text + 1, "%2d%2d%n", &hours, &minutes, &taken) < 2) {
        return 0;
    }
    offset = hours * kHour + minutes * kMinute;
    if (text[0] == '-') offset = -offset;
    return static_cast<std::size_t>(taken) + 1;
}

bool IsPossible(const std::tm& parts) {
    return parts.tm_year >= 70 && parts.tm_mon >= 0 && parts.tm_mon <= 11 && parts.tm_mday >= 1 &&
           parts.tm_mday <= 31 && parts.tm_hour <= 23 && parts.tm_min <= 59 && parts.tm_sec <= 60;
}

std::time_t InZone(const std::tm& parts, long long offset) {
    const long long days = DaysSinceEpoch(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
    const long long seconds =
        parts.tm_hour * kHour + parts.tm_min * kMinute + parts.tm_sec - offset;
    return static_cast<std::time_t>(days * kDay + seconds);
}

long long UnitSeconds(const std::string& unit) {
    if (unit.empty() || unit == "s") return 1;
    if (unit == "m" || unit == "min") return kMinute;
    if (unit == "h") return kHour;
    if (unit == "d") return kDay;
    return 0;
}

}  // namespace

std::string IsoTime(std::time_t when) {
    std::string text = LocalText(when, "%Y-%m-%dT%H:%M:%S%z");
    // strftime writes "+0100"; the colon is what most readers of ISO 8601 want.
    if (text.size() > 5) text.insert(text.size() - 2, ":");
    return text;
}

std::string ShownTime(std::time_t when) {
    return LocalText(when, "%Y-%m-%d %H:%M:%S");
}

std::string ShownSpan(long long seconds) {
    if (seconds < 0) return "in the future";
    if (seconds < 2 * kMinute) return Format("%lld s", seconds);
    if (seconds < kHour) return Format("%lld min", seconds / kMinute);
    if (seconds < kDay) {
        return Format("%lld h %02lld min", seconds / kHour, seconds % kHour / kMinute);
    }
    return Format("%lld d %lld h", seconds / kDay, seconds % kDay / kHour);
}

std::size_t ScanIsoTime(const std::string& text, std::time_t& when) {
    std::tm parts = {};
    int taken = 0;
    const char* const start = text.c_str();
    if (std::sscanf(start, "%4d-%2d-%2d%n", &parts.tm_year, &parts.tm_mon, &parts.tm_mday, &taken) <
        3) {
        return 0;
    }
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    const char* at = start + taken;
    bool has_zone = false;
    long long offset = 0;
    if ((*at == 'T' || *at == ' ') && IsDigit(at[1])) {
        int length = 0;
        if (std::sscanf(at + 1, "%2d:%2d%n", &parts.tm_hour, &parts.tm_min, &length) < 2) return 0;
        at += 1 + length;
        if (std::sscanf(at, ":%2d%n", &parts.tm_sec, &length) == 1) at += length;
        if (*at == '.' || *at == ',') {
            while (IsDigit(*++at)) continue;
        }
        const std::size_t zone = ScanZone(at, offset);
        has_zone = zone > 0;
        at += zone;
    }
    if (!IsPossible(parts)) return 0;
    parts.tm_isdst = -1;
    when = has_zone ? InZone(parts, offset) : std::mktime(&parts);
    return static_cast<std::size_t>(at - start);
}

bool ParseSpan(const std::string& text, long long& seconds) {
    if (text.empty() || !IsDigit(text[0])) return false;
    char* end = nullptr;
    const long long count = std::strtoll(text.c_str(), &end, 10);
    const long long unit = UnitSeconds(end);
    if (unit == 0 || count > 100 * 366 * kDay / unit) return false;
    seconds = count * unit;
    return true;
}

bool ParseTime(const std::string& text, std::time_t now, std::time_t& when) {
    long long seconds = 0;
    if (ParseSpan(text, seconds)) {
        when = now - static_cast<std::time_t>(seconds);
        return true;
    }
    if (text == "today") {
        const std::string day = LocalText(now, "%Y-%m-%d");
        return ScanIsoTime(day, when) == day.size();
    }
    const std::size_t taken = ScanIsoTime(text, when);
    return taken > 0 && taken == text.size();
}

}  // namespace modemctl
