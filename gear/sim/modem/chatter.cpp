#include "sim/modem/chatter.h"

#include <iterator>

#include "sim/modem/dialogue.h"

namespace sim {

namespace {

constexpr const char* kLines[] = {"RDY",        "+CPIN: READY", "SMS DONE",
                                  "PB DONE",    "^SRVST: 2",    "^BOOT:32158514,0,0,0,75",
                                  "^MODE: 5,4", "#QSS: 1",      "$QCSIMSTAT: 1, SIM INIT COMPLETED",
                                  "RING"};

}  // namespace

void Chatter::SetGap(Micros usual_gap, Micros now) {
    if (usual_gap == gap_) return;
    gap_ = usual_gap;
    next_ = gap_ > 0 ? now + chance_.Between(1, 2 * gap_) : kNever;
}

std::string Chatter::Take(const State& state) {
    next_ = state.now + chance_.Between(1, 2 * gap_);
    const Radio& radio = state.radio;
    const std::size_t chosen = chance_.Below(std::size(kLines) + 2);
    std::string line;
    if (chosen < std::size(kLines)) {
        line = kLines[chosen];
    } else if (chosen == std::size(kLines)) {
        line = "^RSSI: " + std::to_string(radio.csq);
    } else {
        line = Print("+CREG: %d,\"%04X\",\"%08X\"", static_cast<int>(radio.registration), radio.lac,
                     radio.cell);
    }
    const std::string framed = FrameUnsolicited(line);
    return chance_.Percent(25) ? framed.substr(2) : framed;
}

}  // namespace sim
