// A modem on the bench: it is spoken to in whole commands, and time runs as the test says.
#pragma once

#include <string>

#include "sim/control/played_modem.h"

class BenchModem : public sim::PlayedModem {
  public:
    explicit BenchModem(const std::string& profile, bool echo = false)
        : sim::PlayedModem(sim::LoadProfile(profile)) {
        SetEcho(echo);
    }

    // Sends one command and returns all that comes within `wait`.
    std::string Ask(const std::string& command, sim::Micros wait = 2 * sim::kSecond) {
        Receive(command + "\r\n", now);
        return Wait(wait);
    }

    std::string Wait(sim::Micros wait) {
        now += wait;
        return Transmit(now);
    }

    std::string Tell(const std::string& line) { return Control(line, now); }

    sim::Micros now = 0;
};

// An answer of one information line, framed as TS 27.007 frames it.
inline std::string Answered(const std::string& line) {
    return "\r\n" + line + "\r\n\r\nOK\r\n";
}
