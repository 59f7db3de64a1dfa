// From the text of a log to the text of a story or a profile.
#pragma once

#include <ctime>
#include <set>
#include <string>
#include <vector>

#include "capture/dialogue.h"
#include "capture/story.h"
#include "modemctl/anonymize.h"

namespace capture {

struct Request {
    std::string name;  // of the log, for complaints
    bool as_profile = false;
    std::set<std::string> harmless;
    std::time_t now = 0;
    modemctl::Anonymizer::Key key = {};
};

struct Result {
    std::string text;  // empty: refused
    std::vector<std::string> complaints;
};

Result Convert(const std::string& log, const Request& request);

// The card whose commands these are, with the option of those that poll with AT+CIND?.
std::string ArgumentsFor(const std::vector<Exchange>& exchanges);

// What modem-sim needs to answer each command as it was answered first and with success; see
// modem-sim(1).
std::string WriteProfile(const Story& story);

}  // namespace capture
