#include "lives.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <filesystem>

namespace demo {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using rig::Duration;
using rig::Files;
using rig::Kind;
using rig::World;

namespace {

constexpr int kFirstProcess = 4242;
constexpr Duration kTimeToEnd = 60s;

// What the daemon leaves and its next life finds.
const char* const kKeptPlaces[] = {"/var/log", "/var/run", "/tmp/sms", "/tmp/udhcpc.wwan0.lfc",
                                   "/etc/kvt"};

std::vector<std::pair<std::string, std::string>> ReadKeptFiles() {
    std::vector<std::pair<std::string, std::string>> files;
    const auto keep = [&](const std::string& path) {
        if (fs::is_regular_file(path)) files.emplace_back(path, Files::Read(path));
    };
    for (const char* place : kKeptPlaces) {
        std::error_code error;
        keep(place);
        for (const auto& entry : fs::recursive_directory_iterator(place, error)) {
            keep(entry.path());
        }
    }
    return files;
}

std::string Utc(std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    char text[32];
    std::tm broken = {};
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", gmtime_r(&time, &broken));
    return text;
}

void Append(std::vector<std::string>& to, std::vector<std::string> more) {
    std::move(more.begin(), more.end(), std::back_inserter(to));
}

}  // namespace

Lives::Lives(std::string card_option, Duration pause)
    : card_option_(std::move(card_option)),
      pause_(pause),
      world_(std::make_unique<World>(card_option_)),
      carrier_(std::make_unique<CarrierSide>(*world_)) {
    world_->modem.AllowUnknownCommands();
    world_->trace.Keep({Kind::kLog, Kind::kWrite, Kind::kFile});
}

Lives::~Lives() = default;

Duration Lives::Now() const {
    return started_ && !world_->daemon.Running() ? ended_ : born_ + world_->clock.Now();
}

void Lives::Run(Duration duration) {
    if (!started_) world_->Start();
    started_ = true;
    const Duration until = Now() + duration;
    while (Now() < until) {
        if (world_->daemon.Running()) {
            RunWorld(until);
        } else {
            const Duration rebirth = born_ + world_->clock.Now() + pause_;
            ended_ = ended_for_good_ ? until : std::min(until, rebirth);
            if (!ended_for_good_ && ended_ == rebirth) BeginLife();
        }
    }
}

void Lives::RunWorld(Duration until) {
    world_->RunFor(until - Now());
    Append(log_, world_->trace.Log());
    Append(commands_, world_->trace.Commands());
    for (const rig::Event& event : world_->trace.Of(Kind::kFile)) {
        ++writes_[event.text.substr(0, static_cast<std::size_t>(event.number))];
    }
    world_->trace.Clear();
    if (!world_->daemon.Running()) ended_ = born_ + world_->clock.Now();
}

// The modem of the new life is a fresh one, as a modem is that was put back; only the place where
// it stands, and so its signal, and a call that it has made meanwhile are the old ones.
void Lives::BeginLife() {
    const auto files = ReadKeptFiles();
    const std::string signal = "signal " + std::to_string(world_->modem.Sim().GetState().radio.csq);
    const bool call_was_up = CallIsUp();
    const std::string wall = Utc(world_->clock.WallSeconds() + pause_ / 1s);
    const Duration uptime = 1h + ended_;
    const int process = kFirstProcess + static_cast<int>(ended_ / 1s);
    bytes_before_ += carrier_->Bytes();
    carrier_.reset();
    world_.reset();

    world_ = std::make_unique<World>(card_option_);
    carrier_ = std::make_unique<CarrierSide>(*world_);
    world_->modem.AllowUnknownCommands();
    world_->trace.Keep({Kind::kLog, Kind::kWrite, Kind::kFile});
    world_->clock.Set(wall);
    world_->router.SetUptime(uptime);
    world_->daemon.SetProcessId(process);
    for (const auto& [path, text] : files) world_->files.Write(path, text);
    world_->modem.Control(signal);
    if (call_was_up) world_->modem.Control("call up");
    born_ = ended_;
    if (!plugged_) {
        world_->modem.Control("unplug");
        world_->port.RemoveDevice();
    }
    world_->Start();
}

std::string Lives::Tell(const std::string& line) {
    const std::string answer = world_->modem.Tell(line);
    const bool plugged = world_->modem.Sim().Plugged();
    if (plugged_ && !plugged) world_->port.Unplug();
    if (!plugged_ && plugged) world_->port.AddDevice();
    plugged_ = plugged;
    return answer;
}

void Lives::Write(const std::string& path, const std::string& text) {
    world_->files.Write(path, text);
}

void Lives::End() {
    ended_for_good_ = true;
    if (!world_->daemon.Running()) return;
    world_->daemon.Signal(SIGTERM);
    RunWorld(Now() + kTimeToEnd);
}

std::optional<std::string> Lives::Address() const {
    return carrier_->HasAddress() ? std::optional<std::string>(kAddress) : std::nullopt;
}

std::int64_t Lives::Writes(const std::string& path) const {
    const auto found = writes_.find(path);
    return found == writes_.end() ? 0 : found->second;
}

std::vector<std::string> Lives::TakeLog() {
    return std::exchange(log_, {});
}

std::vector<std::string> Lives::TakeCommands() {
    return std::exchange(commands_, {});
}

}  // namespace demo
