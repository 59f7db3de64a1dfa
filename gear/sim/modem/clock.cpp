#include "sim/modem/clock.h"

#include <cstdio>
#include <ctime>

namespace sim {

void Clock::Set(std::int64_t unix_seconds, Micros now) {
    base_seconds_ = unix_seconds;
    base_at_ = now;
}

std::int64_t Clock::UnixSeconds(Micros now) const {
    constexpr std::int64_t kFirstDayOfGps = 315964800;  // 1980-01-06 00:00:00 UTC
    if (lost_at_) return kFirstDayOfGps + (now - *lost_at_) / kSecond;
    return base_seconds_ + (now - base_at_) / kSecond;
}

CivilTime Clock::Utc(Micros now) const {
    return ToCivil(UnixSeconds(now));
}

CivilTime Clock::Local(Micros now) const {
    return ToCivil(UnixSeconds(now) + zone_quarters_ * 900LL);
}

std::string Clock::Stamp(Micros now) const {
    const CivilTime t = Local(now);
    return Print("%02d/%02d/%02d,%02d:%02d:%02d%+03d", t.year % 100, t.month, t.day, t.hour,
                 t.minute, t.second, zone_quarters_);
}

CivilTime ToCivil(std::int64_t unix_seconds) {
    const std::time_t seconds = unix_seconds;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
            parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

std::optional<std::int64_t> ParseIsoTime(const std::string& text) {
    CivilTime t{};
    int used = 0;
    const int fields = std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &t.year, &t.month,
                                   &t.day, &t.hour, &t.minute, &t.second, &used);
    if (fields != 6 || static_cast<std::size_t>(used) != text.size()) return std::nullopt;
    std::tm parts{};
    parts.tm_year = t.year - 1900;
    parts.tm_mon = t.month - 1;
    parts.tm_mday = t.day;
    parts.tm_hour = t.hour;
    parts.tm_min = t.minute;
    parts.tm_sec = t.second;
    const std::time_t seconds = timegm(&parts);
    // timegm folds 31 April into May; a date that does not survive the way back is no date.
    const CivilTime back = ToCivil(seconds);
    const bool same = back.year == t.year && back.month == t.month && back.day == t.day &&
                      back.hour == t.hour && back.minute == t.minute && back.second == t.second;
    return same ? std::optional<std::int64_t>(seconds) : std::nullopt;
}

}  // namespace sim
