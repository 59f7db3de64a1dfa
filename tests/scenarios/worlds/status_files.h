// What the readers of the status files may count on, as a test: docs/files.md in code.
#pragma once

#include <string>
#include <vector>

#include "scenarios/worlds/daemon_words.h"

namespace worlds {

// The files that have a form of their own, each written whole.
const std::vector<std::string>& StatusFiles();

// What is wrong with this content of a status file, for a person; "" when nothing is. An empty
// file is being written and therefore right.
std::string FaultOfStatusFile(CardType card, const std::string& path, const std::string& text);

}  // namespace worlds
