// Simulated time, and what a story has planned for it. Time moves only while the daemon sleeps.
#pragma once

#include <cstdint>
#include <functional>
#include <queue>
#include <string>
#include <vector>

#include "rig/duration.h"
#include "rig/protocol.h"
#include "rig/trace.h"

namespace rig {

using Action = std::function<void()>;

class Clock {
  public:
    Clock(Shared& memory, Trace& trace);

    Duration Now() const { return Duration(memory_.now); }  // since the program's start
    std::int64_t WallSeconds() const;                       // since 1970
    void Set(const std::string& utc);  // the wall clock, "2026-03-14 09:15:00"; before the start
    void Jump(Duration distance);      // the wall clock; the daemon's sleeps do not notice

    // What happens at one time happens in the order in which it was planned, before the modem's
    // part.
    void At(Duration since_start, Action action);
    void After(Duration from_now, Action action) { At(Now() + from_now, std::move(action)); }
    void Every(Duration period, Action action);  // first after one period

  private:
    friend class World;

    struct Plan {
        Micros at;
        std::uint64_t order;
        Action action;
        bool operator>(const Plan& other) const {
            return at != other.at ? at > other.at : order > other.order;
        }
    };

    Micros NextEvent() const { return plans_.empty() ? kNever : plans_.top().at; }
    void RunDue();

    Shared& memory_;
    Trace& trace_;
    std::priority_queue<Plan, std::vector<Plan>, std::greater<>> plans_;
    std::uint64_t plan_count_ = 0;
};

}  // namespace rig
