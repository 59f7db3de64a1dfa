#include "modemctl/log_fold.h"

namespace modemctl {

void LogFolder::Tell(const LogEvent& event) {
    output_.event(event);
    told_.push_back(event);
    if (told_.size() > longest_) told_.pop_front();
}

bool LogFolder::Continues(const LogEvent& event) const {
    if (period_ == 0) return false;
    return told_[told_.size() - period_ + pending_.size()].key == event.key;
}

// The shortest group that the event may be the first line of, once more.
bool LogFolder::Begins(const LogEvent& event) {
    for (std::size_t lines = 1; lines <= told_.size(); ++lines) {
        if (told_[told_.size() - lines].key != event.key) continue;
        period_ = lines;
        return true;
    }
    return false;
}

void LogFolder::StopRepeating() {
    if (times_ > 0) output_.repeats(period_, times_, until_);
    std::vector<LogEvent> rest;
    rest.swap(pending_);
    period_ = 0;
    times_ = 0;
    for (const LogEvent& event : rest) Tell(event);
}

void LogFolder::Take(const LogEvent& event) {
    if (!Continues(event)) {
        StopRepeating();
        if (!Begins(event)) return Tell(event);
    }
    pending_.push_back(event);
    if (pending_.size() < period_) return;
    pending_.clear();
    ++times_;
    until_ = event.when;
}

void LogFolder::Finish() {
    StopRepeating();
}

}  // namespace modemctl
