// Where the personal data stand in the daemon's files and log lines. What is not told here cannot
// be placed, and does not leave the router.
#pragma once

#include <string>

#include "modemctl/anonymize.h"

namespace modemctl {

// A line of the statistics or of a configuration file, "KEY=value". False when the key is unknown.
bool PlaceKeyLine(const std::string& line, Anonymizer& anonymizer, std::string& placed);

// What the daemon said. False for a line that it does not write, and for debug text, which may hold
// whatever the modem said.
bool PlaceLogLine(const std::string& text, Anonymizer& anonymizer, std::string& placed);

// A file name of the spool: those of the daemon and of modemctl tell only when they were made.
std::string PlaceSpoolName(const std::string& name, Anonymizer& anonymizer);

}  // namespace modemctl
