// Points in time and lengths of time as text, both ways. Local time, ISO 8601.
#pragma once

#include <ctime>
#include <string>

namespace modemctl {

// "2026-03-14T09:15:02+01:00", for programs.
std::string IsoTime(std::time_t when);
// "2026-03-14 09:15:02", for people.
std::string ShownTime(std::time_t when);
// "7 s", "3 min", "2 h 05 min", "4 d 3 h"; below zero "in the future".
std::string ShownSpan(long long seconds);

// A point in time: "2026-03-14 09:15:02" in local time, also with "T", without seconds, without a
// time of day, and with a zone ("Z", "+01:00", "+0100"); or so long before `now`: "90", "90s",
// "15m", "2h", "3d"; or "today". False when it is none of these.
bool ParseTime(const std::string& text, std::time_t now, std::time_t& when);

// The point in time at the start of a text, as the daemon and system logs write it. Returns the
// number of characters taken, 0 when there is none. Fractions of a second are passed over.
std::size_t ScanIsoTime(const std::string& text, std::time_t& when);

// A length of time: "90", "90s", "15m", "2h", "3d". False when it is none.
bool ParseSpan(const std::string& text, long long& seconds);

}  // namespace modemctl
