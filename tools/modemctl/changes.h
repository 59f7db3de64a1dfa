// What has changed between two looks at the files, as events in words.
#pragma once

#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "modemctl/chain.h"
#include "modemctl/json.h"
#include "modemctl/log_source.h"
#include "modemctl/snapshot.h"
#include "modemctl/terminal.h"

namespace modemctl {

struct Change {
    std::time_t when = 0;
    std::string name;  // what has changed: "registration", "call", "signal", ...; "log" for a line
    std::string from, to;
    Tone tone = Tone::kPlain;

    // Foreign text in it.
    std::string Words() const;
};

class ChangeFinder {
  public:
    // Signals that differ by less than `signal_step` dB are the same.
    explicit ChangeFinder(long long signal_step) : signal_step_(signal_step) {}

    // The first look gives one change, named "start".
    std::vector<Change> Look(const Snapshot& snapshot, const Chain& chain);

    // What is so now: name to value.
    const std::map<std::string, std::string>& State() const { return state_; }

  private:
    std::string SignalState(const Snapshot& snapshot) const;

    const long long signal_step_;
    bool looked_ = false;
    std::map<std::string, std::string> state_;
};

Change ChangeOf(const LogRecord& record);

// One line for a program, with the whole state, so that each message can stand alone.
std::string ChangeDocument(const Change& change, const std::map<std::string, std::string>& state);

}  // namespace modemctl
