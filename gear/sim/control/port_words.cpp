// What comes out of the port, and the modem as a whole.
#include "sim/control/words.h"
#include "sim/modem/values.h"

namespace sim {

namespace {

// Plain text becomes an answer a modem could give; text with its own line ends goes out as it is.
std::string AnswerBytes(const std::string& text) {
    if (text.empty() || text.find_first_of("\r\n") != text.npos) return text;
    const bool is_result = text == "OK" || StartsWith(text, "ERROR") || StartsWith(text, "+CM");
    return "\r\n" + text + "\r\n" + (is_result ? "" : "\r\nOK\r\n");
}

std::string Silence(PlayedModem& modem, const Words& words) {
    const auto length = ParseDuration(words[0]);
    if (!length) return ErrorText("not a duration: " + words[0]);
    modem.FallSilent(*length);
    return kOk;
}

std::string Garbage(PlayedModem& modem, const Words& words) {
    constexpr int kMost = 1 << 20;
    const auto count = ParseInt(words[0]);
    if (!count || *count < 0 || *count > kMost) return ErrorText("0 to 1048576 bytes");
    modem.MakeNoise(*count);
    return kOk;
}

std::string Unplug(PlayedModem& modem, const Words&) {
    modem.Unplug();
    return kOk;
}

std::string Plug(PlayedModem& modem, const Words& words) {
    if (words.empty()) {
        modem.Plug();
        return kOk;
    }
    constexpr int kHighest = 255;
    const auto number = ParseInt(words[0]);
    if (!number || *number < 0 || *number > kHighest) return ErrorText("a port is 0 to 255");
    modem.Plug(number);
    return kOk;
}

std::string Say(PlayedModem& modem, const Words& words) {
    modem.SendUnsolicited(Join(words));
    return kOk;
}

std::string Answer(PlayedModem& modem, const Words& words) {
    const auto delay = words.size() > 2 ? ParseDuration(words[2]) : kUsualDelay;
    if (!delay) return ErrorText("not a duration: " + words[2]);
    modem.Answer(words[0], AnswerBytes(words[1]), *delay);
    return kOk;
}

std::string Forget(PlayedModem& modem, const Words& words) {
    modem.Forget(words[0]);
    return kOk;
}

std::string SwitchDrive(PlayedModem& modem, const Words& words) {
    const auto on = ReadOnOff(words[0]);
    if (!on) return NeedsOnOff();
    Drive& drive = modem.GetDrive();
    if (*on && !drive.Exists()) return ErrorText("this profile has no drive");
    if (*on) {
        drive.Start(modem.Fate().now);
    } else {
        drive.Stop();
    }
    return kOk;
}

std::string Echo(PlayedModem& modem, const Words& words) {
    const auto on = ReadOnOff(words[0]);
    if (!on) return NeedsOnOff();
    modem.SetEcho(*on);
    return kOk;
}

std::string Set(PlayedModem& modem, const Words& words) {
    if (IsLiveValue(words[0])) return ErrorText(words[0] + " is a live value, it cannot be set");
    modem.Set(words[0], Join({words.begin() + 1, words.end()}));
    return kOk;
}

}  // namespace

const std::vector<Verb>& PortWords() {
    static const std::vector<Verb> verbs = {
        {"silence", "DURATION               neither hear nor speak", 1, 1, &Silence},
        {"garbage", "COUNT                  send so many bytes of noise", 1, 1, &Garbage},
        {"unplug", "                       pull the modem out", 0, 0, &Unplug},
        {"plug", "[PORT]                 put it back, as after power-on; at another port", 0, 1,
         &Plug},
        {"say", "\"LINE\"                 an unsolicited line", 1, 50, &Say},
        {"answer", "\"COMMAND\" \"TEXT\" [DELAY]   answer this from now on", 2, 3, &Answer},
        {"forget", "\"COMMAND\"              undo answer", 1, 1, &Forget},
        {"drive", "on|off                 the drive through town", 1, 1, &SwitchDrive},
        {"echo", "on|off                 echo of commands", 1, 1, &Echo},
        {"set", "NAME VALUE             a setting of the profile", 2, 20, &Set},
    };
    return verbs;
}

}  // namespace sim
