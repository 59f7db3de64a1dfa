// A profile out of a story: each command with one answer, as modem-sim reads it.

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "capture/convert.h"
#include "support/text.h"

namespace capture {

namespace {

bool IsFinalResult(const std::string& line) {
    return line == "OK" || line == "ERROR" || line.compare(0, 5, "+CME ") == 0 ||
           line.compare(0, 5, "+CMS ") == 0;
}

// The lines of an answer, without an echo in front and empty lines around.
std::vector<std::string> LinesOf(const Exchange& exchange) {
    std::vector<std::string> lines;
    std::istringstream text(exchange.Text());
    for (std::string line; std::getline(text, line);) {
        line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
        if (!line.empty() && line != exchange.command) lines.push_back(line);
    }
    return lines;
}

// Profiles have lines of text and a result. An answer with anything else in it, or with braces,
// which stand for values there, is told by the story alone.
bool FitsProfile(const std::vector<std::string>& lines) {
    const auto plain = [](char c) {
        return (c >= ' ' && c <= '~' && c != '{' && c != '}') || c == '\t';
    };
    if (lines.empty() || !IsFinalResult(lines.back())) return false;
    return std::all_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return std::all_of(line.begin(), line.end(), plain);
    });
}

void WriteAnswer(std::ostream& profile, const Exchange& exchange,
                 const std::vector<std::string>& lines) {
    profile << "\n> " << exchange.command << "\n";
    profile << "delay " << exchange.answer.front().delay / kMillisecond << "ms\n";
    for (const std::string& line : lines) profile << "< " << Escaped(line) << "\n";
}

// Message texts, and commands that change the modem's state, stay with the simulated modem's own.
bool IsQuery(const std::string& command) {
    const bool at = command.compare(0, 2, "AT") == 0 || command.compare(0, 2, "at") == 0;
    return at && command.size() > 2 && command.back() != '\x1a' && !Contains(command, "=\"") &&
           !Contains(command, "CONNECT");
}

}  // namespace

std::string WriteProfile(const Story& story) {
    std::ostringstream profile;
    profile << "# " << story.arguments << ", as it answered " << story.began << ".\n\n";
    profile << "include " << story.arguments.substr(0, story.arguments.find(' ')) << "\n";
    std::map<std::string, const Exchange*> first;
    std::vector<std::string> order;
    for (const Exchange& exchange : story.exchanges) {
        const std::vector<std::string> lines = LinesOf(exchange);
        if (!IsQuery(exchange.command) || !FitsProfile(lines)) continue;
        const Exchange*& known = first[exchange.command];
        if (known == nullptr) order.push_back(exchange.command);
        if (known == nullptr || (LinesOf(*known).back() != "OK" && lines.back() == "OK")) {
            known = &exchange;
        }
    }
    for (const std::string& command : order) {
        WriteAnswer(profile, *first[command], LinesOf(*first[command]));
    }
    return profile.str();
}

}  // namespace capture
