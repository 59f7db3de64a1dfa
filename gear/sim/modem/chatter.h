// What modems say without being asked and without a reason that the host could see.
#pragma once

#include <string>

#include "sim/modem/chance.h"
#include "sim/modem/state.h"

namespace sim {

class Chatter {
  public:
    explicit Chatter(std::uint64_t seed) : chance_(seed) {}

    void SetGap(Micros usual_gap, Micros now);  // between two lines; 0: says nothing
    Micros Next() const { return next_; }
    std::string Take(const State& state);  // with its line ends, of which the first may be missing

    // Now and then it says something between the echo of a command and its answer.
    bool Interrupts() { return gap_ > 0 && chance_.Percent(10); }

  private:
    Chance chance_;
    Micros gap_ = 0;
    Micros next_ = kNever;
};

}  // namespace sim
