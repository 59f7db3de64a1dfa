// A world whose story is drawn from a seed: a card, its options, and what happens to the router
// while it runs. Whatever it is, the daemon keeps its promises.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rig/world.h"
#include "scenarios/worlds/daemon_words.h"
#include "scenarios/worlds/dice.h"

namespace worlds {

using namespace std::chrono_literals;

class RandomWorld;

// One happening of a plan: its number in the table, and its how-manieth time.
using Occurrence = std::pair<std::size_t, int>;

// Something that happens again and again.
struct Happening {
    const char* what;
    Duration usual_gap;
    void (*happen)(RandomWorld& world);
};
const std::vector<Happening>& Happenings();

enum class Ending { kTerminated, kTerminatedWithinAPass, kHungUpAndTerminated, kUnplugged };

struct Plan {
    struct Drawn {
        const Happening* happening;
        Duration gap;
    };
    std::uint64_t seed = 0;
    CardType card = kCardGeneric;
    bool polls_indicators = false;
    int debug_options = 0;
    bool device_comes_late = false;
    bool shell_has_troubles = false;
    Duration length{};
    Ending ending = Ending::kTerminated;
    std::vector<Drawn> happenings;
    std::optional<std::set<Occurrence>> only;  // all others are left out

    std::string Arguments() const;
    bool HasFloods() const;
};
std::ostream& operator<<(std::ostream& out, const Plan& plan);

// The number chooses the card, so that a handful of neighbours has them all.
Plan DrawPlan(std::uint64_t seed, unsigned number);

class RandomWorld : public rig::World {
  public:
    explicit RandomWorld(const Plan& plan);

    // The whole story, each promise looked at on the way. The test fails with the first that is
    // broken.
    void Live();

    // All that happened, when it was asked for before.
    void Record() { recorded_ = true; }
    const std::vector<rig::Event>& Chronicle() const { return chronicle_; }

    // What has happened so far, without what was left out.
    const std::vector<std::pair<Duration, Occurrence>>& Happened() const { return happened_; }

    // --- For the happenings -------------------------------------------------------------------
    // Dice of this very happening, so that it is the same whatever else happens.
    Dice& GetDice() { return happening_dice_ ? *happening_dice_ : dice_; }
    const Plan& GetPlan() const { return plan_; }
    void Tell(const std::string& line);  // to the modem, which need not understand it
    // What a modem of this model that nothing has happened to would answer.
    std::string HonestAnswer(const std::string& command);
    // Into the spool, whatever lay there under that name.
    void DropSendFile(const std::string& name, const std::string& number, const std::string& text);
    // Its name may come back in the daemon's words.
    void DropSomething(const std::string& name);

  private:
    void SetTheScene();
    void ServeShellLines();
    void Schedule(const Plan::Drawn& drawn, int time);
    void Happen(const Plan::Drawn& drawn, int time);
    int TakeShellTrouble();
    int Move(const std::vector<std::string>& words);
    int SetClock(const std::string& line);
    void End();
    void ExpectOrderlyEnd();

    void CheckWhatHappened();
    std::string FaultOf(const rig::Event& event) const;
    void CheckMemory();

    Plan plan_;
    Dice dice_;
    std::optional<Dice> happening_dice_;
    std::vector<std::pair<Duration, Occurrence>> happened_;
    Given given_;
    sim::PlayedModem twin_;
    bool recorded_ = false;
    std::vector<rig::Event> chronicle_;
    long settled_memory_ = 0;  // KiB
};

}  // namespace worlds
