// The wire to the host. At a given rate bytes arrive one after the other, and the host's receiver
// tells of them a few at a time.
#pragma once

#include <string>
#include <string_view>

#include "sim/modem/text.h"

namespace sim {

class Line {
  public:
    void SetRate(int bits_per_second);  // 0: everything arrives at once
    bool HasRate() const { return byte_time_ > 0; }
    void Put(std::string_view bytes, Micros now);
    void Clear() { waiting_.clear(); }

    Micros Next() const;           // when bytes arrive; kNever when none are under way
    std::string Take(Micros now);  // those that have arrived

  private:
    Micros byte_time_ = 0;
    std::string waiting_;
    Micros first_at_ = 0;  // when the first of them arrives
};

}  // namespace sim
