#include "modemctl/signal.h"

#include <algorithm>
#include <cstdlib>

#include "state/published.h"

namespace modemctl {

namespace {

// A scale: where fair and good begin, and the ends of the bar.
struct Scale {
    double empty, fair, good, full;
};

constexpr Scale kRssiScale = {-113, -95, -80, -51};   // dBm
constexpr Scale kRsrpScale = {-130, -110, -95, -70};  // dBm
constexpr Scale kCsqScale = {0, 9, 17, 31};

constexpr long long kStrongestRssi = -1;  // dBm; 0 stands for no reading
constexpr long long kWeakestRssi = -124;  // -125 stands for no reading, too
constexpr long long kUnknownCsq = 99;

// A number with a fraction, and perhaps its unit behind it. The locale is never set, so the point
// is a point.
std::optional<double> Decimal(const Value& value) {
    if (!value.IsTold()) return std::nullopt;
    char* end = nullptr;
    const double number = std::strtod(value.text.c_str(), &end);
    const std::string rest = end;
    const bool is_number = end != value.text.c_str() && (rest.empty() || rest[0] == 'd');
    return is_number && number > -1000 && number < 1000 ? std::optional<double>(number)
                                                        : std::nullopt;
}

// LTE values that mean something are far below 0.
std::optional<double> Below0(std::optional<double> number) {
    return number && *number < 0 ? number : std::nullopt;
}

void Grade(const Scale& scale, double number, Signal& signal) {
    signal.strength = Strength::kWeak;
    if (number >= scale.fair) signal.strength = Strength::kFair;
    if (number >= scale.good) signal.strength = Strength::kGood;
    const double part = (number - scale.empty) / (scale.full - scale.empty);
    signal.permille = static_cast<int>(std::clamp(part, 0.0, 1.0) * 1000);
}

void TakePair(const Statistics& statistics, const char* rssi_key, const char* csq_key,
              Signal& signal) {
    const auto rssi = statistics.Get(rssi_key).Integer();
    const auto csq = statistics.Get(csq_key).Integer();
    const bool told = rssi && *rssi <= kStrongestRssi && *rssi >= kWeakestRssi;
    if (!told || (csq && *csq == kUnknownCsq && *rssi == -kUnknownCsq)) return;
    signal.rssi = rssi;
    if (csq && *csq >= 0 && *csq <= 31) signal.csq = csq;
}

}  // namespace

Signal ReadSignal(const Statistics& statistics) {
    Signal signal;
    TakePair(statistics, published::key::kCurrentRssi, published::key::kCurrentCsq, signal);
    if (!signal.rssi) {
        TakePair(statistics, published::key::kLowSpeedRssi, published::key::kLowSpeedCsq, signal);
    }
    signal.rsrp = Below0(Decimal(statistics.Get(published::key::kLteRsrp)));
    signal.rsrq = Below0(Decimal(statistics.Get(published::key::kLteRsrq)));
    signal.ecio = Decimal(statistics.Get(published::key::kCurrentEcio));
    if (signal.rsrp) {
        Grade(kRsrpScale, *signal.rsrp, signal);
    } else if (signal.rssi) {
        Grade(kRssiScale, static_cast<double>(*signal.rssi), signal);
    } else if (signal.csq) {
        Grade(kCsqScale, static_cast<double>(*signal.csq), signal);
    }
    return signal;
}

const char* StrengthWord(Strength strength) {
    switch (strength) {
        case Strength::kUnknown:
            return "unknown";
        case Strength::kWeak:
            return "weak";
        case Strength::kFair:
            return "fair";
        case Strength::kGood:
            return "good";
    }
    return "unknown";
}

}  // namespace modemctl
