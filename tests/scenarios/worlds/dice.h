// Chance that can be repeated: the same seed draws the same numbers on every machine.
#pragma once

#include <chrono>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>

namespace worlds {

using Duration = std::chrono::microseconds;

class Dice {
  public:
    explicit Dice(std::uint64_t seed) : random_(seed) {}

    // From 0 to most - 1. The standard's own distributions differ from library to library.
    std::size_t Below(std::size_t most) { return static_cast<std::size_t>(random_() % most); }
    int Between(int least, int most) {
        return least + static_cast<int>(Below(static_cast<std::size_t>(most - least) + 1));
    }
    Duration Between(Duration least, Duration most) {
        const auto range = static_cast<std::size_t>((most - least).count()) + 1;
        return least + Duration(static_cast<std::int64_t>(Below(range)));
    }
    bool Chance(std::size_t percent) { return Below(100) < percent; }

    template <typename Container>
    auto OneOf(const Container& all) {
        return *std::next(std::begin(all), static_cast<std::ptrdiff_t>(Below(std::size(all))));
    }

    // Any bytes but NUL.
    std::string Noise(std::size_t length) {
        std::string noise;
        while (noise.size() < length) noise += static_cast<char>(1 + Below(255));
        return noise;
    }

  private:
    std::mt19937_64 random_;
};

}  // namespace worlds
