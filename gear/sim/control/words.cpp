#include "sim/control/words.h"

namespace sim {

std::string ErrorText(const std::string& why) {
    return "error: " + why;
}

std::string NeedsOnOff() {
    return ErrorText("say on or off");
}

std::optional<bool> ReadOnOff(const std::string& word) {
    if (word == "on") return true;
    if (word == "off") return false;
    return std::nullopt;
}

std::optional<int> ReadTimes(const std::string& word) {
    if (word == "forever") return -1;
    const auto times = ParseInt(word);
    return times && *times >= 0 ? times : std::nullopt;
}

std::string Join(const Words& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

}  // namespace sim
