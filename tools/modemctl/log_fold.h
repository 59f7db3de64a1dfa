// Repeats folded: a line, or a group of lines, that comes again and again is told once, with how
// often and until when.
#pragma once

#include <ctime>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace modemctl {

struct LogEvent {
    std::time_t when = 0;
    std::string key;  // what makes two events repeats of each other
    std::string text;
    int tone = 0;  // for the shower
};

class LogFolder {
  public:
    struct Output {
        std::function<void(const LogEvent& event)> event;
        // The last `lines` events came `times` times more, the last time at `until`.
        std::function<void(std::size_t lines, long long times, std::time_t until)> repeats;
    };

    // Groups of at most `longest` lines; 1 folds only a line that repeats itself.
    LogFolder(std::size_t longest, Output output) : longest_(longest), output_(std::move(output)) {}

    void Take(const LogEvent& event);
    void Finish();

  private:
    void Tell(const LogEvent& event);
    bool Continues(const LogEvent& event) const;
    bool Begins(const LogEvent& event);
    void StopRepeating();

    std::size_t longest_;
    Output output_;
    std::deque<LogEvent> told_;      // the newest events that were told
    std::vector<LogEvent> pending_;  // the start of a repeat, not yet all of it
    std::size_t period_ = 0;         // lines in the group; 0: nothing repeats
    long long times_ = 0;
    std::time_t until_ = 0;
};

}  // namespace modemctl
