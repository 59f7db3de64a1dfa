// The words of the control language, a table for each subject, and what they share.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/control/played_modem.h"

namespace sim {

using Words = std::vector<std::string>;  // the arguments, without the verb

struct Verb {
    const char* name;
    const char* usage;
    std::size_t least, most;  // number of arguments
    std::string (*action)(PlayedModem& modem, const Words& words);
};

const std::vector<Verb>& RadioWords();
const std::vector<Verb>& CallWords();
const std::vector<Verb>& MessageWords();
const std::vector<Verb>& PortWords();
const std::vector<Verb>& MoodWords();
const std::vector<Verb>& ReportWords();

constexpr const char* kOk = "ok";

std::string ErrorText(const std::string& why);
std::string NeedsOnOff();
std::optional<bool> ReadOnOff(const std::string& word);
std::optional<int> ReadTimes(const std::string& word);  // "forever" is a negative count
std::string Join(const Words& words);

}  // namespace sim
