// The modems that the daemon serves, one row each. All that lists them or asks what one of them can
// do follows from the rows: the daemon's options and usage text, the rig and the random worlds of
// the tests, the benchmarks, the simulator's help, and the demo, which reads them from this file
// (gear/sandbox/cards.py). CONTRIBUTING.md tells how to add one.
#pragma once

#include <string_view>

// As stored in g_i_CardType and compared by number throughout the program; below 32.
enum CardType : int {
    kCardGeneric = 0,
    kCardSierra881 = 2,
    kCardType3 = 3,  // Served by the service-type query; no option selects it.
    kCardSierraUsb305 = 4,
    kCardMc75i = 6,
    kCardNovatelE362 = 7,
    kCardNovatelE371 = 8,
};

namespace cards {

enum Ability : unsigned {
    kNone = 0,
    kRegistration = 1,  // it is asked for its registration
    kLteCall = 2,       // it has the interface wwan0 and a QMI data call
    kMessages = 4,      // it may have a text mode for short messages
};

// What the option sets beside the card type.
enum class Mark { kNone, kIsE362, kIsNotE362, kIsMc75i };

struct Model {
    CardType type;
    const char* name;       // in an option, as a profile of modem-sim, for scripts/demo --card
    const char* title;      // for people
    const char* logged_as;  // behind "card type set to"
    unsigned abilities;
    Mark mark = Mark::kNone;
};

// In the order in which an option is searched for the names: "-E362E371" is an E362. The maker's
// name is misspelled in the last row's log line and stays so.
inline constexpr Model kModels[] = {
    {kCardGeneric, "generic", "modem of no make", "", kNone},
    {kCardSierra881, "881", "Sierra 881", "Sierra 881", kRegistration | kMessages},
    {kCardNovatelE362, "E362", "Novatel E362", "Novatel E362/USB551L", kRegistration | kLteCall,
     Mark::kIsE362},
    {kCardNovatelE371, "E371", "Novatel E371", "Novatel E371/MC679", kRegistration | kLteCall,
     Mark::kIsNotE362},
    {kCardSierraUsb305, "USB305", "Sierra USB 305", "Sierra USB 305 Lightning", kRegistration},
    {kCardMc75i, "mc75i", "Cinterion MC75i", "Centerion MC75i", kNone, Mark::kIsMc75i},
};

// The generic modem is what the daemon serves without an option.
constexpr bool HasOption(const Model& model) {
    return model.type != kCardGeneric;
}

// The model whose name comes first in the table among those that the option holds; null for none.
constexpr const Model* ModelOfOption(std::string_view option) {
    for (const Model& model : kModels) {
        if (HasOption(model) && option.find(model.name) != std::string_view::npos) return &model;
    }
    return nullptr;
}

// Null for a type that no option selects.
constexpr const Model* ModelOfType(int type) {
    for (const Model& model : kModels) {
        if (model.type == type) return &model;
    }
    return nullptr;
}

// --- Sets of card types, one bit each ------------------------------------------------------------

using Set = unsigned;

constexpr Set kAll = ~0U;

constexpr Set Only(CardType type) {
    return 1U << type;
}

constexpr Set With(Ability ability) {
    Set set = 0;
    for (const Model& model : kModels) {
        if ((model.abilities & ability) != 0) set |= Only(model.type);
    }
    return set;
}

constexpr Set kRegistering = With(kRegistration);
constexpr Set kLte = With(kLteCall);
constexpr Set kMessaging = With(kMessages);

constexpr bool Has(Set set, int type) {
    const auto bit = static_cast<unsigned>(type);
    return bit < 32 && (set >> bit & 1U) != 0;
}

// --- What a new row must keep to -----------------------------------------------------------------

constexpr bool IsFoundByItsName(const Model& model) {
    const std::string_view name = model.name;
    return name[0] != 'd' && name.find("cind1") == std::string_view::npos &&
           ModelOfOption(name) == &model;
}

constexpr bool EachOptionSelectsItsModel() {
    for (const Model& model : kModels) {
        if (HasOption(model) && !IsFoundByItsName(model)) return false;
        if (model.type < 0 || model.type >= 32 || ModelOfType(model.type) != &model) return false;
    }
    return true;
}

static_assert(EachOptionSelectsItsModel(),
              "a number is taken, or a name is that of another option or holds one above it");

}  // namespace cards
