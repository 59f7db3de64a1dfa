// What the modem tells of itself.
#include "sim/control/words.h"
#include "sim/modem/values.h"

namespace sim {

namespace {

std::string Status(PlayedModem& modem, const Words&) {
    const State& s = modem.GetState();
    const auto value = [&s](const char* name) { return Value(s, name); };
    const auto or_dash = [](const std::string& text) { return text.empty() ? "-" : text; };
    std::string text = "ok: profile: " + modem.Name();
    text += "\nplugged: " + std::string(modem.Plugged() ? "yes" : "no");
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
    text += "\nsilent: " + std::string(modem.Silent() ? "yes" : "no");
    text += "\ndrive: " + std::string(modem.GetDrive().Running() ? "on" : "off");
    text += "\ncommands heard: " + std::to_string(modem.Heard().size());
    text += "\ncommands unknown: " + std::to_string(modem.Unexpected().size());
    return text;
}

std::string Heard(PlayedModem& modem, const Words&) {
    std::string text;
    for (const HeardCommand& heard : modem.Heard()) {
        const Micros at = heard.at - modem.Heard().front().at;
        text += Print("\n%8lld.%03lld ", static_cast<long long>(at / kSecond),
                      static_cast<long long>(at / kMillisecond % 1000)) +
                heard.text;
    }
    return text.empty() ? "ok" : "ok: " + text.substr(1);
}

std::string Sent(PlayedModem& modem, const Words&) {
    std::string text;
    for (const SentSms& sms : modem.SentMessages()) text += "\n" + sms.to + " " + sms.text;
    return text.empty() ? "ok" : "ok: " + text.substr(1);
}

}  // namespace

const std::vector<Verb>& ReportWords() {
    static const std::vector<Verb> verbs = {
        {"status", "                       the state of the modem", 0, 0, &Status},
        {"heard", "                       the commands heard so far", 0, 0, &Heard},
        {"sent", "                       the messages the host has sent", 0, 0, &Sent},
    };
    return verbs;
}

}  // namespace sim
