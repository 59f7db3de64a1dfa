// Chance that can be repeated: the same seed draws the same on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

#include "sim/modem/text.h"

namespace sim {

class Chance {
  public:
    explicit Chance(std::uint64_t seed) : random_(seed) {}

    // From 0 to most - 1. The standard's own distributions differ from library to library.
    std::size_t Below(std::size_t most) { return static_cast<std::size_t>(random_() % most); }
    bool Percent(std::size_t chance) { return Below(100) < chance; }
    Micros Between(Micros least, Micros most) {
        return least + static_cast<Micros>(Below(static_cast<std::size_t>(most - least) + 1));
    }

    // As often between each two neighbours of the table, which is in order.
    template <std::size_t kSize>
    Micros FromQuantiles(const Micros (&quantiles)[kSize]) {
        const std::size_t step = Below(kSize - 1);
        return Between(quantiles[step], quantiles[step + 1]);
    }

  private:
    std::mt19937_64 random_;
};

}  // namespace sim
