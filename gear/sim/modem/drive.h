// The drive through town: a timetable of what happens to the modem on its way.
#pragma once

#include <string>
#include <vector>

#include "sim/modem/text.h"

namespace sim {

struct DriveStep {
    Micros at;            // since the start of the drive
    std::string control;  // a line of the control language, or "repeat": from the start again
};

class Drive {
  public:
    explicit Drive(std::vector<DriveStep> steps) : steps_(std::move(steps)) {}  // in order of time

    bool Exists() const { return !steps_.empty(); }
    void Start(Micros now);
    void Stop() { running_ = false; }
    bool Running() const { return running_; }

    Micros Next() const;           // when the next step is due; kNever when not on the way
    std::string Take(Micros now);  // the line of the step that is due; empty for none

  private:
    std::vector<DriveStep> steps_;
    bool running_ = false;
    Micros started_ = 0;
    std::size_t step_ = 0;
};

}  // namespace sim
