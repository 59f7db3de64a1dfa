#include "sim/control/played_modem.h"

#include "sim/control/words.h"

namespace sim {

namespace {

using Table = const std::vector<Verb>& (*)();

constexpr Table kTables[] = {RadioWords, CallWords, MessageWords,
                             PortWords,  MoodWords, ReportWords};

const Verb* FindVerb(const std::string& name) {
    for (const Table table : kTables) {
        for (const Verb& verb : table()) {
            if (name == verb.name) return &verb;
        }
    }
    return nullptr;
}

std::string Help() {
    std::string text = "ok: words";
    for (const Table table : kTables) {
        for (const Verb& verb : table()) text += Print("\n  %-13s %s", verb.name, verb.usage);
    }
    return text + "\n  help                                 this list";
}

}  // namespace

std::string PlayedModem::Control(std::string_view line, Micros now) {
    Advance(now);
    return Run(line);
}

void PlayedModem::RunDriveStep(const std::string& line) {
    Run(line);
}

std::string PlayedModem::Run(std::string_view line) {
    const auto words = SplitWords(line);
    if (!words) return ErrorText("a quote is left open");
    if (words->empty()) return ErrorText("say something; help lists what");
    if (words->front() == "help") return Help();
    const Verb* verb = FindVerb(words->front());
    if (verb == nullptr) {
        return ErrorText("unknown word " + words->front() + "; help lists those I know");
    }
    const Words arguments(words->begin() + 1, words->end());
    if (arguments.size() < verb->least || arguments.size() > verb->most) {
        return ErrorText(std::string("usage: ") + verb->name + " " + verb->usage);
    }
    const std::string answer = verb->action(*this, arguments);
    Changed();
    return answer;
}

}  // namespace sim
