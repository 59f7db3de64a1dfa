// Why there is no link: the chain, the log, and a table of causes put together.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "modemctl/chain.h"
#include "modemctl/log_facts.h"
#include "modemctl/snapshot.h"

namespace modemctl {

// What a cause is judged by.
struct Case {
    const Snapshot& snapshot;
    const Chain& chain;
    const LogFacts& log;
    std::time_t now;
    long long max_age;

    bool Holds(ChainPart part) const { return chain[part].hold == Hold::kHolds; }
    bool IsBroken(ChainPart part) const { return chain[part].hold == Hold::kBroken; }
    Value Get(const char* key) const { return snapshot.statistics.Get(key); }
    // Newer lines than this belong to what is going on now: two restarts of the call apart.
    bool IsRecent(const char* format) const { return log.IsRecent(format, now, 100); }
};

struct Cause {
    const char* id;  // for scripts, and never changed
    ChainPart part;
    bool (*applies)(const Case& the_case);
    const char* why;                    // one or two sentences
    std::vector<const char*> evidence;  // formats of log lines
    std::string (*next)(const Case& the_case);
    const char* help;  // what a person can do
};

// In the order in which they are tried, which is that of the chain; the special ones first.
const std::vector<Cause>& AllCauses();

struct Proof {
    std::string text;  // what the daemon said
    std::time_t first = 0, last = 0;
    int times = 0;
};

struct Diagnosis {
    Snapshot snapshot;
    Chain chain;                   // with what the log adds
    const Cause* cause = nullptr;  // null: nothing is broken, or nobody knows what
    std::vector<Proof> proofs;
    std::string next;
    int second_copies = 0;  // starts that found another copy, in the last hour
};

Diagnosis Diagnose(const Snapshot& snapshot, const std::vector<LogRecord>& records,
                   long long max_age);

}  // namespace modemctl
