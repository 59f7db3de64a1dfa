// The time after power-on: first nothing is heard, then every command is refused, then those that
// need the SIM.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/modem/chance.h"
#include "sim/modem/dialogue.h"
#include "sim/modem/text.h"

namespace sim {

class Boot {
  public:
    enum class Phase { kDeaf, kStarting, kSimBusy, kDone };

    explicit Boot(std::uint64_t seed) : chance_(seed) {}

    void Start(Micros now, Micros length);
    Phase GetPhase() const { return phase_; }
    Micros Next() const { return phase_ == Phase::kDone ? kNever : next_; }  // end of the phase
    std::vector<std::string> Step();  // into the next phase; what it says there unasked

    // What a command is told that comes too early.
    std::optional<Reply> Refuse(const std::string& command);

  private:
    Chance chance_;
    Phase phase_ = Phase::kDone;
    Micros next_ = 0;
    Micros phase_length_ = 0;
};

}  // namespace sim
