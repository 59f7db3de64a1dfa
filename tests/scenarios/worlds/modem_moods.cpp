#include "scenarios/worlds/modem_moods.h"

#include "scenarios/worlds/random_world.h"

namespace worlds {

void AnswerLate(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const std::string command = dice.OneOf(CommandsOf(world.GetPlan().card));
    const auto delay = dice.Between(200ms, dice.Chance(20) ? 40s : 3s);
    world.modem.AnswerOnce(command, world.HonestAnswer(command), delay);
}

void CutThePower(RandomWorld& world) {
    world.Tell("unplug");
    world.clock.After(world.GetDice().Between(1s, 2min), [&world] { world.Tell("plug"); });
}

void ChangePace(RandomWorld& world) {
    const char* const kPaces[] = {"polite", "prompt", "prompt", "slow"};
    world.Tell(std::string("pace ") + world.GetDice().OneOf(kPaces));
}

// The operator list comes once in a while and takes minutes then.
void CutListsIntoPieces(RandomWorld& world) {
    world.Tell("set operators " + std::to_string(world.GetDice().Between(2, 1500)));
    world.Tell(world.GetDice().Chance(70) ? "pieces on" : "pieces off");
}

void BecomeTalkative(RandomWorld& world) {
    Dice& dice = world.GetDice();
    world.Tell(dice.Chance(30) ? "unasked off"
                               : "unasked " + std::to_string(dice.Between(200, 20000)) + "ms");
}

// A receiver of 4 KiB, as a serial port has it.
void ChangeTheLine(RandomWorld& world) {
    const bool slow = world.GetDice().Chance(60);
    world.Tell(slow ? "line 115200" : "line usual");
    world.port.SetRoom(slow ? std::optional<std::size_t>(4095) : std::nullopt);
}

void Restart(RandomWorld& world) {
    world.Tell("restart " + std::to_string(world.GetDice().Between(3, 120)) + "s");
}

void ChangeAForm(RandomWorld& world) {
    const char* const kForms[] = {
        "creg usual",    "creg short",      "creg unquoted",     "creg blanks",
        "cnum usual",    "cnum no-name",    "cnum plus",         "cind usual",
        "cind last",     "echo usual",      "echo doubled",      "page usual",
        "page padded",   "page carrier",    "page low-power",    "qmi usual",
        "qmi names",     "simstat usual",   "simstat tight",     "delete usual",
        "listing usual", "listing no-name", "listing comma",     "listing seventh",
        "listing ucs2",  "listing header",  "listing tight-end", "delete index-only"};
    world.Tell(std::string("form ") + world.GetDice().OneOf(kForms));
}

}  // namespace worlds
