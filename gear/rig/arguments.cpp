#include "rig/arguments.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "rig/card_options.h"

namespace rig {

namespace {

constexpr char kUsualDevice[] = "/dev/ttyUSB0";
constexpr std::size_t kReadOfADevice = 80;  // characters that the daemon takes of it

bool IsOption(const std::string& word) {
    return !word.empty() && word[0] == '-';
}

bool MayNameACard(const std::string& word) {
    return IsOption(word) && word[1] != 'd' && word.find("cind1") == std::string::npos;
}

// The daemon passes over an option that it does not know, and a story would be told of another
// modem than it seems.
void RejectUnknownOptions(const std::vector<std::string>& arguments) {
    for (const std::string& word : arguments) {
        if (!MayNameACard(word) || SelectedBy(word) != nullptr) continue;
        throw std::invalid_argument("the daemon knows no option " + word +
                                    "; a story that means it gives its arguments Exactly");
    }
}

}  // namespace

std::vector<std::string> ArgumentsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    RejectUnknownOptions(words);
    if (std::all_of(words.begin(), words.end(), IsOption)) words.emplace_back(kUsualDevice);
    return words;
}

std::string DeviceOf(const std::vector<std::string>& arguments) {
    const auto device = std::find_if_not(arguments.begin(), arguments.end(), IsOption);
    return device == arguments.end() ? kUsualDevice : device->substr(0, kReadOfADevice);
}

std::string ProfileOf(const std::vector<std::string>& arguments) {
    const cards::Model* chosen = cards::ModelOfType(kCardGeneric);
    for (const std::string& word : arguments) {
        const cards::Model* model = MayNameACard(word) ? SelectedBy(word) : nullptr;
        if (model != nullptr) chosen = model;
    }
    return chosen->name;
}

}  // namespace rig
