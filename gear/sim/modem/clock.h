// The modem's own clock: the network's time, advanced with the caller's clock.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "sim/modem/text.h"

namespace sim {

struct CivilTime {
    int year, month, day, hour, minute, second;
};

class Clock {
  public:
    // `unix_seconds` is the time at the caller's instant `now`.
    void Set(std::int64_t unix_seconds, Micros now);
    void Shift(std::int64_t seconds) { base_seconds_ += seconds; }
    // After power-on it shows the first day of GPS time, until the network has told the time.
    void Lose(Micros now) { lost_at_ = now; }
    void HearTheTime() { lost_at_.reset(); }
    void SetZone(int quarters) { zone_quarters_ = quarters; }  // quarters of an hour east of UTC
    int Zone() const { return zone_quarters_; }

    std::int64_t UnixSeconds(Micros now) const;
    CivilTime Utc(Micros now) const;
    CivilTime Local(Micros now) const;

    // "26/03/14,09:15:02+00" in local time: the form of +CCLK and of time stamps on messages.
    std::string Stamp(Micros now) const;

  private:
    std::int64_t base_seconds_ = 1773479700;  // 2026-03-14 09:15:00 UTC
    Micros base_at_ = 0;
    int zone_quarters_ = 0;
    std::optional<Micros> lost_at_;
};

CivilTime ToCivil(std::int64_t unix_seconds);

// "2026-03-14T09:15:02" as seconds since 1970, UTC; nothing when it is no such date.
std::optional<std::int64_t> ParseIsoTime(const std::string& text);

}  // namespace sim
