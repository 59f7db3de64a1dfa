// The daemon's process under the preload library, and the turns that it takes with the scenario.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "machine/fair_clock.h"
#include "rig/protocol.h"

namespace rig {

// The daemon neither makes a call nor lets time pass, or it died without a word.
class DaemonTrouble : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class DaemonProcess {
  public:
    DaemonProcess();
    ~DaemonProcess();  // kills the process if it still runs
    DaemonProcess(const DaemonProcess&) = delete;
    DaemonProcess& operator=(const DaemonProcess&) = delete;

    // All zero at first; to be used only while it is the scenario's turn.
    Shared& Memory() { return *memory_; }

    struct Launching {
        std::string program;                   // the file
        std::vector<std::string> arguments;    // from argv[0]
        std::vector<std::string> environment;  // NAME=value
        bool on_terminal = false;              // standard error is a terminal
    };
    // Starts it, up to its first request, Request::kHello. When one has ended, the next may start.
    void Launch(const Launching& launching);

    // Gives the daemon the turn and waits for its next request. Throws DaemonTrouble. After
    // Request::kExiting the process is gone.
    Request Resume();

    // How long it may go without a call, on a FairClock; 20 s at first.
    void SetPatience(std::chrono::seconds patience) { patience_ = patience; }

    void Kill();  // with SIGKILL, between two calls

    bool Running() const { return process_ > 0; }
    pid_t Id() const { return process_; }  // the kernel's, not the one that the daemon sees
    // The status that waitpid gave.
    int WaitStatus() const { return wait_status_; }

    // What it has written so far.
    std::string Output();
    std::string ErrorOutput();

  private:
    void AwaitRequest();
    void CheckProgress();
    void Reap();
    [[noreturn]] void GiveUp(const std::string& why);
    [[noreturn]] void BecomeDaemon(const Launching& launching, int error_fd);

    Shared* memory_ = nullptr;
    int memory_fd_ = -1;
    int output_fd_ = -1;
    int error_fd_ = -1;
    int terminal_fd_ = -1;  // the master's side
    std::string terminal_text_;
    pid_t process_ = -1;
    int wait_status_ = 0;

    // Signs of life at the last look, and since when they stand still.
    std::uint64_t seen_calls_ = 0;
    Micros seen_now_ = 0;
    std::chrono::seconds patience_{20};
    machine::FairClock clock_;
    double calls_since_ = 0;
    double now_since_ = 0;
};

}  // namespace rig
