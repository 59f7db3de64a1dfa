#include "sim/control/control.h"

#include "sim/modem/values.h"

namespace sim {

namespace {

constexpr const char* kOk = "ok";

std::string ErrorText(const std::string& why) {
    return "error: " + why;
}

std::optional<bool> ReadOnOff(const std::string& word) {
    if (word == "on") return true;
    if (word == "off") return false;
    return std::nullopt;
}

std::string NeedsOnOff() {
    return ErrorText("say on or off");
}

// "forever" is kept as a negative count.
std::optional<int> ReadTimes(const std::string& word) {
    if (word == "forever") return -1;
    const auto times = ParseInt(word);
    return times && *times >= 0 ? times : std::nullopt;
}

std::string Join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

// Plain text becomes an answer a modem could give; text with its own line ends goes out as it is.
std::string AnswerBytes(const std::string& text) {
    if (text.empty() || text.find_first_of("\r\n") != text.npos) return text;
    const bool is_result = text == "OK" || StartsWith(text, "ERROR") || StartsWith(text, "+CM");
    return "\r\n" + text + "\r\n" + (is_result ? "" : "\r\nOK\r\n");
}

}  // namespace

const std::vector<ControlLanguage::Verb>& ControlLanguage::Verbs() {
    using C = ControlLanguage;
    static const std::vector<Verb> verbs = {
        {"signal", "LEVEL [BER]            0 to 31, or 99 for not known", 1, 2, &C::Signal},
        {"register", "home|roaming|denied|searching|unknown|no", 1, 1, &C::Register},
        {"deregister", "                     lose the network without looking for it", 0, 0,
         &C::Deregister},
        {"cell", "LAC CELL               move to this cell (hexadecimal)", 2, 2, &C::Cell},
        {"sim", "ready|absent|locked", 1, 1, &C::SetSim},
        {"service", "lte|hspa|wcdma|edge|gsm|none|TEXT", 1, 20, &C::Service},
        {"call", "up|down|drop           bring the data call up or down, or let it drop", 1, 1,
         &C::Call},
        {"drop-call", "[REASON]               the network ends the data call", 0, 1, &C::DropCall},
        {"connect-fails", "RESULT [REASON] [TIMES|forever], or off", 1, 3, &C::ConnectFails},
        {"call-lasts", "DURATION               every call ends after this time; 0 or off: never", 1,
         1, &C::CallLasts},
        {"unknown", "on|off                 the call's state is reported as unknown", 1, 1,
         &C::UnknownState},
        {"no-address", "on|off                 calls connect, but the link stays dead", 1, 1,
         &C::NoAddress},
        {"sms", "NUMBER \"TEXT\"          a message arrives", 2, 50, &C::Sms},
        {"sms-fails", "CODE [TIMES|forever] [prompt|body], or off", 1, 3, &C::SmsFails},
        {"store", "PLACES                 capacity of the message store", 1, 1, &C::Store},
        {"clock", "2026-03-14T09:15:02 (UTC), or +SECONDS, -SECONDS", 1, 1, &C::SetTime},
        {"silence", "DURATION               neither hear nor speak", 1, 1, &C::Silence},
        {"garbage", "COUNT                  send so many bytes of noise", 1, 1, &C::Garbage},
        {"unplug", "                       pull the modem out", 0, 0, &C::Unplug},
        {"plug", "                       put it back, as after power-on", 0, 0, &C::Plug},
        {"say", "\"LINE\"                 an unsolicited line", 1, 50, &C::Say},
        {"answer", "\"COMMAND\" \"TEXT\" [DELAY]   answer this from now on", 2, 3, &C::Answer},
        {"forget", "\"COMMAND\"              undo answer", 1, 1, &C::Forget},
        {"drive", "on|off                 the drive through town", 1, 1, &C::Drive},
        {"echo", "on|off                 echo of commands", 1, 1, &C::Echo},
        {"set", "NAME VALUE             a setting of the profile", 2, 20, &C::Set},
        {"status", "                       the state of the modem", 0, 0, &C::Status},
        {"heard", "                       the commands heard so far", 0, 0, &C::Heard},
        {"sent", "                       the messages the host has sent", 0, 0, &C::Sent},
        {"help", "                       this list", 0, 0, &C::Help},
    };
    return verbs;
}

std::string ControlLanguage::Run(std::string_view line) {
    const auto words = SplitWords(line);
    if (!words) return ErrorText("a quote is left open");
    if (words->empty()) return ErrorText("say something; help lists what");
    for (const Verb& verb : Verbs()) {
        if (words->front() != verb.name) continue;
        const Words arguments(words->begin() + 1, words->end());
        if (arguments.size() < verb.least || arguments.size() > verb.most) {
            return ErrorText(std::string("usage: ") + verb.name + " " + verb.usage);
        }
        const std::string answer = (this->*verb.action)(arguments);
        modem_.Changed();
        return answer;
    }
    return ErrorText("unknown word " + words->front() + "; help lists those I know");
}

std::string ControlLanguage::Signal(const Words& words) {
    const auto level = ParseInt(words[0]);
    const auto ber = words.size() > 1 ? ParseInt(words[1]) : modem_.state_.radio.ber;
    if (!level || *level < 0 || (*level > 31 && *level != 99)) {
        return ErrorText("signal is 0 to 31, or 99");
    }
    if (!ber || *ber < 0 || (*ber > 7 && *ber != 99)) return ErrorText("BER is 0 to 7, or 99");
    modem_.state_.radio.csq = *level;
    modem_.state_.radio.ber = *ber;
    return kOk;
}

std::string ControlLanguage::Register(const Words& words) {
    const std::pair<const char*, Registration> kStates[] = {
        {"home", Registration::kHome},       {"roaming", Registration::kRoaming},
        {"denied", Registration::kDenied},   {"searching", Registration::kSearching},
        {"unknown", Registration::kUnknown}, {"no", Registration::kNotSearching},
    };
    for (const auto& [name, state] : kStates) {
        if (words[0] != name) continue;
        modem_.state_.radio.Register(state);
        return kOk;
    }
    return ErrorText("register home, roaming, denied, searching, unknown or no");
}

std::string ControlLanguage::Deregister(const Words&) {
    modem_.state_.radio.Register(Registration::kNotSearching);
    return kOk;
}

std::string ControlLanguage::Cell(const Words& words) {
    const auto lac = ParseInt(words[0], 16);
    const auto cell = ParseInt(words[1], 16);
    if (!lac || *lac < 0 || *lac > 0xFFFF) return ErrorText("LAC is 0 to FFFF");
    if (!cell || *cell < 0 || *cell > 0xFFFFFFF) return ErrorText("CELL is 0 to FFFFFFF");
    modem_.state_.radio.lac = static_cast<unsigned>(*lac);
    modem_.state_.radio.cell = static_cast<unsigned>(*cell);
    return kOk;
}

std::string ControlLanguage::SetSim(const Words& words) {
    for (const Sim sim : {Sim::kReady, Sim::kAbsent, Sim::kLocked}) {
        if (words[0] != SimName(sim)) continue;
        modem_.state_.radio.Insert(sim);
        return kOk;
    }
    return ErrorText("the SIM is ready, absent or locked");
}

std::string ControlLanguage::Service(const Words& words) {
    const std::string text = Join(words);
    Radio& radio = modem_.state_.radio;
    Access access;
    if (!ReadAccess(Lower(text), &access)) {
        if (Lower(text) == "no service") {
            access = Access::kNone;
        } else {
            radio.service_text = text;
            return kOk;
        }
    }
    radio.service_text.clear();
    if (access == Access::kNone) {
        radio.LoseService();
    } else {
        radio.access = access;
        if (!radio.IsRegistered()) radio.registration = Registration::kHome;
    }
    return kOk;
}

std::string ControlLanguage::Call(const Words& words) {
    DataCall& call = modem_.state_.call;
    if (words[0] == "up") {
        call.ForceUp(modem_.state_.now);
    } else if (words[0] == "down") {
        call.Disconnect(modem_.state_.now);
    } else if (words[0] == "drop") {
        call.Drop(kReleasedByNetwork, modem_.state_.now);
    } else {
        return ErrorText("call up, down or drop");
    }
    return kOk;
}

std::string ControlLanguage::DropCall(const Words& words) {
    const auto reason = words.empty() ? kReleasedByNetwork : ParseInt(words[0]);
    if (!reason) return ErrorText("the reason is a number");
    modem_.state_.call.Drop(*reason, modem_.state_.now);
    return kOk;
}

std::string ControlLanguage::ConnectFails(const Words& words) {
    DataCall& call = modem_.state_.call;
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

std::string ControlLanguage::CallLasts(const Words& words) {
    const auto lasts = words[0] == "off" ? 0 : ParseDuration(words[0]);
    if (!lasts) return ErrorText("not a duration: " + words[0]);
    modem_.state_.call.SetLasts(*lasts);
    return kOk;
}

std::string ControlLanguage::UnknownState(const Words& words) {
    const auto on = ReadOnOff(words[0]);
    if (!on) return NeedsOnOff();
    modem_.state_.call.SetUnknown(*on);
    return kOk;
}

std::string ControlLanguage::NoAddress(const Words& words) {
    const auto on = ReadOnOff(words[0]);
    if (!on) return NeedsOnOff();
    modem_.state_.call.SetNoAddress(*on);
    return kOk;
}

std::string ControlLanguage::Sms(const Words& words) {
    modem_.ReceiveSms(words[0], Join({words.begin() + 1, words.end()}));
    return kOk;
}

std::string ControlLanguage::SmsFails(const Words& words) {
    SmsFailure& failure = modem_.state_.sms_failure;
    if (words[0] == "off") {
        failure = {};
        return kOk;
    }
    const auto code = ParseInt(words[0]);
    SmsFailure wanted{code.value_or(0), 1, false};
    for (std::size_t i = 1; i < words.size(); ++i) {
        const auto times = ReadTimes(words[i]);
        if (times) {
            wanted.times = *times;
        } else if (words[i] == "prompt" || words[i] == "body") {
            wanted.at_prompt = words[i] == "prompt";
        } else {
            return ErrorText("not understood: " + words[i]);
        }
    }
    if (!code || *code < 0) return ErrorText("the code is a number");
    failure = wanted;
    return kOk;
}

std::string ControlLanguage::Store(const Words& words) {
    constexpr int kMostPlaces = 10000;
    const auto places = ParseInt(words[0]);
    if (!places || *places < 0 || *places > kMostPlaces) {
        return ErrorText("the store has 0 to 10000 places");
    }
    modem_.state_.sms.SetCapacity(*places);
    return kOk;
}

std::string ControlLanguage::SetTime(const Words& words) {
    Clock& clock = modem_.state_.clock;
    const std::string& text = words[0];
    if (text[0] == '+' || text[0] == '-') {
        const auto shift = ParseDuration(std::string_view(text).substr(1));
        if (!shift) return ErrorText("not a duration: " + text);
        clock.Shift((text[0] == '-' ? -1 : 1) * (*shift / kSecond));
        return kOk;
    }
    const auto seconds = ParseIsoTime(text);
    if (!seconds) return ErrorText("write the time as 2026-03-14T09:15:02");
    clock.Set(*seconds, modem_.state_.now);
    return kOk;
}

std::string ControlLanguage::Drive(const Words& words) {
    const auto on = ReadOnOff(words[0]);
    if (!on) return NeedsOnOff();
    if (*on && modem_.profile_.drive.empty()) return ErrorText("this profile has no drive");
    modem_.StartDrive(*on);
    return kOk;
}

std::string ControlLanguage::Answer(const Words& words) {
    const auto delay = words.size() > 2 ? ParseDuration(words[2]) : kUsualDelay;
    if (!delay) return ErrorText("not a duration: " + words[2]);
    modem_.Answer(words[0], AnswerBytes(words[1]), *delay);
    return kOk;
}

std::string ControlLanguage::Set(const Words& words) {
    if (IsLiveValue(words[0])) return ErrorText(words[0] + " is a live value, it cannot be set");
    modem_.state_.settings[words[0]] = Join({words.begin() + 1, words.end()});
    modem_.ApplySettings();
    return kOk;
}

}  // namespace sim
