// The program under test as a story sees it: how it is started, signals, its calls, its end.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "rig/daemon_process.h"
#include "rig/protocol.h"

namespace rig {

class Daemon {
  public:
    explicit Daemon(std::vector<std::string> arguments);

    // --- Before the start ---------------------------------------------------------------------
    void SetProgram(const std::string& path) { program_ = path; }  // another one than the daemon
    void SetEnvironment(const std::string& name, const std::string& value);  // TZ is UTC else
    void SetProcessId(int id) { memory_.process_id = id; }
    int ProcessId() const { return memory_.process_id; }
    // Real time between two of its calls after which it counts as hanging.
    void SetPatience(std::chrono::seconds fair) { process_.SetPatience(fair); }
    void OnTerminal() { on_terminal_ = true; }  // a person started it

    // --- While it runs ------------------------------------------------------------------------
    bool Running() const { return started_ && process_.Running(); }
    void Signal(int number);  // at once: a sleep is cut short
    // Before its n-th call of the C library that the rig takes, counted from 1.
    void SignalAtCall(std::uint64_t call, int number);
    std::uint64_t Calls() const { return memory_.calls; }
    // Of them, those that enter the kernel; reading the clock does not.
    std::uint64_t KernelCalls() const { return memory_.calls - memory_.clock_reads; }
    // Blocks taken from the heap so far, and those not given back. 0 under a sanitizer.
    std::uint64_t Allocations() const { return memory_.allocations; }
    std::uint64_t BlocksHeld() const { return memory_.allocations - memory_.releases; }

    // --- Its end ------------------------------------------------------------------------------
    void Kill();               // as kill -9 does, where it stands
    int ExitStatus() const;    // -1 while it runs, or when a signal ended it
    int EndingSignal() const;  // 0 for none
    void ExpectEndBySignal() { end_by_signal_allowed_ = true; }
    std::string ErrorOutput();  // standard error; asking for it allows it

  private:
    friend class World;

    Shared& Memory() { return memory_; }
    std::vector<std::string> Environment() const;
    void Start();
    void StartAgain();  // as another process
    void Launch();
    // Until its next request. Trouble fails the test, and then it no longer runs.
    void Resume();
    void TakeTrouble(const DaemonTrouble& trouble);
    void ExpectManners() const;  // before it is stopped, see manners.h
    void ExpectGoodEnd();

    DaemonProcess process_;
    Shared& memory_;
    std::string program_;
    std::vector<std::string> arguments_;
    std::map<std::string, std::string> environment_;
    bool on_terminal_ = false;
    bool started_ = false;
    bool crashed_ = false;
    bool end_by_signal_allowed_ = false;
    bool error_output_allowed_ = false;
};

}  // namespace rig
