// The dialogue between daemon and modem, out of the daemon's log at debug level 4.
#pragma once

#include <string>
#include <vector>

#include "capture/log_lines.h"
#include "capture/story.h"

namespace capture {

// Where each byte of an exchange was read, for complaints.
struct Source {
    Place command;
    std::vector<Place> bytes;  // one for each byte of the answer
};

struct Dialogue {
    std::vector<Exchange> exchanges;
    std::vector<Source> sources;     // one for each exchange
    std::vector<std::string> notes;  // what of the log could not be used, and why
    std::int64_t began = 0;          // microseconds since 1970
    std::size_t dumps = 0;           // of bytes read: none when the debug level was too low
};

Dialogue ReadDialogue(const std::vector<LogLine>& lines);

}  // namespace capture
