// One simulated day of the shipped daemon with each modem: how long it takes here, and how much
// memory the daemon then holds.

#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "rig/card_options.h"
#include "rig/private_root.h"
#include "rig/program.h"
#include "rig/world.h"

namespace {

using namespace rig;

// Resident kilobytes of the daemon, the one child of this process, without the memory that it
// shares with the rig. 0 when it cannot be told.
long ResidentKilobytes() {
    std::ifstream children("/proc/self/task/" + std::to_string(getpid()) + "/children");
    std::string child;
    if (!(children >> child)) return 0;
    std::ifstream status("/proc/" + child + "/status");
    long sum = 0;
    std::string word;
    while (status >> word) {
        long kilobytes = 0;
        if ((word == "RssAnon:" || word == "RssFile:") && status >> kilobytes) sum += kilobytes;
    }
    return sum;
}

void LiveADay(const cards::Model& model) {
    World world(OptionOf(model));
    world.trace.Keep({Kind::kLog});
    world.Start();
    world.RunFor(10min);
    const long early = ResidentKilobytes();
    const auto begin = std::chrono::steady_clock::now();
    world.RunFor(24h);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::printf(
        "%-8s %8.1f s a day %8.1f simulated hours a second %6ld KiB after 10 minutes "
        "%6ld KiB after a day\n",
        model.name, taken.count(), 24 / taken.count(), early, ResidentKilobytes());
}

int LiveAllDays() {
    for (const cards::Model& model : cards::kModels) LiveADay(model);
    return ::testing::Test::HasFailure() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    const auto folder = std::filesystem::absolute(rig::DaemonProgram()).parent_path();
    return rig::RunInPrivateRoot(
        {RIG_SOURCE, RIG_BUILD, folder.string(), std::filesystem::current_path().string()},
        LiveAllDays);
}
