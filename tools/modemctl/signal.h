// The radio signal: which of the published numbers is a reading, and what it is called.
#pragma once

#include <optional>
#include <string>

#include "modemctl/snapshot.h"

namespace modemctl {

enum class Strength { kUnknown, kWeak, kFair, kGood };

struct Signal {
    std::optional<long long> rssi;  // dBm
    std::optional<long long> csq;   // 0 to 31
    std::optional<double> rsrp;     // dBm, on LTE
    std::optional<double> rsrq;     // dB, on LTE
    std::optional<double> ecio;     // dB
    Strength strength = Strength::kUnknown;
    int permille = 0;  // of a full bar
};

// Passes over what only looks like a reading: CSQ 99 and its -99 dBm, -125, and the 0 dBm with CSQ
// 31 that stand for an RX level that the modem left empty. The strength is that of RSRP where there
// is one, else of RSSI, else of CSQ.
Signal ReadSignal(const Statistics& statistics);

const char* StrengthWord(Strength strength);

}  // namespace modemctl
