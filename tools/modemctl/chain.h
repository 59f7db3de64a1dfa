// The chain that a link hangs on: port, SIM, registration, service, call, address, traffic. Judged
// by the files alone; modemctl why adds what the log says.
#pragma once

#include <array>
#include <string>

#include "modemctl/exit_code.h"
#include "modemctl/snapshot.h"

namespace modemctl {

enum class ChainPart { kPort, kSim, kRegistration, kService, kCall, kAddress, kTraffic };
constexpr std::size_t kChainParts = 7;

enum class Hold {
    kHolds,
    kBroken,
    kUnknown,     // nobody has said
    kNotWatched,  // with this card the daemon leaves it to others
};

struct ChainLink {
    Hold hold = Hold::kUnknown;
    std::string what;  // a few words, foreign text in them
};

struct Chain {
    std::array<ChainLink, kChainParts> links;
    // What the whole is worth.
    ExitCode verdict = kNoData;

    ChainLink& operator[](ChainPart part) { return links[static_cast<std::size_t>(part)]; }
    const ChainLink& operator[](ChainPart part) const {
        return links[static_cast<std::size_t>(part)];
    }
    // The first link that is so; kChainParts for none.
    std::size_t First(Hold hold) const;
};

const char* PartName(ChainPart part);
const char* HoldWord(Hold hold);

Chain JudgeChain(const Snapshot& snapshot, long long max_age);

}  // namespace modemctl
