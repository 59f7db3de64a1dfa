#include "modemctl/tones.h"

#include <cstddef>

namespace modemctl {

namespace {

// One entry for each value of the enumeration, in its order.
constexpr Tone kOfLevel[] = {Tone::kDim, Tone::kPlain, Tone::kGood, Tone::kFair, Tone::kBad};
constexpr Tone kOfHold[] = {Tone::kGood, Tone::kBad, Tone::kDim, Tone::kDim};
constexpr Tone kOfStrength[] = {Tone::kDim, Tone::kBad, Tone::kFair, Tone::kGood};
constexpr Tone kOfHealth[] = {Tone::kGood, Tone::kFair, Tone::kBad, Tone::kDim};

}  // namespace

Tone ToneOf(LogLevel level) {
    return kOfLevel[static_cast<std::size_t>(level)];
}

Tone ToneOf(Hold hold) {
    return kOfHold[static_cast<std::size_t>(hold)];
}

Tone ToneOf(Strength strength) {
    return kOfStrength[static_cast<std::size_t>(strength)];
}

Tone ToneOf(Health health) {
    return kOfHealth[static_cast<std::size_t>(health)];
}

}  // namespace modemctl
