// The radio network: what the antenna sees, and the SIM.
#include "sim/control/words.h"

namespace sim {

namespace {

std::string Signal(PlayedModem& modem, const Words& words) {
    const auto level = ParseInt(words[0]);
    const auto ber = words.size() > 1 ? ParseInt(words[1]) : modem.Fate().radio.ber;
    if (!level || *level < 0 || (*level > 31 && *level != 99)) {
        return ErrorText("signal is 0 to 31, or 99");
    }
    if (!ber || *ber < 0 || (*ber > 7 && *ber != 99)) return ErrorText("BER is 0 to 7, or 99");
    modem.Fate().radio.csq = *level;
    modem.Fate().radio.ber = *ber;
    return kOk;
}

std::string Register(PlayedModem& modem, const Words& words) {
    const std::pair<const char*, Registration> kStates[] = {
        {"home", Registration::kHome},       {"roaming", Registration::kRoaming},
        {"denied", Registration::kDenied},   {"searching", Registration::kSearching},
        {"unknown", Registration::kUnknown}, {"no", Registration::kNotSearching},
    };
    for (const auto& [name, state] : kStates) {
        if (words[0] != name) continue;
        modem.Fate().radio.Register(state);
        return kOk;
    }
    return ErrorText("register home, roaming, denied, searching, unknown or no");
}

std::string Deregister(PlayedModem& modem, const Words&) {
    modem.Fate().radio.Register(Registration::kNotSearching);
    return kOk;
}

std::string Cell(PlayedModem& modem, const Words& words) {
    const auto lac = ParseInt(words[0], 16);
    const auto cell = ParseInt(words[1], 16);
    if (!lac || *lac < 0 || *lac > 0xFFFF) return ErrorText("LAC is 0 to FFFF");
    if (!cell || *cell < 0 || *cell > 0xFFFFFFF) return ErrorText("CELL is 0 to FFFFFFF");
    modem.Fate().radio.lac = static_cast<unsigned>(*lac);
    modem.Fate().radio.cell = static_cast<unsigned>(*cell);
    return kOk;
}

std::string SetSim(PlayedModem& modem, const Words& words) {
    for (const Sim sim : {Sim::kReady, Sim::kAbsent, Sim::kLocked}) {
        if (words[0] != SimName(sim)) continue;
        modem.Fate().radio.Insert(sim);
        return kOk;
    }
    return ErrorText("the SIM is ready, absent or locked");
}

std::string Service(PlayedModem& modem, const Words& words) {
    const std::string text = Join(words);
    Radio& radio = modem.Fate().radio;
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

std::string SetTime(PlayedModem& modem, const Words& words) {
    Clock& clock = modem.Fate().clock;
    const std::string& text = words[0];
    if (text[0] == '+' || text[0] == '-') {
        const auto shift = ParseDuration(std::string_view(text).substr(1));
        if (!shift) return ErrorText("not a duration: " + text);
        clock.Shift((text[0] == '-' ? -1 : 1) * (*shift / kSecond));
        return kOk;
    }
    const auto seconds = ParseIsoTime(text);
    if (!seconds) return ErrorText("write the time as 2026-03-14T09:15:02");
    clock.Set(*seconds, modem.Fate().now);
    return kOk;
}

}  // namespace

const std::vector<Verb>& RadioWords() {
    static const std::vector<Verb> verbs = {
        {"signal", "LEVEL [BER]            0 to 31, or 99 for not known", 1, 2, &Signal},
        {"register", "home|roaming|denied|searching|unknown|no", 1, 1, &Register},
        {"deregister", "                     lose the network without looking for it", 0, 0,
         &Deregister},
        {"cell", "LAC CELL               move to this cell (hexadecimal)", 2, 2, &Cell},
        {"sim", "ready|absent|locked", 1, 1, &SetSim},
        {"service", "lte|hspa|wcdma|edge|gsm|none|TEXT", 1, 20, &Service},
        {"clock", "2026-03-14T09:15:02 (UTC), or +SECONDS, -SECONDS", 1, 1, &SetTime},
    };
    return verbs;
}

}  // namespace sim
