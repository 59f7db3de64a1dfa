#include "rig/modem.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace rig {

std::uint64_t Seed() {
    const char* seed = std::getenv("RIG_SEED");
    return seed == nullptr ? 1 : std::strtoull(seed, nullptr, 10);
}

Modem::Modem(Shared& memory, Port& port, const std::string& profile)
    : memory_(memory),
      port_(port),
      sim_(sim::LoadProfile(profile), Seed()),
      peer_(std::make_unique<ModemPeer>(sim_)) {}

std::string Modem::Control(const std::string& line) {
    std::string answer = Tell(line);
    EXPECT_EQ(answer.rfind("error", 0), std::string::npos) << line << ": " << answer;
    return answer;
}

void Modem::Answer(const std::string& command, const std::string& reply, Duration delay) {
    sim_.Answer(command, reply, delay.count());
}

void Modem::AnswerOnce(const std::string& command, const std::string& reply, Duration delay) {
    sim_.AnswerOnce(command, reply, delay.count());
}

void Modem::Script(ScriptPeer::Script script, Duration delay) {
    peer_ = std::make_unique<ScriptPeer>(std::move(script), delay.count());
}

void Modem::RunDue() {
    while (NextEvent() <= memory_.now) port_.Deliver(peer_->Transmit(memory_.now));
    port_.Deliver(peer_->Transmit(memory_.now));
}

void Modem::ExpectKnownCommands() const {
    if (unknown_allowed_) return;
    for (const std::string& command : sim_.Unexpected()) {
        ADD_FAILURE() << "the modem does not know the command '" << command << "'";
    }
}

}  // namespace rig
