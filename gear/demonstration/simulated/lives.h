// A router's life in simulated time, longer than one life of its daemon: when the daemon has ended
// it is started again after a pause, as its start script does, with the files that it left.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "carrier_side.h"
#include "rig/world.h"

namespace demo {

using Table = std::vector<std::pair<std::string, std::optional<std::string>>>;

class Lives {
  public:
    // The option of the card, "" for a generic modem, and the pause between two lives.
    Lives(std::string card_option, rig::Duration pause);
    ~Lives();

    // Lets time pass; the daemon's first life begins with the first call.
    void Run(rig::Duration duration);
    // Tells the modem a line of its control language; "error: why" when it does not take it.
    std::string Tell(const std::string& line);
    void Write(const std::string& path, const std::string& text);
    // SIGTERM and the daemon's end, for good.
    void End();

    rig::Duration Now() const;  // since the first start
    bool DaemonRuns() const { return world_->daemon.Running(); }
    int ExitStatus() const {
        return world_->daemon.ExitStatus();
    }  // of the life before, -1 for none
    bool Plugged() const { return plugged_; }
    bool CallIsUp() const { return plugged_ && carrier_->CallIsUp(); }
    std::optional<std::string> Address() const;
    std::int64_t Bytes() const { return bytes_before_ + carrier_->Bytes(); }
    std::int64_t Writes(const std::string& path) const;  // how often the daemon has written it
    std::vector<std::string> TakeLog();                  // since the last call
    std::vector<std::string> TakeCommands();  // what the modem heard, since the last call

  private:
    void BeginLife();
    void RunWorld(rig::Duration until);

    std::string card_option_;
    rig::Duration pause_;
    std::unique_ptr<rig::World> world_;
    std::unique_ptr<CarrierSide> carrier_;
    rig::Duration born_ = rig::Duration::zero();   // of this life, on the router's clock
    rig::Duration ended_ = rig::Duration::zero();  // the router's clock while no daemon runs
    bool started_ = false;
    bool ended_for_good_ = false;
    bool plugged_ = true;
    std::int64_t bytes_before_ = 0;
    std::map<std::string, std::int64_t> writes_;
    std::vector<std::string> log_;
    std::vector<std::string> commands_;
};

}  // namespace demo
