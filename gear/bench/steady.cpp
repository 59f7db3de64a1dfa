// What the daemon's steady work costs with each modem, counted in simulated time and the same on
// every run: calls into the kernel for each AT command, heap blocks for each pass, and the programs
// that it starts. One line "KEY VALUE" each, for gear/bench/footprint.
//
//     bench_steady              an hour of each card
//     bench_steady 365 [881]    and then that many days: what is held at their end

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

#include "rig/card_options.h"
#include "rig/private_root.h"
#include "rig/program.h"
#include "rig/world.h"

namespace {

using namespace rig;

constexpr Duration kSettled = 10min;  // registered, connected, every query has been asked
constexpr Duration kCounted = 1h;

// A signal poll is the one command that each pass sends exactly once.
std::size_t Passes(const World& world) {
    std::size_t passes = 0;
    for (const std::string& command : world.trace.Commands()) {
        passes += command == "AT+CSQ" || command == "AT+CSQ?" || command == "AT+CIND?" ? 1 : 0;
    }
    return passes;
}

void PrintFigure(const std::string& card, const char* what, double value) {
    std::printf("%s.%s %.2f\n", card.c_str(), what, value);
}

void PrintPrograms(const std::string& card, const World& world) {
    std::map<std::string, int> started;
    for (const std::string& line : world.trace.Shell()) ++started[line];
    const double minutes = std::chrono::duration<double, std::ratio<60>>(kCounted).count();
    PrintFigure(card, "shell_lines_a_minute",
                static_cast<double>(world.trace.Shell().size()) / minutes);
    for (const auto& [line, count] : started) {
        std::printf("# %s: %.2f a minute: %s\n", card.c_str(), count / minutes, line.c_str());
    }
}

void LiveSteadily(const cards::Model& model, long days) {
    const std::string card = model.name;
    World world(OptionOf(model));
    world.router.SetAddress("10.64.0.2");
    world.router.SetTxBytes(
        [](Duration now) { return static_cast<std::uint64_t>(now.count() / 1000000); });
    world.trace.Keep({Kind::kWrite, Kind::kShell});
    world.Start();
    world.RunFor(kSettled);
    world.trace.Clear();
    const std::uint64_t calls = world.daemon.KernelCalls();
    const std::uint64_t blocks = world.daemon.Allocations();
    const std::uint64_t held = world.daemon.BlocksHeld();
    world.RunFor(kCounted);

    const auto commands = static_cast<double>(world.trace.Commands().size());
    PrintFigure(card, "kernel_calls_a_command",
                static_cast<double>(world.daemon.KernelCalls() - calls) / commands);
    PrintFigure(card, "heap_blocks_a_pass",
                static_cast<double>(world.daemon.Allocations() - blocks) /
                    static_cast<double>(Passes(world)));
    PrintPrograms(card, world);
    world.trace.Clear();
    world.trace.Keep({Kind::kNote});
    world.RunFor(days * 24h);
    PrintFigure(card, "heap_blocks_gained",
                static_cast<double>(world.daemon.BlocksHeld()) - static_cast<double>(held));
}

int LiveAll(long days, const std::string& wanted) {
    for (const cards::Model& model : cards::kModels) {
        if (!wanted.empty() && model.name != wanted) continue;
        LiveSteadily(model, days);
        std::fflush(stdout);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    const long days = argc > 1 ? std::atol(argv[1]) : 0;
    const std::string card = argc > 2 ? argv[2] : "";
    const std::string daemon = std::filesystem::absolute(rig::DaemonProgram());
    return rig::RunInPrivateRoot(
        {RIG_SOURCE, RIG_BUILD, std::filesystem::path(daemon).parent_path()},
        [&] { return LiveAll(days, card); });
}
