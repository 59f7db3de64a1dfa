// The data call.
#include "sim/control/words.h"

namespace sim {

namespace {

std::string Call(PlayedModem& modem, const Words& words) {
    DataCall& call = modem.Fate().call;
    if (words[0] == "up") {
        call.ForceUp(modem.Fate().now);
    } else if (words[0] == "down") {
        call.Disconnect(modem.Fate().now);
    } else if (words[0] == "drop") {
        call.Drop(kReleasedByNetwork, modem.Fate().now);
    } else {
        return ErrorText("call up, down or drop");
    }
    return kOk;
}

std::string DropCall(PlayedModem& modem, const Words& words) {
    const auto reason = words.empty() ? kReleasedByNetwork : ParseInt(words[0]);
    if (!reason) return ErrorText("the reason is a number");
    modem.Fate().call.Drop(*reason, modem.Fate().now);
    return kOk;
}

std::string ConnectFails(PlayedModem& modem, const Words& words) {
    DataCall& call = modem.Fate().call;
    if (words[0] == "off") {
        call.FailNext(0, 0, 0);
        return kOk;
    }
    const auto result = ParseInt(words[0]);
    const auto reason = words.size() > 1 ? ParseInt(words[1]) : 1;
    const auto times = words.size() > 2 ? ReadTimes(words[2]) : 1;
    if (!result || !reason || !times) return ErrorText("result, reason and times are numbers");
    call.FailNext(*result, *reason, *times);
    return kOk;
}

std::string CallLasts(PlayedModem& modem, const Words& words) {
    const auto lasts = words[0] == "off" ? 0 : ParseDuration(words[0]);
    if (!lasts) return ErrorText("not a duration: " + words[0]);
    modem.Fate().call.SetLasts(*lasts);
    return kOk;
}

std::string UnknownState(PlayedModem& modem, const Words& words) {
    const auto on = ReadOnOff(words[0]);
    if (!on) return NeedsOnOff();
    modem.Fate().call.SetUnknown(*on);
    return kOk;
}

std::string NoAddress(PlayedModem& modem, const Words& words) {
    const auto on = ReadOnOff(words[0]);
    if (!on) return NeedsOnOff();
    modem.Fate().call.SetNoAddress(*on);
    return kOk;
}

}  // namespace

const std::vector<Verb>& CallWords() {
    static const std::vector<Verb> verbs = {
        {"call", "up|down|drop           bring the data call up or down, or let it drop", 1, 1,
         &Call},
        {"drop-call", "[REASON]               the network ends the data call", 0, 1, &DropCall},
        {"connect-fails", "RESULT [REASON] [TIMES|forever], or off", 1, 3, &ConnectFails},
        {"call-lasts", "DURATION               every call ends after this time; 0 or off: never", 1,
         1, &CallLasts},
        {"unknown", "on|off                 the call's state is reported as unknown", 1, 1,
         &UnknownState},
        {"no-address", "on|off                 calls connect, but the link stays dead", 1, 1,
         &NoAddress},
    };
    return verbs;
}

}  // namespace sim
