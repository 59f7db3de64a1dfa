// What stands at the other end of the daemon's port.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "rig/protocol.h"
#include "sim/modem/modem.h"

namespace rig {

class Peer {
  public:
    virtual ~Peer() = default;
    virtual void Receive(std::string_view bytes, Micros now) = 0;
    // When it next has something to do; kNever when idle.
    virtual Micros NextEvent() const = 0;
    // Bytes that it sends up to now.
    virtual std::string Transmit(Micros now) = 0;
};

// The simulated modem.
class ModemPeer : public Peer {
  public:
    explicit ModemPeer(sim::Modem& modem) : modem_(modem) {}
    void Receive(std::string_view bytes, Micros now) override { modem_.Receive(bytes, now); }
    Micros NextEvent() const override { return modem_.NextEvent(); }
    std::string Transmit(Micros now) override { return modem_.Transmit(now); }

  private:
    sim::Modem& modem_;
};

// A function from a command line to the raw bytes of the answer. NUL bytes and line feeds are
// ignored, a carriage return ends a line.
class ScriptPeer : public Peer {
  public:
    using Script = std::function<std::string(const std::string& command)>;
    ScriptPeer(Script script, Micros delay) : script_(std::move(script)), delay_(delay) {}
    void Receive(std::string_view bytes, Micros now) override;
    Micros NextEvent() const override { return answers_.empty() ? kNever : answers_.front().at; }
    std::string Transmit(Micros now) override;

  private:
    struct Answer {
        Micros at;
        std::string bytes;
    };
    Script script_;
    Micros delay_;
    std::string line_;
    std::deque<Answer> answers_;
};

}  // namespace rig
