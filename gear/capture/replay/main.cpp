// Plays a story to the shipped daemon in simulated time and shows what it made of it.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "capture/replay/replay.h"
#include "rig/private_root.h"
#include "rig/program.h"

namespace {

using namespace std::chrono_literals;

constexpr const char* kShown[] = {
    "/var/log/wireless.cardstats", "/var/log/wirelessactivation_status",
    "/var/log/lightbar",           "/var/log/wireless.serialno",
    "/var/log/wireless.mdn",
};

void ShowFiles() {
    for (const char* const path : kShown) {
        if (!rig::Files::Exists(path)) continue;
        std::cout << "== " << path << "\n" << rig::Files::Read(path);
    }
}

// The daemon gets half a minute more to make something of the last answers.
bool Play(const capture::Story& life, bool with_log) {
    capture::Replay replay(life);
    const bool told = replay.Run();
    if (replay.world().daemon.Running()) replay.world().RunFor(30s);
    if (with_log) {
        for (const std::string& line : replay.world().trace.Log()) std::cout << line << "\n";
    }
    ShowFiles();
    for (const std::string& command : replay.Strays()) {
        std::cerr << "replay: the story has no answer here to " << capture::Escaped(command)
                  << "\n";
    }
    return told;
}

int PlayAll(const std::string& text, bool with_log) {
    bool told = true;
    try {
        for (const capture::Story& life : capture::ReadStory(text).Lives()) {
            told = Play(life, with_log) && told;
        }
    } catch (const std::exception& error) {
        std::cerr << "replay: " << error.what() << "\n";
        return 1;
    }
    return told ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const bool with_log = argc == 3 && std::string(argv[1]) == "--log";
    if (argc != (with_log ? 3 : 2) || argv[argc - 1][0] == '-') {
        std::cerr << "Usage: replay [--log] STORY\n\n"
                     "Plays the story to modemd in simulated time; shows its status files, with "
                     "--log its log.\n";
        return 2;
    }
    std::ifstream file(argv[argc - 1], std::ios::binary);
    if (!file) {
        std::cerr << "replay: cannot read " << argv[argc - 1] << "\n";
        return 1;
    }
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const std::string daemon = std::filesystem::absolute(rig::DaemonProgram());
    return rig::RunInPrivateRoot(
        {RIG_SOURCE, RIG_BUILD, std::filesystem::path(daemon).parent_path()},
        [&] { return PlayAll(text, with_log); });
}
