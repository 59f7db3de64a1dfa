// What the rooms of the daemon touch, replaced for unit tests: the system log, the shell, sleeps
// and the clock are caught at link time, and a scripted modem answers on a socket pair.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace fake {

struct World {
    std::vector<std::string> log;                // system log lines, in order
    std::vector<int> log_priorities;             // one for each line
    std::string log_name;                        // what openlog() was told
    std::vector<std::string> shell;              // command lines given to system()
    std::map<std::string, int> shell_status;     // result of a command line; 0 when not listed
    std::vector<std::string> heard;              // what the modem heard: one entry for each write
    std::map<std::string, std::string> answers;  // command -> raw bytes the modem sends back
    std::function<void(std::int64_t)> on_sleep;  // called with the new time after every sleep
    std::size_t longest_write = 0;               // bytes that one write() takes; 0 for all
    std::int64_t now_us = 1773479700000000;      // 2026-03-14 09:15:00 UTC
    std::int64_t slept_us = 0;                   // total of all sleeps

    bool Logged(const std::string& line) const;  // exactly this line
    bool LoggedContaining(const std::string& part) const;
    int CountLogged(const std::string& line) const;
    // Commands as the modem read them: writes joined up to each carriage return, zeros and line
    // feeds dropped.
    std::vector<std::string> Commands() const;

    // Bytes that wait on the port before anything is sent.
    void Waiting(const std::string& bytes);
};

// The world of the running test.
World& Current();

}  // namespace fake
