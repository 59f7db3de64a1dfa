// The daemon's lines in a log of the whole router, whoever wrote it: classic, ISO and logread
// stamps, other programs' lines between, repeats that were folded, lines that were thrown away or
// wrapped, and bytes that were escaped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace capture {

// Where something stands in the file, both counted from 1.
struct Place {
    std::size_t line = 0;
    std::size_t column = 0;
};

struct LogLine {
    enum Kind { kSaid, kLost };
    Kind kind = kSaid;
    std::int64_t when = 0;  // microseconds since 1970
    bool exact = false;     // the stamp has fractions of a second
    std::string text;       // as it stands, escapes included
    Place place;            // of the text's first character
};

// `now` decides about the year, see modemctl's ParseLogLine.
std::vector<LogLine> ReadLogLines(const std::string& log, std::time_t now);

// "#015#012" as rsyslog writes it, and a control character at the end as busybox does ("^Z").
std::string WithoutLogEscapes(const std::string& text);

}  // namespace capture
