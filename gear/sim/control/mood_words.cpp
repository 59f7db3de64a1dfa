// The modem's moods: how fast it is, what it adds unasked, and the forms of what it says.
#include <algorithm>

#include "sim/control/words.h"
#include "sim/modem/pace.h"

namespace sim {

namespace {

struct Form {
    const char* what;
    std::vector<std::string> forms;
};

// Each is the setting "form.WHAT"; the commands and the profiles look at it.
const std::vector<Form>& Forms() {
    static const std::vector<Form> forms = {
        {"creg", {"usual", "short", "unquoted", "blanks"}},
        {"cnum", {"usual", "no-name", "plus"}},
        {"cind", {"usual", "last"}},
        {"echo", {"usual", "doubled"}},
        {"page", {"usual", "padded", "carrier", "low-power"}},
        {"qmi", {"usual", "names"}},
        {"simstat", {"usual", "tight"}},
        {"listing", {"usual", "no-name", "comma", "seventh", "ucs2", "header", "tight-end"}},
        {"delete", {"usual", "index-only"}},
    };
    return forms;
}

std::string SetPace(PlayedModem& modem, const Words& words) {
    if (!ReadPace(words[0])) return ErrorText("the pace is polite, prompt or slow");
    modem.Set("pace", words[0]);
    return kOk;
}

std::string SetPieces(PlayedModem& modem, const Words& words) {
    if (!ReadOnOff(words[0])) return NeedsOnOff();
    modem.Set("pieces", words[0]);
    return kOk;
}

std::string SetUnasked(PlayedModem& modem, const Words& words) {
    const std::string gap = words[0] == "off" ? "0" : words[0];
    if (!ParseDuration(gap)) return ErrorText("not a duration: " + words[0]);
    modem.Set("unasked", gap);
    return kOk;
}

std::string SetLine(PlayedModem& modem, const Words& words) {
    const auto rate = words[0] == "usual" ? 0 : ParseInt(words[0]);
    if (!rate || *rate < 0) return ErrorText("the line has a rate, or is usual");
    modem.Set("line-rate", std::to_string(*rate));
    return kOk;
}

std::string Restart(PlayedModem& modem, const Words& words) {
    const auto length = words.empty() ? 30 * kSecond : ParseDuration(words[0]);
    if (!length) return ErrorText("not a duration: " + words[0]);
    modem.Restart(*length);
    return kOk;
}

std::string SetForm(PlayedModem& modem, const Words& words) {
    const auto form = std::find_if(Forms().begin(), Forms().end(),
                                   [&](const Form& known) { return words[0] == known.what; });
    if (form == Forms().end()) return ErrorText("no form of " + words[0] + " is known");
    if (std::find(form->forms.begin(), form->forms.end(), words[1]) == form->forms.end()) {
        return ErrorText(words[0] + " is " + Join(form->forms));
    }
    modem.Set("form." + words[0], words[1]);
    return kOk;
}

}  // namespace

const std::vector<Verb>& MoodWords() {
    static const std::vector<Verb> verbs = {
        {"pace", "polite|prompt|slow     how long answers take", 1, 1, &SetPace},
        {"pieces", "on|off                 lists come a line or a message at a time", 1, 1,
         &SetPieces},
        {"unasked", "DURATION, or off       speak up so often without a reason", 1, 1, &SetUnasked},
        {"line", "RATE|usual             bytes arrive one by one, and are lost when nobody reads",
         1, 1, &SetLine},
        {"restart", "[DURATION]             as after power-on, with all that takes time", 0, 1,
         &Restart},
        {"form", "WHAT FORM              what an answer looks like", 2, 2, &SetForm},
    };
    return verbs;
}

}  // namespace sim
