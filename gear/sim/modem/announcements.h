// What the modem tells of its state without being asked: changes of the registration, as far as the
// host wants to hear of them, and of the signal.
#pragma once

#include <string>
#include <vector>

#include "sim/modem/state.h"

namespace sim {

class Announcements {
  public:
    // The state as it is counts as told.
    void Forget(const State& state) { told_ = Read(state); }

    // The lines to say now that the state may have changed.
    std::vector<std::string> News(const State& state);

  private:
    struct Told {
        int registration;
        unsigned lac, cell;
        int csq;
    };
    static Told Read(const State& state);

    Told told_{};
};

}  // namespace sim
