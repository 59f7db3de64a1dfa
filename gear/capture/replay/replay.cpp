#include "capture/replay/replay.h"

#include <algorithm>
#include <memory>

#include "state/published.h"

namespace capture {

namespace {

using namespace std::chrono_literals;

constexpr auto kLongestStory = std::chrono::hours(24 * 7);
constexpr char kContext[] = "AT+CGDCONT=3,";
constexpr const char* kTimeQueries[] = {"AT+CCLK?", "AT$CCLK?", "AT$NWLTIME"};

// "E362 -cind1" as options of the daemon.
std::string OptionsOf(const Story& story) {
    const bool generic = story.arguments.compare(0, 7, "generic") == 0;
    return generic ? story.arguments.substr(7) : "-" + story.arguments;
}

bool AsksForTime(const Exchange& exchange) {
    return std::find(std::begin(kTimeQueries), std::end(kTimeQueries), exchange.command) !=
           std::end(kTimeQueries);
}

// AT+CGDCONT=3,"ipv4v6","APN"
std::string ApnIn(const Story& life) {
    for (const Exchange& exchange : life.exchanges) {
        const std::string& command = exchange.command;
        if (command.compare(0, sizeof(kContext) - 1, kContext) != 0) continue;
        const auto end = command.rfind('"');
        const auto start = command.rfind('"', end - 1) + 1;
        return command.substr(start, end - start);
    }
    return "";
}

void Configure(const Story& life, rig::World& world) {
    const bool syncs = std::any_of(life.exchanges.begin(), life.exchanges.end(), AsksForTime);
    world.files.Write(published::kProvisioningFile,
                      std::string("DEBUG_MODE=4\nSYNC_TIME=") + (syncs ? "yes\n" : "no\n"));
    const std::string apn = ApnIn(life);
    if (!apn.empty()) world.files.Write(published::kPppConfigFile, "CM_APN=" + apn + "\n");
}

// A send file is read with its last character doubled, and 150 characters of it are sent.
void WriteMessage(rig::World& world, const std::string& number, std::string text) {
    constexpr std::size_t kLongestMessage = 150;
    const std::string path = std::string(published::kSmsSendDirectory) + "captured";
    if (rig::Files::Exists(path)) return;  // tried again
    if (text.size() < kLongestMessage && !text.empty()) text.pop_back();
    world.files.Write(path, "TO=" + number + "\nMSG=" + text);
}

}  // namespace

void PlayRouter(rig::World& world) {
    world.router.SetTxBytes(
        [](rig::Duration now) { return static_cast<std::uint64_t>(now / 1s) + 1; });
    world.router.OnShell("udhcpc", [&world](const std::string&) {
        world.router.SetAddress("10.64.0.2");
        return 0;
    });
    world.router.OnShell("kill `cat /var/run/udhcpc-wwan0.pid", [&world](const std::string&) {
        world.router.ClearAddress();
        return 0;
    });
}

Replay::Replay(const Story& life) : world_(OptionsOf(life)) {
    auto peer = std::make_unique<StoryPeer>(life);
    peer_ = peer.get();
    peer_->on_message_wanted = [this](const std::string& number, const std::string& text) {
        WriteMessage(world_, number, text);
    };
    world_.modem.Replace(std::move(peer));
    if (!life.began.empty()) world_.clock.Set(life.began);
    PlayRouter(world_);
    Configure(life, world_);
}

bool Replay::Run() {
    world_.Start();
    return world_.RunUntil([this] { return peer_->IsTold(); }, kLongestStory);
}

}  // namespace capture
