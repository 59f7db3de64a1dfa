// The modem at the other end of the port: a simulated one, or a function in its place.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "rig/duration.h"
#include "rig/peer.h"
#include "rig/port.h"
#include "rig/protocol.h"
#include "sim/control/played_modem.h"

namespace rig {

// The seed of this run: environment RIG_SEED, 1 else.
std::uint64_t Seed();

class Modem {
  public:
    Modem(Shared& memory, Port& port, const std::string& profile);

    // A line of its control language ("signal 12", "sms +15551234 \"text\""). An "error" fails the
    // test, unless it is only Told. Returns the answer.
    std::string Control(const std::string& line);
    std::string Tell(const std::string& line) { return sim_.Control(line, memory_.now); }

    // The answer to a command, byte for byte; see sim::PlayedModem.
    void Answer(const std::string& command, const std::string& reply, Duration delay = kSoon);
    void AnswerOnce(const std::string& command, const std::string& reply, Duration delay = kSoon);
    void Forget(const std::string& command) { sim_.Forget(command); }
    void Say(const std::string& bytes) { port_.Deliver(bytes); }  // raw, now, unasked
    // A function answers in its place: command line to raw bytes, none for silence.
    void Script(ScriptPeer::Script script, Duration delay = kSoon);
    void Replace(std::unique_ptr<Peer> peer) { peer_ = std::move(peer); }  // by anything else

    // Else a command that it does not know fails the test.
    void AllowUnknownCommands() { unknown_allowed_ = true; }
    void OnCall(std::function<void(bool up)> action) { sim_.on_call = std::move(action); }
    sim::PlayedModem& Sim() { return sim_; }  // all else: its state, what it heard and sent

  private:
    friend class World;

    static constexpr Duration kSoon{sim::kUsualDelay};

    Micros NextEvent() const { return peer_->NextEvent(); }
    void Receive(const std::string& bytes, Micros at) { peer_->Receive(bytes, at); }
    void RunDue();
    void ExpectKnownCommands() const;

    Shared& memory_;
    Port& port_;
    sim::PlayedModem sim_;
    std::unique_ptr<Peer> peer_;
    bool unknown_allowed_ = false;
};

}  // namespace rig
