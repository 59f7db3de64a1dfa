#include "capture/convert.h"

#include <algorithm>
#include <cstdio>

#include "capture/places.h"
#include "support/text.h"

namespace capture {

namespace {

constexpr std::size_t kMostComplaints = 20;

struct Telltale {
    const char* command;  // in lower case
    const char* card;
};
// The first that was heard decides.
constexpr Telltale kTelltales[] = {
    {"at$nwsysmode", "E362"}, {"at$nwrat?", "E371"}, {"at!gstatus?", "881"},
    {"at+ecio?", "881"},      {"at^scid", "mc75i"},  {"at!getrat?", "USB305"},
    {"at^sysinfo", "USB305"},
};

std::string DateAndTime(std::int64_t micros) {
    const auto seconds = static_cast<std::time_t>(micros / 1000000);
    std::tm utc = {};
    char text[32] = "";
    if (gmtime_r(&seconds, &utc) == nullptr) return "";
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &utc);
    return text;
}

bool Heard(const std::vector<Exchange>& exchanges, const std::string& command) {
    return std::any_of(exchanges.begin(), exchanges.end(), [&](const Exchange& exchange) {
        std::string lower = exchange.command;
        ToLower(lower);
        return lower == command;
    });
}

std::string Shown(const std::string& text) {
    constexpr std::size_t kLongest = 60;
    return text.size() > kLongest ? Escaped(text.substr(0, kLongest)) + "..." : Escaped(text);
}

void ComplainAbout(const std::vector<Unplaced>& unplaced, const Request& request, Result& result) {
    for (const Unplaced& one : unplaced) {
        if (result.complaints.size() == kMostComplaints) {
            result.complaints.push_back(Format("... and more: %zu places in all", unplaced.size()));
            return;
        }
        result.complaints.push_back(
            Format("%s:%zu:%zu: cannot place '%s' (%s); if it is nobody's: --keep '%s'",
                   request.name.c_str(), one.place.line, one.place.column, Shown(one.text).c_str(),
                   Shown(one.command).c_str(), Shown(one.text).c_str()));
    }
}

}  // namespace

std::string ArgumentsFor(const std::vector<Exchange>& exchanges) {
    std::string arguments = "generic";
    for (const Telltale& telltale : kTelltales) {
        if (!Heard(exchanges, telltale.command)) continue;
        arguments = telltale.card;
        break;
    }
    return arguments + (Heard(exchanges, "at+cind?") ? " -cind1" : "");
}

Result Convert(const std::string& log, const Request& request) {
    Result result;
    Dialogue dialogue = ReadDialogue(ReadLogLines(log, request.now));
    for (const std::string& note : dialogue.notes) {
        result.complaints.push_back(request.name + ": " + note);
    }
    if (dialogue.exchanges.empty()) {
        result.complaints.push_back(request.name + ": no command that modemd has sent");
        return result;
    }
    if (dialogue.dumps == 0) {
        result.complaints.push_back(
            request.name + ": no bytes of the modem; was the log written at debug level 4?");
        return result;
    }
    Placer placer(request.key, request.harmless);
    const std::vector<Unplaced> unplaced = placer.Replace(dialogue);
    if (!unplaced.empty()) {
        result.complaints.clear();
        ComplainAbout(unplaced, request, result);
        return result;
    }
    Story story;
    story.arguments = ArgumentsFor(dialogue.exchanges);
    story.began = DateAndTime(dialogue.began);
    story.exchanges = std::move(dialogue.exchanges);
    std::string text = request.as_profile ? WriteProfile(story) : WriteStory(story);
    if (placer.Leaks(text)) {
        result.complaints.push_back(request.name + ": an identity stands where none is expected");
        return result;
    }
    result.text = std::move(text);
    return result;
}

}  // namespace capture
