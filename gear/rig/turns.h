// How the two sides hand each other the turn. Both run on one processor: that makes a hand-over a
// plain switch of processes, ten times cheaper than waking another processor.
#pragma once

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "rig/protocol.h"

namespace rig {

inline Turn OtherThan(Turn side) {
    return side == Turn::kDaemon ? Turn::kScenario : Turn::kDaemon;
}

inline bool HasTurn(const Shared& shared, Turn side) {
    return shared.turn.load(std::memory_order_acquire) == side;
}

inline void GiveTurn(Shared& shared, Turn from) {
    shared.turn.store(OtherThan(from), std::memory_order_release);
    syscall(SYS_futex, &shared.turn, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

// Waits at most `longest` (nullptr: no limit). True when it is this side's turn.
inline bool AwaitTurn(const Shared& shared, Turn side, const timespec* longest) {
    if (!HasTurn(shared, side)) {
        syscall(SYS_futex, &shared.turn, FUTEX_WAIT, OtherThan(side), longest, nullptr, 0);
    }
    return HasTurn(shared, side);
}

// Binds a process (0: the caller) to one processor; below 0 to any. Failing does no harm.
inline void BindToProcessor(pid_t process, int processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    for (int i = 0; i < CPU_SETSIZE; ++i) {
        if (processor < 0 || i == processor) CPU_SET(static_cast<unsigned>(i), &set);
    }
    sched_setaffinity(process, sizeof(set), &set);
}

}  // namespace rig
