#include "sim/modem/announcements.h"

#include <utility>

namespace sim {

namespace {

std::string RegistrationLine(const char* name, int mode, const Radio& radio) {
    std::string line = Print("%s: %d", name, static_cast<int>(radio.registration));
    if (mode == 2 && radio.IsRegistered()) {
        line += Print(",\"%04X\",\"%08X\"", radio.lac, radio.cell);
    }
    return line;
}

}  // namespace

std::vector<std::string> Announcements::News(const State& state) {
    const Told before = told_;
    told_ = Read(state);
    const bool registered = before.registration != told_.registration;
    const bool moved = before.lac != told_.lac || before.cell != told_.cell;
    std::vector<std::string> lines;
    const std::pair<const char*, int> kModes[] = {
        {"+CREG", state.modes.creg}, {"+CGREG", state.modes.cgreg}, {"+CEREG", state.modes.cereg}};
    for (const auto& [name, mode] : kModes) {
        if (mode == 0 || !(registered || (mode == 2 && moved))) continue;
        lines.push_back(RegistrationLine(name, mode, state.radio));
    }
    if (state.IsOn("speak-up") && before.csq != told_.csq) {
        lines.push_back("^RSSI: " + std::to_string(told_.csq));
    }
    return lines;
}

Announcements::Told Announcements::Read(const State& state) {
    const Radio& radio = state.radio;
    return {static_cast<int>(radio.registration), radio.lac, radio.cell, radio.csq};
}

}  // namespace sim
