// The program's loop: a modem, its pseudo terminal, its control socket and its hooks, until a
// signal ends it.
#pragma once

#include <poll.h>

#include <cstdio>
#include <memory>
#include <string>

#include "sim/control/played_modem.h"
#include "sim/program/control_socket.h"
#include "sim/program/hooks.h"
#include "sim/program/pty_port.h"

namespace sim {

struct RunOptions {
    std::string profile = "generic";
    std::string link;
    std::string control;     // path of the control socket
    std::string log;         // path; empty: no log
    std::string on_call_up;  // shell commands
    std::string on_call_down;
    std::uint64_t seed = 1;
    bool speak_up = false;
};

class Runner {
  public:
    explicit Runner(const RunOptions& options);
    ~Runner();
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    // Prints the terminal's path, then serves until SIGINT, SIGTERM or SIGHUP.
    void Run();

  private:
    bool TakeSignals();  // false: time to end
    void ServePort(short events);
    void Transmit();
    void FollowPlug();
    void Log(char direction, const std::string& text);

    RunOptions options_;
    PlayedModem modem_;
    PtyPort port_;
    ControlSocket control_;
    Hooks hooks_;
    int signals_ = -1;
    std::FILE* log_ = nullptr;
};

}  // namespace sim
