// How long the modem takes to answer.
#pragma once

#include <optional>
#include <string>

#include "sim/modem/chance.h"
#include "sim/modem/dialogue.h"

namespace sim {

// Polite: what the profile says, which is a few milliseconds for most; always the same. Prompt:
// what modems were seen to take on a good day. Slow: on a bad one.
enum class Pace { kPolite, kPrompt, kSlow };

std::optional<Pace> ReadPace(const std::string& word);

class Pacer {
  public:
    explicit Pacer(std::uint64_t seed) : chance_(seed) {}

    void Set(Pace pace) { pace_ = pace; }
    // `command` is empty when it is a message's text that is answered.
    Micros DelayOf(const std::string& command, const Reply& reply);
    // A text that comes before the prompt is lost by some modems, now and then.
    bool LosesEarlyText() { return pace_ != Pace::kPolite && chance_.Percent(30); }

  private:
    Chance chance_;
    Pace pace_ = Pace::kPolite;
};

}  // namespace sim
