#include "sim/modem/drive.h"

namespace sim {

void Drive::Start(Micros now) {
    running_ = Exists();
    started_ = now;
    step_ = 0;
}

Micros Drive::Next() const {
    return running_ ? started_ + steps_[step_].at : kNever;
}

std::string Drive::Take(Micros now) {
    const DriveStep& step = steps_[step_++];
    if (step.control == "repeat") {
        Start(now);
        return "";
    }
    running_ = step_ < steps_.size();
    return step.control;
}

}  // namespace sim
