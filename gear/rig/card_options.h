// The daemon's card options, for stories that every card has.
#pragma once

#include <string>
#include <vector>

#include "state/cards.h"

namespace rig {

// "-881", "" for the generic modem.
inline std::string OptionOf(const cards::Model& model) {
    return cards::HasOption(model) ? std::string("-") + model.name : "";
}

inline std::vector<std::string> EveryCardOption() {
    std::vector<std::string> options;
    for (const cards::Model& model : cards::kModels) options.push_back(OptionOf(model));
    return options;
}

// The model that an option selects, as the daemon reads it; null when it passes it over.
inline const cards::Model* SelectedBy(const std::string& option) {
    constexpr std::size_t kReadOfAnArgument = 80;
    return cards::ModelOfOption(std::string_view(option).substr(0, kReadOfAnArgument));
}

}  // namespace rig
