// Answers that a test or a person dictates, in place of what the modem would say.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/modem/dialogue.h"
#include "sim/modem/text.h"

namespace sim {

class Overrides {
  public:
    // The command is compared as NormaliseCommand leaves it; a '*' at its end stands for whatever
    // follows.
    void Always(const std::string& command, std::string reply, Micros delay);
    void Once(const std::string& command, std::string reply, Micros delay);
    void Forget(const std::string& command);

    // The answer to a normalised command, used up when it was for once. An exact command goes
    // before a pattern; what has nothing left to say is passed over.
    std::optional<Reply> Take(const std::string& command);

  private:
    struct Dictated {
        std::string reply;
        Micros delay;
    };
    struct Entry {
        std::deque<Dictated> once;
        std::optional<Dictated> always;
        bool HasReply() const { return !once.empty() || always; }
    };

    Entry& EntryOf(const std::string& command);
    Entry* Find(const std::string& command);

    std::unordered_map<std::string, Entry> entries_;
    std::vector<std::string> patterns_;  // those keys of entries_ that end in '*'
};

}  // namespace sim
