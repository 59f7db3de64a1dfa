// Commands of the user that run when the data call comes up or goes down: one at a time, in the
// order of the events, while the modem goes on.
#pragma once

#include <sys/types.h>

#include <deque>
#include <string>

namespace sim {

class Hooks {
  public:
    // Runs `command` with /bin/sh once those before it have ended; an empty one is passed over.
    void Run(const std::string& command);

    // To be called after SIGCHLD.
    void Reap();

  private:
    void StartNext();

    std::deque<std::string> waiting_;
    pid_t running_ = -1;
};

}  // namespace sim
