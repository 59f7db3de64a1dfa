#include "sim/modem/pace.h"

#include <algorithm>

namespace sim {

namespace {

constexpr Micros Milliseconds(Micros count) {
    return count * kMillisecond;
}

// Ten commands in a hundred fall between each two neighbours; the last ten are the long tail.
constexpr Micros kPromptDelays[] = {Milliseconds(6),  Milliseconds(8),  Milliseconds(10),
                                    Milliseconds(12), Milliseconds(15), Milliseconds(20),
                                    Milliseconds(25), Milliseconds(35), Milliseconds(50),
                                    Milliseconds(90), Milliseconds(200)};
constexpr Micros kSlowDelays[] = {Milliseconds(20),   Milliseconds(30),  Milliseconds(45),
                                  Milliseconds(60),   Milliseconds(90),  Milliseconds(150),
                                  Milliseconds(250),  Milliseconds(400), Milliseconds(1000),
                                  Milliseconds(2500), Milliseconds(8000)};
constexpr Micros kNumberFromSim = Milliseconds(450);

}  // namespace

std::optional<Pace> ReadPace(const std::string& word) {
    const std::pair<const char*, Pace> kPaces[] = {
        {"polite", Pace::kPolite}, {"prompt", Pace::kPrompt}, {"slow", Pace::kSlow}};
    for (const auto& [name, pace] : kPaces) {
        if (word == name) return pace;
    }
    return std::nullopt;
}

Micros Pacer::DelayOf(const std::string& command, const Reply& reply) {
    if (pace_ == Pace::kPolite || reply.raw) return reply.delay;
    const bool slow = pace_ == Pace::kSlow;
    if (command.empty()) {
        return slow ? chance_.Between(3 * kSecond, 30 * kSecond)
                    : chance_.Between(2 * kSecond, 3 * kSecond);
    }
    if (reply.prompt) {
        return slow ? chance_.Between(Milliseconds(200), Milliseconds(3000))
                    : chance_.Between(Milliseconds(20), Milliseconds(200));
    }
    Micros drawn = slow ? chance_.FromQuantiles(kSlowDelays) : chance_.FromQuantiles(kPromptDelays);
    if (command == "AT+CNUM") drawn += kNumberFromSim;
    return std::max(drawn, reply.delay);
}

}  // namespace sim
