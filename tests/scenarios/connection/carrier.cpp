#include "carrier.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {

using rig::Event;
using rig::Kind;

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool IsAboutTheConnection(const std::string& line) {
    for (const char* start : {"LTE ", "Last ", "Stopping ", "Starting/", "Resetting ", "Interface ",
                              "Failed to connect", "Service Type", "Warning: Modem reports",
                              "Warning: TX", "Setting Context", "No service", "Config option",
                              "doing cleanup", "exit", "received ", "recieved "}) {
        if (StartsWith(line, start)) return true;
    }
    return false;
}

bool IsForTheCall(const std::string& command) {
    for (const char* start : {"AT$NWQMI", "AT+NWAPNE", "AT+CGDCONT="}) {
        if (StartsWith(command, start)) return true;
    }
    return false;
}

}  // namespace

Carrier::Carrier(rig::World& world) : world_(world) {
    world.files.Write(kProvisioningFile, "SYNC_TIME=no\n");
    world.router.SetTxBytes(
        [](rig::Duration now) { return static_cast<std::uint64_t>(now / 1s) + 1; });
    world.modem.OnCall([this](bool up) {
        call_is_up_ = up;
        Follow();
    });
    world.router.OnShell("udhcpc", [this](const std::string&) {
        client_runs_ = true;
        Follow();
        return 0;
    });
    world.router.OnShell("kill `cat /var/run/udhcpc-wwan0.pid", [this](const std::string&) {
        client_runs_ = false;
        Follow();
        return 0;
    });
}

void Carrier::Follow() {
    if (call_is_up_ && client_runs_) {
        world_.router.SetAddress("10.64.0.2");
    } else {
        world_.router.ClearAddress();
    }
}

Lines ConnectionStory(const rig::World& world) {
    Lines story;
    const std::vector<rig::Command>& commands = world.trace.TimedCommands();
    auto command = commands.begin();
    const auto tell_commands_before = [&](rig::Micros time) {
        for (; command != commands.end() && command->at < time; ++command) {
            if (IsForTheCall(command->text)) story.push_back("modem: " + command->text);
        }
    };
    for (const Event& event : world.trace.Events()) {
        tell_commands_before(event.at);
        if (event.kind == Kind::kLog && IsAboutTheConnection(event.text)) {
            story.push_back("log: " + event.text);
        } else if (event.kind == Kind::kShell && !StartsWith(event.text, "mkdir -p /tmp/sms")) {
            story.push_back("run: " + event.text);
        }
    }
    tell_commands_before(rig::kNever);
    return story;
}

Lines From(const Lines& story, const std::string& start, std::size_t count) {
    const auto first = std::find_if(story.begin(), story.end(), [&](const std::string& line) {
        return StartsWith(line, start);
    });
    const auto rest = static_cast<std::size_t>(story.end() - first);
    return Lines(first, first + static_cast<std::ptrdiff_t>(std::min(count, rest)));
}

std::size_t CountRemovals(const rig::World& world, const std::string& path) {
    return world.trace.Times(Kind::kUnlink, path).size();
}
