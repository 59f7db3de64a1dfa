// What users write for the simulated modem, a profile and control lines, and what a host may send
// it. Texts parted by the byte 0x1e: the profile; then, by their first letter, "!" and a control
// line, ">" and bytes of the host, anything else lets ten seconds pass.
#include <stdexcept>
#include <string>

#include "fuzz_main.h"
#include "sim/control/played_modem.h"

namespace {

constexpr std::size_t kMostSteps = 20;

bool StartsWith(const std::string& text, const char* start) {
    return text.rfind(start, 0) == 0;
}

void Play(sim::Profile profile, const FuzzedInput& input) {
    sim::PlayedModem modem(std::move(profile));
    sim::Micros now = 0;
    for (std::size_t i = 1; i < input.Parts() && i < kMostSteps; ++i) {
        const std::string step = input.Part(i);
        if (StartsWith(step, "!")) {
            const std::string answer = modem.Control(step.substr(1), now);
            Must(StartsWith(answer, "ok") || StartsWith(answer, "error"), "ok or error");
        } else if (StartsWith(step, ">")) {
            modem.Receive(step.substr(1), now);
        } else {
            now += 10 * sim::kSecond;
        }
        modem.Transmit(now);
        Must(modem.NextEvent() > now, "what is due is done");
    }
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    const FuzzedInput input(data, size, 0);
    constexpr char kProfile[] = "/tmp/fuzzed.profile";
    FreshDaemon::Write(kProfile, input.Part(0));
    sim::Profile profile;
    try {
        profile = sim::LoadProfile(kProfile);
    } catch (const std::runtime_error& refused) {
        Must(StartsWith(refused.what(), "/"), "a complaint names the file");
        profile = sim::LoadProfile("881");
    }
    Play(std::move(profile), input);
}
