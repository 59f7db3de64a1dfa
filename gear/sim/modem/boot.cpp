#include "sim/modem/boot.h"

namespace sim {

namespace {

constexpr int kSimBusy = 14;
constexpr int kPleaseWait = 515;

constexpr const char* kNeedTheSim[] = {"+CPIN", "+CNUM", "+CIMI",      "+CMG",   "+CPMS",
                                       "ICCID", "^SCID", "$QCSIMSTAT", "$NWMDN", "+COPN"};

bool NeedsTheSim(const std::string& command) {
    for (const char* part : kNeedTheSim) {
        if (command.find(part) != command.npos) return true;
    }
    return false;
}

}  // namespace

void Boot::Start(Micros now, Micros length) {
    phase_ = Phase::kDeaf;
    phase_length_ = length / 3;
    next_ = now + phase_length_;
}

std::vector<std::string> Boot::Step() {
    next_ += phase_length_;
    switch (phase_) {
        case Phase::kDeaf:
            phase_ = Phase::kStarting;
            return {"RDY"};
        case Phase::kStarting:
            phase_ = Phase::kSimBusy;
            return {"+CPIN: READY"};
        case Phase::kSimBusy:
            phase_ = Phase::kDone;
            return {"SMS DONE", "PB DONE", "^SRVST: 2"};
        case Phase::kDone:
            break;
    }
    return {};
}

std::optional<Reply> Boot::Refuse(const std::string& command) {
    if (phase_ == Phase::kStarting && command != "AT" && !StartsWith(command, "ATE")) {
        return CmeError(chance_.Percent(50) ? kSimBusy : kPleaseWait);
    }
    if (phase_ == Phase::kSimBusy && NeedsTheSim(command)) return CmeError(kSimBusy);
    return std::nullopt;
}

}  // namespace sim
