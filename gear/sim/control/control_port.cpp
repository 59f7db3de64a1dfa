// The words of the control language that work on the port, and those that only report.
#include "sim/control/control.h"
#include "sim/modem/values.h"

namespace sim {

std::string ControlLanguage::Silence(const Words& words) {
    const auto length = ParseDuration(words[0]);
    if (!length) return "error: not a duration: " + words[0];
    modem_.silent_until_ = modem_.state_.now + *length;
    return "ok";
}

std::string ControlLanguage::Garbage(const Words& words) {
    constexpr int kMost = 1 << 20;
    const auto count = ParseInt(words[0]);
    if (!count || *count < 0 || *count > kMost) return "error: 0 to 1048576 bytes";
    std::string bytes;
    for (int i = 0; i < *count; ++i) bytes += static_cast<char>(modem_.noise_() >> 56);
    modem_.Send(bytes);
    return "ok";
}

std::string ControlLanguage::Unplug(const Words&) {
    modem_.Unplug();
    return "ok";
}

std::string ControlLanguage::Plug(const Words&) {
    modem_.Plug();
    return "ok";
}

std::string ControlLanguage::Say(const Words& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
    modem_.SendUnsolicited(line);
    return "ok";
}

std::string ControlLanguage::Forget(const Words& words) {
    modem_.Forget(words[0]);
    return "ok";
}

std::string ControlLanguage::Echo(const Words& words) {
    if (words[0] != "on" && words[0] != "off") return "error: say on or off";
    modem_.SetEcho(words[0] == "on");
    return "ok";
}

std::string ControlLanguage::Status(const Words&) {
    const State& s = modem_.state_;
    const auto value = [&s](const char* name) { return Value(s, name); };
    const auto or_dash = [](const std::string& text) { return text.empty() ? "-" : text; };
    std::string text = "ok: profile: " + modem_.profile_.name;
    text += "\nplugged: " + std::string(modem_.plugged_ ? "yes" : "no");
    text += "\nsignal: " + value("csq") + "," + value("ber") + " (" + value("rssi") + " dBm)";
    text += "\nregistration: " + std::string(RegistrationName(s.radio.registration));
    text += "\noperator: " + or_dash(value("operator-now"));
    text += "\nservice: " + value("service");
    text += "\ncell: " + value("lac") + " " + value("cell");
    text += "\nsim: " + value("sim");
    text += "\ncall: " + value("call-state") + " " + value("call-duration");
    text += "\nmessages: " + value("sms-used") + " of " + value("sms-capacity") + ", " +
            std::to_string(s.sms.Waiting()) + " waiting, " + std::to_string(s.sent.size()) +
            " sent";
    text += "\nclock: " + value("date") + " " + value("time");
    text += "\nsilent: " + std::string(modem_.Silent() ? "yes" : "no");
    text += "\ndrive: " + std::string(modem_.driving_ ? "on" : "off");
    text += "\ncommands heard: " + std::to_string(modem_.heard_.size());
    text += "\ncommands unknown: " + std::to_string(modem_.unexpected_.size());
    return text;
}

std::string ControlLanguage::Heard(const Words&) {
    std::string text;
    for (const HeardCommand& heard : modem_.heard_) {
        const Micros at = heard.at - modem_.heard_.front().at;
        text += Print("\n%8lld.%03lld ", static_cast<long long>(at / kSecond),
                      static_cast<long long>(at / kMillisecond % 1000)) +
                heard.text;
    }
    return text.empty() ? "ok" : "ok: " + text.substr(1);
}

std::string ControlLanguage::Sent(const Words&) {
    std::string text;
    for (const SentSms& sms : modem_.state_.sent) text += "\n" + sms.to + " " + sms.text;
    return text.empty() ? "ok" : "ok: " + text.substr(1);
}

std::string ControlLanguage::Help(const Words&) {
    std::string text;
    for (const Verb& verb : Verbs()) text += Print("\n  %-13s %s", verb.name, verb.usage);
    return "ok: words" + text;
}

}  // namespace sim
